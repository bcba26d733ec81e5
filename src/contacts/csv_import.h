#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "contacts/csv_fields.h"
#include "contacts/rejected_lines.h"
#include "contacts/text_lines.h"

namespace orvalo {

class SmsDatabase;

// What is to be imported and how.
struct CsvImportOrder {
  std::string path;
  char separator = ',';
  std::vector<std::int32_t> gids;  // the groups that new contacts join, in this order
  // A contact whose line names a group joins that group alone; a group that does not exist is made.
  bool auto_create = false;
  bool prevent_duplicates = false;  // numbers that the address book holds already are passed over
  CsvQuotes quotes = CsvQuotes::kLiteral;
};

struct CsvImportResult {
  enum class End {
    kFinished,
    kCancelled,
    kBinary,      // no text file but a spreadsheet, an archive, a picture ...
    kNul,         // `line` holds a NUL byte
    kQuoted,      // `line` holds a field in quotation marks, and the order refuses them
    kUnreadable,  // the disk failed
  };
  End end = End::kFinished;
  std::uint64_t line = 0;
  bool opened = false;        // the file could be opened
  bool valid_header = false;  // its first line names a mobile column; else nothing was read
  std::int32_t inserted = 0;
  std::int32_t discarded = 0;  // lines without a number
  RejectedLines rejected;      // every line that was not taken, from the second on
};

// Hears how much of the file has been read, in bytes; false cancels the import. It is called in the
// middle of a transaction: it may show and ask, but nothing on this thread may write to the
// database meanwhile.
using ImportProgress = std::function<bool(std::uint64_t done, std::uint64_t size)>;

// Imports a file in one transaction: the contacts are all there when this returns kFinished, and
// with every other end, with a StoreError, or when the process dies, the address book is as it was.
// Reading ends at the first line that does not reach the mobile column; what follows is rejected.
// The line of a contact whose group field names the group of every contact joins `gids`.
CsvImportResult ImportContacts(SmsDatabase& database, const CsvImportOrder& order,
                               const ImportProgress& progress);

}  // namespace orvalo
