#include "platform/text_format.h"

#include <algorithm>
#include <charconv>

#include "platform/code_page.h"

namespace orvalo::platform {
namespace {

constexpr int kMaxWidth = 255;         // of a field; a wider one is cut to it
constexpr int kMaxNumber = 1'000'000;  // where the numbers of a format stop counting

// What stands between the exclamation marks: "%1!-08.3d!" gives "-0", 8, 3 and 'd'.
struct InsertFormat {
  bool left = false, zero = false, plus = false, blank = false, prefix = false;
  int width = 0;
  int precision = -1;  // none
  char conversion = 's';
};

class InsertFormatter {
 public:
  InsertFormatter(std::string_view format, std::span<const FormatInsert> inserts)
      : rest_(format), inserts_(inserts) {}

  std::optional<std::string> Run() {
    while (!rest_.empty() && !ended_) {
      const std::size_t percent = std::min(rest_.find('%'), rest_.size());
      out_ += rest_.substr(0, percent);
      rest_.remove_prefix(percent);
      if (!rest_.empty() && !Escape()) return std::nullopt;
    }
    return std::move(out_);
  }

 private:
  char Peek() const { return rest_.empty() ? '\0' : rest_.front(); }
  char Take() {
    const char c = Peek();
    if (!rest_.empty()) rest_.remove_prefix(1);
    return c;
  }
  bool TakeIf(char c) {
    if (Peek() != c) return false;
    Take();
    return true;
  }
  bool AtDigit() const { return Peek() >= '0' && Peek() <= '9'; }
  int Number() {
    int number = 0;
    while (AtDigit()) number = std::min(number * 10 + (Take() - '0'), kMaxNumber);
    return number;
  }

  bool Escape();
  bool Insert();
  bool ParseFormat(InsertFormat& format);
  void ParseFlags(InsertFormat& format);
  void SkipLength();
  bool FormatNumber(const InsertFormat& format, std::int64_t value);
  bool FormatCharacter(const InsertFormat& format, std::int64_t value);
  void Pad(const InsertFormat& format, std::string_view sign, std::string_view body, bool zeros);

  std::string_view rest_;
  std::span<const FormatInsert> inserts_;
  std::string out_;
  bool ended_ = false;
};

// After a percent sign.
bool InsertFormatter::Escape() {
  Take();
  if (Peek() >= '1' && Peek() <= '9') return Insert();
  switch (const char c = Take()) {
    case '0':
      ended_ = true;
      return true;
    case 'n':
      out_ += '\n';
      return true;
    case 'r':
      out_ += '\r';
      return true;
    case 't':
      out_ += '\t';
      return true;
    case '\0':
      return false;
    default:
      out_ += c;
      return true;
  }
}

bool InsertFormatter::Insert() {
  const auto number = static_cast<std::size_t>(Number());
  InsertFormat format;
  if (TakeIf('!') && !ParseFormat(format)) return false;
  if (number > inserts_.size()) return false;
  const auto& value = inserts_[number - 1].value();
  if (format.conversion == 's') {
    const auto* text = std::get_if<std::string_view>(&value);
    if (text == nullptr) return false;
    const bool cut = format.precision >= 0;
    Pad(format, "",
        cut ? FirstCharacters(*text, static_cast<std::size_t>(format.precision)) : *text, false);
    return true;
  }
  const auto* integer = std::get_if<std::int64_t>(&value);
  if (integer == nullptr) return false;
  return format.conversion == 'c' ? FormatCharacter(format, *integer)
                                  : FormatNumber(format, *integer);
}

bool InsertFormatter::ParseFormat(InsertFormat& format) {
  ParseFlags(format);
  format.width = std::min(Number(), kMaxWidth);
  if (TakeIf('.')) format.precision = Number();
  SkipLength();
  format.conversion = Take();
  if (format.conversion == '\0' ||
      std::string_view("sdiuxXc").find(format.conversion) == std::string_view::npos)
    return false;
  return TakeIf('!');
}

void InsertFormatter::ParseFlags(InsertFormat& format) {
  for (;;) {
    switch (Peek()) {
      case '-':
        format.left = true;
        break;
      case '0':
        format.zero = true;
        break;
      case '+':
        format.plus = true;
        break;
      case ' ':
        format.blank = true;
        break;
      case '#':
        format.prefix = true;
        break;
      default:
        return;
    }
    Take();
  }
}

// An insert brings its own size; the sizes that texts give are read over.
void InsertFormatter::SkipLength() {
  for (const std::string_view size : {"I64", "I32", "ll", "l", "hh", "h"}) {
    if (!rest_.starts_with(size)) continue;
    rest_.remove_prefix(size.size());
    return;
  }
}

bool InsertFormatter::FormatNumber(const InsertFormat& format, std::int64_t value) {
  const bool is_signed = format.conversion == 'd' || format.conversion == 'i';
  auto magnitude = static_cast<std::uint64_t>(value);
  std::string sign;
  if (is_signed) {
    if (value < 0) magnitude = 0 - magnitude;
    sign = value < 0 ? "-" : format.plus ? "+" : format.blank ? " " : "";
  } else if (value < 0 && value >= INT32_MIN) {
    magnitude = static_cast<std::uint32_t>(value);  // an int, as wide as it was
  }
  const bool hex = format.conversion == 'x' || format.conversion == 'X';
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, magnitude, hex ? 16 : 10).ptr;
  std::string body(digits, end);
  if (format.conversion == 'X')
    std::transform(body.begin(), body.end(), body.begin(),
                   [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
  if (hex && format.prefix && magnitude != 0) sign = format.conversion == 'X' ? "0X" : "0x";
  if (format.precision == 0 && magnitude == 0) body.clear();
  const auto digits_wanted = static_cast<std::size_t>(std::clamp(format.precision, 0, kMaxWidth));
  if (body.size() < digits_wanted) body.insert(0, digits_wanted - body.size(), '0');
  Pad(format, sign, body, format.zero && !format.left && format.precision < 0);
  return true;
}

bool InsertFormatter::FormatCharacter(const InsertFormat& format, std::int64_t value) {
  if (value <= 0 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return false;
  std::u16string wide;
  const auto code = static_cast<char32_t>(value);
  if (code < 0x10000) {
    wide = {static_cast<char16_t>(code)};
  } else {
    wide = {static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)),
            static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF))};
  }
  Pad(format, "", FromWide(wide), false);
  return true;
}

void InsertFormatter::Pad(const InsertFormat& format, std::string_view sign, std::string_view body,
                          bool zeros) {
  const auto width = static_cast<std::size_t>(format.width);
  const std::size_t length = sign.size() + (width == 0 ? 0 : CountCharacters(body));
  const std::size_t padding = width > length ? width - length : 0;
  if (!format.left && !zeros) out_.append(padding, ' ');
  out_ += sign;
  if (zeros) out_.append(padding, '0');
  out_ += body;
  if (format.left) out_.append(padding, ' ');
}

}  // namespace

std::optional<std::string> FormatText(std::string_view format,
                                      std::span<const FormatInsert> inserts) {
  return InsertFormatter(format, inserts).Run();
}

}  // namespace orvalo::platform
