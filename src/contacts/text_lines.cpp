#include "contacts/text_lines.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/code_page.h"
#include "platform/file.h"

namespace orvalo {

namespace {

constexpr std::size_t kChunk = 64u << 10;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LeMark = "\xFF\xFE";
constexpr std::string_view kUtf16BeMark = "\xFE\xFF";

// How files begin that operators take for lists: spreadsheets and other archives (zip, compound
// documents, gzip, 7z, rar), PDF, PNG, JPEG and GIF. From the formats' own definitions.
constexpr std::array<std::string_view, 9> kBinaryStarts{
    "PK\x03\x04", "\xD0\xCF\x11\xE0", "\x1F\x8B", "7z\xBC\xAF\x27\x1C", "Rar!\x1A\x07", "%PDF-",
    "\x89PNG",    "\xFF\xD8\xFF",     "GIF8"};

bool IsBinary(std::string_view bytes) {
  return std::any_of(kBinaryStarts.begin(), kBinaryStarts.end(),
                     [&](std::string_view start) { return bytes.starts_with(start); });
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
  if (at_start && IsBinary(text_)) fault_ = Fault::kBinary;
  if (fault_ == Fault::kNone) Check(at_start ? 0 : checked);
}

// Of what has come in since text_ was `fresh` long. Other control characters occur in texts: an
// address book that a telephone wrote must not be refused for one of them.
void TextLines::Check(std::size_t fresh) {
  const std::size_t nul = text_.find('\0', fresh);
  if (nul == std::string::npos) return;
  fault_ = Fault::kNul;
  const auto feeds =
      std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(nul), '\n');
  fault_line_ = number_ + static_cast<std::uint64_t>(feeds) + (in_long_line_ ? 0 : 1);
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
