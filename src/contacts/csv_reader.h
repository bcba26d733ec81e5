#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "contacts/csv_fields.h"
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
// line. Fields are what stands between separators, exactly, but for quotation marks (CsvQuotes).
// Lives for one import; one thread.
//
// Header names, in any case: "fname", "sname", "title", "custom", "mobile", "group". A column of
// any other name is read into the first name. At most six columns are read; of two columns with one
// code the later counts.
class CsvContactReader {
 public:
  // Opens the file and reads its header.
  CsvContactReader(char separator, const std::string& path, CsvQuotes quotes);

  // Whether there was a header that names a "mobile" column.
  bool IsValid() const { return valid_; }
  // Why the file cannot be read, or not to its end.
  TextLines::Fault fault() const { return lines_.fault(); }
  std::uint64_t FaultLine() const { return lines_.FaultLine(); }

  // Reads the next line and cuts it into fields. False at the end of the file, for a line that does
  // not reach the mobile column, and for quoted fields that are refused: AtEnd and RefusedQuotes
  // tell them apart.
  bool ReadRow();
  // The header, or the line read last, has a field in quotation marks, and CsvQuotes::kRefuse says
  // that nobody has said what is to be done with them.
  bool RefusedQuotes() const { return refused_quotes_; }
  // The line read last has a quotation mark that nothing closes before the end of the file, or
  // within TextLines::kLongestLine bytes: its fields are empty.
  bool HasOpenQuote() const { return open_quote_; }
  // Reads the next line without looking into it; false at the end.
  bool SkipLine() { return ReadLine(); }
  bool AtEnd() const { return at_end_; }

  // Of the row read last, cut to the widths of a contact's texts; valid until the next read.
  std::string_view Field(ColumnCode code) const { return fields_[static_cast<std::size_t>(code)]; }
  // The line read last, without its end.
  std::string_view Line() const { return line_; }
  std::uint64_t LineNumber() const { return number_; }  // its first line's; the header's is 1

  std::uint64_t BytesRead() const { return lines_.BytesRead(); }
  std::uint64_t Size() const { return lines_.Size(); }

 private:
  bool ReadLine();
  bool ReadRecord(std::size_t most_fields);
  void ReadHeader();

  const CsvQuotes quotes_;
  TextLines lines_;
  CsvFields cut_;
  std::string_view line_;  // without its end
  std::string joined_;     // the lines that line_ is made of, where a quoted field spans several
  std::uint64_t number_ = 0;
  bool refused_quotes_ = false;
  bool open_quote_ = false;
  std::array<ColumnCode, kMostCsvColumns> columns_{};
  std::size_t column_count_ = 0;
  bool valid_ = false;
  bool at_end_ = false;
  std::array<std::string_view, kColumnCodeCount> fields_{};
};

}  // namespace orvalo
