#pragma once
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace orvalo {

// What quotation marks mean in an import file.
enum class CsvQuotes {
  kLiteral,  // nothing: they are part of the field
  kEnclose,  // a field that begins with one ends at the next; two of them stand for one within it.
             // Separators between them are text, and so are line ends, which read as blanks.
  kRefuse,   // the operator has not said: see CsvContactReader::RefusedQuotes
};

inline constexpr std::size_t kMostCsvColumns = 6;

// Cuts the lines of a delimited file into fields. One thread.
class CsvFields {
 public:
  CsvFields(char separator, CsvQuotes quotes) : separator_(separator), quotes_(quotes) {}

  // Cuts a line without its end; the first `most` (at most kMostCsvColumns) fields are kept, as
  // views of the line or of this object, valid until the next Cut. False when a quotation mark is
  // not closed: the line after it belongs to the record as well.
  bool Cut(std::string_view line, std::size_t most);

  std::size_t Count() const { return count_; }
  std::string_view operator[](std::size_t field) const { return fields_[field]; }

  // Whether a field of the line begins with a quotation mark.
  bool HasQuoted(std::string_view line) const;

 private:
  bool CutEnclosing(std::string_view line, std::size_t most);
  void Keep(std::size_t most, std::string_view field);

  const char separator_;
  const CsvQuotes quotes_;
  std::size_t count_ = 0;
  std::array<std::string_view, kMostCsvColumns> fields_{};
  std::array<std::string, kMostCsvColumns + 1> unquoted_;  // the last: of fields that are not kept
};

}  // namespace orvalo
