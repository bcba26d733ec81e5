#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "contacts/text_lines.h"

namespace orvalo {

// What a column of an import file is read into.
enum class ColumnCode : std::int32_t {
  kFirstName = 0,
  kSurname = 1,
  kTitle = 2,
  kCustom = 3,
  kMobile = 4,
  kGroup = 5
};
inline constexpr std::size_t kColumnCodeCount = 6;
inline constexpr std::size_t kGroupNameWidth = 21;  // characters of a group's name that are read

// The contacts of a delimited text file: a header line that names the columns, then a contact a
// line. Fields are what stands between separators, exactly: quotation marks and blanks have no
// meaning. Lives for one import; one thread.
//
// Header names, in any case: "fname", "sname", "title", "custom", "mobile", "group". A column of
// any other name is read into the first name. At most six columns are read; of two columns with one
// code the later counts.
class CsvContactReader {
 public:
  static constexpr std::size_t kMostColumns = 6;

  // Opens the file and reads its header.
  CsvContactReader(char separator, const std::string& path);

  // Whether there was a header that names a "mobile" column.
  bool IsValid() const { return valid_; }
  // Why the file cannot be read, or not to its end.
  TextLines::Fault fault() const { return lines_.fault(); }

  // Reads the next line and cuts it into fields. False at the end of the file, and for a line that
  // does not reach the mobile column: AtEnd tells them apart.
  bool ReadRow();
  // Reads the next line without looking into it; false at the end.
  bool SkipLine() { return ReadLine(); }
  bool AtEnd() const { return at_end_; }

  // Of the row read last, cut to the widths of a contact's texts; valid until the next read.
  std::string_view Field(ColumnCode code) const { return fields_[static_cast<std::size_t>(code)]; }
  // The line read last, without its end.
  std::string_view Line() const;
  std::uint64_t LineNumber() const { return lines_.Number(); }  // the header's is 1

  std::uint64_t BytesRead() const { return lines_.BytesRead(); }
  std::uint64_t Size() const { return lines_.Size(); }

 private:
  bool ReadLine();
  void ReadHeader();

  const char separator_;
  TextLines lines_;
  std::string_view line_;  // without its end
  std::array<ColumnCode, kMostColumns> columns_{};
  std::size_t column_count_ = 0;
  bool valid_ = false;
  bool at_end_ = false;
  std::array<std::string_view, kColumnCodeCount> fields_{};
};

}  // namespace orvalo
