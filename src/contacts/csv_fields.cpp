#include "contacts/csv_fields.h"

#include <algorithm>

namespace orvalo {

namespace {

constexpr char kQuote = '"';

// Takes an enclosed text off the front of `rest`, which begins with its quotation mark. False when
// nothing closes it.
bool TakeEnclosed(std::string_view* rest, std::string* text) {
  text->clear();
  std::size_t begin = 1;
  for (;;) {
    const std::size_t end = rest->find(kQuote, begin);
    if (end == std::string_view::npos) return false;
    text->append(rest->substr(begin, end - begin));
    begin = end + 1;
    if (begin == rest->size() || (*rest)[begin] != kQuote) break;
    *text += kQuote;
    ++begin;
  }
  rest->remove_prefix(begin);
  return true;
}

// A line end within a text, of either kind, as one blank.
void JoinLines(std::string* text) {
  std::size_t feed = 0;
  while ((feed = text->find("\r\n", feed)) != std::string::npos) text->erase(feed, 1);
  std::replace(text->begin(), text->end(), '\n', ' ');
}

}  // namespace

bool CsvFields::Cut(std::string_view line, std::size_t most) {
  count_ = 0;
  if (quotes_ == CsvQuotes::kEnclose && HasQuoted(line)) return CutEnclosing(line, most);
  while (count_ < most) {
    const std::size_t end = line.find(separator_);
    Keep(most, line.substr(0, end));
    if (end == std::string_view::npos) break;
    line.remove_prefix(end + 1);
  }
  return true;
}

// Goes to the line's end, also behind the fields that are kept: a record may end further down.
bool CsvFields::CutEnclosing(std::string_view line, std::size_t most) {
  for (;;) {
    std::string& text = unquoted_[std::min(count_, kMostCsvColumns)];
    const bool enclosed = !line.empty() && line.front() == kQuote;
    if (enclosed && !TakeEnclosed(&line, &text)) return false;
    const std::size_t end = line.find(separator_);
    if (enclosed) {
      text += line.substr(0, end);  // what stands behind the mark that closes it
      JoinLines(&text);
    }
    Keep(most, enclosed ? std::string_view(text) : line.substr(0, end));
    if (end == std::string_view::npos) return true;
    line.remove_prefix(end + 1);
  }
}

void CsvFields::Keep(std::size_t most, std::string_view field) {
  if (count_ < most) fields_[count_++] = field;
}

bool CsvFields::HasQuoted(std::string_view line) const {
  for (std::size_t at = line.find(kQuote); at != std::string_view::npos;
       at = line.find(kQuote, at + 1)) {
    if (at == 0 || line[at - 1] == separator_) return true;
  }
  return false;
}

}  // namespace orvalo
