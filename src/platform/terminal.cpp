#include "platform/terminal.h"

#include <fcntl.h>
#include <pwd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <utility>

#include "platform/code_page.h"

namespace orvalo::platform {

namespace {

constexpr char kBreakOff = 0x03;  // Ctrl-C

bool IsControl(char16_t unit) {
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

// Embeddings, overrides and isolates. The plain direction marks only place a neutral character.
bool TurnsDirection(char16_t unit) {
  return (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

}  // namespace

bool InputIsTerminal() { return isatty(STDIN_FILENO) == 1; }
bool ErrorOutputIsTerminal() { return isatty(STDERR_FILENO) == 1; }

// Ctrl-C ends the line instead of the program, which could not switch the echo on again.
std::optional<std::string> AskSecret(const std::string& prompt) {
  std::FILE* terminal = std::fopen("/dev/tty", "r+");
  if (!terminal) return std::nullopt;
  const int descriptor = fileno(terminal);
  std::fputs(prompt.c_str(), terminal);
  std::fflush(terminal);
  termios shown{};
  const bool hides = tcgetattr(descriptor, &shown) == 0;
  if (hides) {
    termios hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
    hidden.c_cc[VEOL] = kBreakOff;
    tcsetattr(descriptor, TCSAFLUSH, &hidden);
  }
  std::string text;
  int character = 0;
  while ((character = std::fgetc(terminal)) != EOF && character != '\n' && character != kBreakOff) {
    text += static_cast<char>(character);
  }
  if (hides) tcsetattr(descriptor, TCSAFLUSH, &shown);
  std::fputs("\n", terminal);
  std::fclose(terminal);
  if (character == EOF || character == kBreakOff) return std::nullopt;
  return text;
}

std::string PrintableLine(std::string_view text) {
  constexpr char16_t kReplacement = 0xFFFD;
  std::u16string line;
  line.reserve(text.size());
  bool blank_due = false;
  for (const char16_t unit : ToWide(text)) {
    if (IsControl(unit)) {
      blank_due = !line.empty();
      continue;
    }
    if (std::exchange(blank_due, false)) line += u' ';
    line += TurnsDirection(unit) ? kReplacement : unit;
  }
  return FromWide(line);
}

std::string PrintableJson(std::string_view json) {
  std::u16string escaped;
  escaped.reserve(json.size());
  for (const char16_t unit : ToWide(json)) {
    const bool line_end = unit == u'\n' || unit == u'\r' || unit == u'\t';
    if (line_end || (!IsControl(unit) && !TurnsDirection(unit))) {
      escaped += unit;
      continue;
    }
    constexpr std::u16string_view kDigits = u"0123456789abcdef";
    escaped += u"\\u";
    for (int shift = 12; shift >= 0; shift -= 4) escaped += kDigits[unit >> shift & 0xFu];
  }
  return FromWide(escaped);
}

std::string UserName() {
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 4096> room{};
  getpwuid_r(geteuid(), &entry, room.data(), room.size(), &found);
  return found != nullptr ? found->pw_name : std::to_string(geteuid());
}

}  // namespace orvalo::platform
