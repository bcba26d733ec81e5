#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace orvalo {

// A text file line by line, as the import reads it. The file is UTF-8, with or without a mark at
// its start, or UTF-16 with a mark (spreadsheets write all three); lines that are no UTF-8 are
// taken as Windows-1252. Lines are handed on in UTF-8. One thread.
class TextLines {
 public:
  // Bytes of a line that are read as one. A longer line comes in pieces, none of which ends inside
  // a character.
  static constexpr std::size_t kLongestLine = 8191;

  enum class Fault {
    kNone,
    kNotOpened,   // there is no such file, or it may not be read
    kBinary,      // it begins as spreadsheets, archives, pictures or documents do
    kNul,         // a line holds a NUL byte, which no text does: see FaultLine
    kUnreadable,  // the disk failed while it was read
  };

  explicit TextLines(const std::string& path);
  TextLines(const TextLines&) = delete;
  TextLines& operator=(const TextLines&) = delete;

  // Reads the next line; false at the end of the file, or after a fault.
  bool Next();
  // The line with its line feed, if it has one; valid until the next read.
  std::string_view Line() const { return line_; }
  std::uint64_t Number() const { return number_; }  // from 1; pieces of one line share it
  Fault fault() const { return fault_; }
  std::uint64_t FaultLine() const { return fault_line_; }  // from 1; 0 without a fault of a line

  // How far the file has been read, in bytes.
  std::uint64_t BytesRead() const { return bytes_read_; }
  std::uint64_t Size() const { return size_; }

 private:
  enum class Encoding { kUtf8, kUtf16Le, kUtf16Be };
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void Fill();
  void Check(std::size_t fresh);
  void TakeMark();
  void DecodeUtf16();
  void Take(std::string_view line);

  std::unique_ptr<std::FILE, CloseFile> file_;
  Fault fault_ = Fault::kNone;
  Encoding encoding_ = Encoding::kUtf8;
  bool started_ = false;
  bool ended_ = false;         // the file has nothing more
  bool in_long_line_ = false;  // the line read last was a piece that did not end its line
  std::string raw_;            // UTF-16 not decoded yet
  std::string text_;           // decoded; read up to next_
  std::size_t next_ = 0;
  std::string converted_;  // a line that was not UTF-8
  std::string_view line_;
  std::uint64_t number_ = 0;
  std::uint64_t fault_line_ = 0;
  std::uint64_t bytes_read_ = 0;
  std::uint64_t size_ = 0;
};

}  // namespace orvalo
