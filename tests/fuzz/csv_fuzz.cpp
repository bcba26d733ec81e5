// Hostile import files: whatever they hold, fields are text within their widths, and reading ends.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "contacts/csv_reader.h"
#include "contacts/rejected_lines.h"
#include "platform/code_page.h"

namespace {

using namespace orvalo;

void Require(bool condition) {
  if (!condition) std::abort();
}

void ReadAll(const std::string& path, char separator, CsvQuotes quotes) {
  CsvContactReader reader(separator, path, quotes);
  RejectedLines rejected;
  std::uint64_t last = 0;
  while (reader.ReadRow()) {
    Require(reader.LineNumber() >= last);
    last = reader.LineNumber();
    if (reader.HasOpenQuote()) rejected.Add(last, RejectReason::kOpenQuote, reader.Line());
    for (std::size_t code = 0; code < kColumnCodeCount; ++code) {
      const auto field = reader.Field(static_cast<ColumnCode>(code));
      Require(platform::IsValidUtf8(field) && platform::CountCharacters(field) <= 32);
    }
  }
  while (reader.SkipLine()) Require(platform::IsValidUtf8(reader.Line()));
  Require(reader.BytesRead() <= reader.Size() || reader.Size() == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const int file = memfd_create("orvalo-csv-fuzz", 0);
  Require(file >= 0 && write(file, data, size) == static_cast<ssize_t>(size));
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  for (const char separator : {',', ';'}) {
    for (const auto quotes : {CsvQuotes::kLiteral, CsvQuotes::kEnclose, CsvQuotes::kRefuse})
      ReadAll(path, separator, quotes);
  }
  close(file);
  return 0;
}
