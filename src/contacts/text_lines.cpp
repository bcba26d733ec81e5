#include "contacts/text_lines.h"

#include <algorithm>
#include <cstring>

#include "platform/code_page.h"
#include "platform/file.h"

namespace orvalo {

namespace {

constexpr std::size_t kChunk = 64u << 10;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LeMark = "\xFF\xFE";
constexpr std::string_view kUtf16BeMark = "\xFE\xFF";

// What no text holds: NUL above all. Tabulators, line ends, form feeds, the end mark of old editors
// and escape sequences occur in texts.
bool IsForeign(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x09 || (byte > 0x0D && byte < 0x1A) || (byte > 0x1B && byte < 0x20);
}

}  // namespace

TextLines::TextLines(const std::string& path) {
  const auto size = platform::FileSize(path);
  if (size) file_.reset(std::fopen(path.c_str(), "rb"));
  if (file_ == nullptr) {
    fault_ = Fault::kNotOpened;
    return;
  }
  size_ = *size;
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // chunks go where they are read from
}

bool TextLines::Next() {
  while (fault_ == Fault::kNone) {
    const std::string_view rest = std::string_view(text_).substr(next_);
    const std::size_t feed = rest.substr(0, kLongestLine).find('\n');
    if (feed != std::string_view::npos) {
      Take(rest.substr(0, feed + 1));
      return true;
    }
    if (rest.size() > kLongestLine) {
      Take(platform::FirstBytes(rest.substr(0, kLongestLine + 4), kLongestLine));
      return true;
    }
    if (!ended_) {
      Fill();
      continue;
    }
    if (rest.empty()) return false;
    Take(rest);
    return true;
  }
  return false;
}

void TextLines::Take(std::string_view line) {
  next_ += line.size();
  if (!in_long_line_) ++number_;
  in_long_line_ = line.back() != '\n';
  line_ = line;
  if (platform::IsValidUtf8(line)) return;
  converted_ = platform::FromWindows1252(line);
  line_ = converted_;
}

void TextLines::Fill() {
  text_.erase(0, next_);
  next_ = 0;
  std::string& into = encoding_ == Encoding::kUtf8 ? text_ : raw_;
  const std::size_t before = into.size();
  into.resize(before + kChunk);
  const std::size_t got = std::fread(into.data() + before, 1, kChunk, file_.get());
  into.resize(before + got);
  bytes_read_ += got;
  ended_ = got < kChunk;
  if (std::ferror(file_.get()) != 0) {
    fault_ = Fault::kUnreadable;
    return;
  }
  const bool at_start = !started_;
  started_ = true;
  if (at_start) TakeMark();
  const std::size_t checked = encoding_ == Encoding::kUtf8 && !at_start ? before : text_.size();
  if (encoding_ != Encoding::kUtf8) DecodeUtf16();
  const std::string_view fresh = std::string_view(text_).substr(at_start ? 0 : checked);
  const bool foreign = at_start ? std::any_of(fresh.begin(), fresh.end(), IsForeign)
                                : fresh.find('\0') != std::string_view::npos;
  if (foreign) fault_ = Fault::kNotText;
}

// Of the first chunk.
void TextLines::TakeMark() {
  if (text_.starts_with(kUtf8Mark)) {
    text_.erase(0, kUtf8Mark.size());
    return;
  }
  if (text_.starts_with(kUtf16LeMark)) {
    encoding_ = Encoding::kUtf16Le;
  } else if (text_.starts_with(kUtf16BeMark)) {
    encoding_ = Encoding::kUtf16Be;
  } else {
    return;
  }
  raw_ = text_.substr(kUtf16LeMark.size());
  text_.clear();
}

// What is left in raw_ is half of a character whose other half has not been read yet.
void TextLines::DecodeUtf16() {
  std::u16string units(raw_.size() / 2, u'\0');
  const std::size_t high = encoding_ == Encoding::kUtf16Be ? 0 : 1;
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<char16_t>(static_cast<unsigned char>(raw_[2 * i + high]) << 8 |
                                     static_cast<unsigned char>(raw_[2 * i + 1 - high]));
  }
  const bool split = !ended_ && !units.empty() && units.back() >= 0xD800 && units.back() <= 0xDBFF;
  if (split) units.pop_back();
  text_ += platform::FromWide(units);
  raw_.erase(0, units.size() * 2);
}

}  // namespace orvalo
