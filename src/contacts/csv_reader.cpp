#include "contacts/csv_reader.h"

#include "platform/code_page.h"
#include "platform/collation.h"
#include "store/records.h"

namespace orvalo {

namespace {

constexpr std::size_t kHeaderNameWidth = 11;  // characters of a header name that are looked at

// By ColumnCode.
struct CsvColumn {
  std::string_view name;
  std::size_t width;  // characters kept
};
constexpr std::array<CsvColumn, kColumnCodeCount> kCsvColumns{{{"fname", kContactNameWidth},
                                                               {"sname", kContactSurnameWidth},
                                                               {"title", kContactTitleWidth},
                                                               {"custom", kContactCustomWidth},
                                                               {"mobile", kContactMobileWidth},
                                                               {"group", kGroupNameWidth}}};

ColumnCode CodeOf(std::string_view header) {
  const std::string_view name = platform::FirstCharacters(header, kHeaderNameWidth);
  for (std::size_t code = 0; code < kCsvColumns.size(); ++code) {
    if (platform::EqualNoCaseAscii(name, kCsvColumns[code].name))
      return static_cast<ColumnCode>(code);
  }
  return ColumnCode::kFirstName;
}

// The first character stays whatever it is: a line that is nothing but its end holds one field.
std::string_view WithoutEnd(std::string_view line) {
  while (line.size() > 1 && (line.back() == '\r' || line.back() == '\n')) line.remove_suffix(1);
  return line;
}

}  // namespace

CsvContactReader::CsvContactReader(char separator, const std::string& path, CsvQuotes quotes)
    : quotes_(quotes), lines_(path), cut_(separator, quotes) {
  if (separator != '\0' && ReadRecord(kMostCsvColumns)) ReadHeader();
}

bool CsvContactReader::ReadLine() {
  at_end_ = !lines_.Next();
  if (at_end_) return false;
  number_ = lines_.Number();
  line_ = WithoutEnd(lines_.Line());
  return !line_.empty();
}

// A line, or the lines that a quoted field goes over.
bool CsvContactReader::ReadRecord(std::size_t most_fields) {
  open_quote_ = false;
  if (!ReadLine()) return false;
  refused_quotes_ = quotes_ == CsvQuotes::kRefuse && cut_.HasQuoted(line_);
  if (refused_quotes_) return false;
  if (cut_.Cut(line_, most_fields)) return true;
  joined_ = lines_.Line();
  while (joined_.size() < TextLines::kLongestLine && lines_.Next()) {
    joined_ += lines_.Line();
    line_ = WithoutEnd(joined_);
    if (lines_.Line().find('"') != std::string_view::npos && cut_.Cut(line_, most_fields))
      return true;
  }
  line_ = WithoutEnd(joined_);
  open_quote_ = true;
  return true;
}

void CsvContactReader::ReadHeader() {
  if (open_quote_) return;
  for (std::size_t column = 0; column < cut_.Count(); ++column) {
    columns_[column] = CodeOf(cut_[column]);
    valid_ = valid_ || columns_[column] == ColumnCode::kMobile;
  }
  column_count_ = cut_.Count();
}

bool CsvContactReader::ReadRow() {
  if (!valid_ || !ReadRecord(column_count_)) return false;
  fields_.fill({});
  if (open_quote_) return true;
  bool reached_mobile = false;
  for (std::size_t column = 0; column < cut_.Count(); ++column) {
    const auto code = static_cast<std::size_t>(columns_[column]);
    fields_[code] = platform::FirstCharacters(cut_[column], kCsvColumns[code].width);
    reached_mobile = reached_mobile || columns_[column] == ColumnCode::kMobile;
  }
  return reached_mobile;
}

}  // namespace orvalo
