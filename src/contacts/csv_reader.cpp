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

// Calls `take` with the fields of a line, at most `most` of them.
template <typename Take>
void CutFields(std::string_view line, char separator, std::size_t most, const Take& take) {
  for (std::size_t field = 0; field < most; ++field) {
    const std::size_t end = line.find(separator);
    take(field, line.substr(0, end));
    if (end == std::string_view::npos) return;
    line.remove_prefix(end + 1);
  }
}

}  // namespace

CsvContactReader::CsvContactReader(char separator, const std::string& path)
    : separator_(separator), lines_(path) {
  if (separator_ != '\0' && ReadLine()) ReadHeader();
}

bool CsvContactReader::ReadLine() {
  at_end_ = !lines_.Next();
  if (at_end_) return false;
  line_ = Line();
  return !line_.empty();
}

// The first character stays whatever it is: a line that is nothing but its end holds one field.
std::string_view CsvContactReader::Line() const {
  std::string_view line = lines_.Line();
  while (line.size() > 1 && (line.back() == '\r' || line.back() == '\n')) line.remove_suffix(1);
  return line;
}

void CsvContactReader::ReadHeader() {
  CutFields(line_, separator_, kMostColumns, [this](std::size_t column, std::string_view name) {
    columns_[column] = CodeOf(name);
    column_count_ = column + 1;
    valid_ = valid_ || columns_[column] == ColumnCode::kMobile;
  });
}

bool CsvContactReader::ReadRow() {
  if (!valid_ || !ReadLine()) return false;
  fields_.fill({});
  bool reached_mobile = false;
  CutFields(line_, separator_, column_count_, [&](std::size_t column, std::string_view field) {
    const auto code = static_cast<std::size_t>(columns_[column]);
    fields_[code] = platform::FirstCharacters(field, kCsvColumns[code].width);
    reached_mobile = reached_mobile || columns_[column] == ColumnCode::kMobile;
  });
  return reached_mobile;
}

}  // namespace orvalo
