#include "platform/terminal.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>

namespace orvalo::platform {

namespace {

constexpr char kBreakOff = 0x03;  // Ctrl-C

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

}  // namespace orvalo::platform
