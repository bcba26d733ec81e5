#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include "app/data_file.h"
#include "app/data_file_format.h"

namespace {

using orvalo::DataRecord;

void Require(bool condition) {
  if (!condition) std::abort();
}

// Whatever was read is within the limits, and reads the same after it was written again.
std::vector<DataRecord> DecodeAndCheck(const std::string& bytes) {
  const std::vector<DataRecord> records = orvalo::DecodeDataRecords(bytes);
  for (const auto& [key, value] : records) {
    Require(key.size() <= orvalo::kMaxDataKey && value.size() <= orvalo::kMaxDataValue);
    Require((key + value).find('\0') == std::string::npos);
  }
  Require(orvalo::DecodeDataRecords(orvalo::EncodeDataRecords(records)) == records);
  return records;
}

void LoadAndCheck(const std::string& bytes, const std::vector<DataRecord>& records) {
  static const std::string path = "/tmp/orvalo-data-fuzz-" + std::to_string(getpid());
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  const orvalo::DataFile file(path, false);
  unlink(path.c_str());
  if (!records.empty() && !records[0].second.empty()) {
    std::string text;
    Require(file.GetString(records[0].first, &text, "") && text == records[0].second);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  DecodeAndCheck(input);
  // The input as the readable text of a file, so that mutations meet keys, lengths and values.
  std::string scrambled = "\xBE\xBA\xFE\xCA";
  orvalo::DataScrambler scrambler;
  for (const char byte : input) {
    scrambled += static_cast<char>(scrambler.Next(static_cast<unsigned char>(byte)));
  }
  LoadAndCheck(scrambled, DecodeAndCheck(scrambled));
  return 0;
}
