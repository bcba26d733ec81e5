#include "app/data_file_format.h"

#include <array>
#include <cstdint>

#include "platform/code_page.h"

namespace orvalo {
namespace {

constexpr std::string_view kDataMagic = "\xBE\xBA\xFE\xCA";
constexpr std::size_t kKeyField = kMaxDataKey + 1;
constexpr std::size_t kRecordHeader = kKeyField + 4;
constexpr std::array<unsigned char, 8> kScrambleTable = {0x9D, 0x3A, 0xE4, 0x57,
                                                         0x1C, 0xB8, 0x62, 0xF5};

std::string_view UpToNul(std::string_view text) { return text.substr(0, text.find('\0')); }

std::string Scrambled(std::string_view bytes, DataScrambler* scrambler) {
  std::string result(bytes);
  for (char& byte : result) {
    byte = static_cast<char>(scrambler->Next(static_cast<unsigned char>(byte)));
  }
  return result;
}

std::uint32_t ReadLength(std::string_view field) {
  std::uint32_t length = 0;
  for (int i = 3; i >= 0; --i) length = length << 8 | static_cast<unsigned char>(field[i]);
  return length;
}

}  // namespace

unsigned char DataScrambler::Next(unsigned char byte) {
  const auto result = static_cast<unsigned char>(byte ^ kScrambleTable[index_] ^ state_);
  index_ = (index_ + 1) % kScrambleTable.size();
  state_ += 5;
  if (state_ > 255) state_ -= 255;
  return result;
}

std::vector<DataRecord> DecodeDataRecords(std::string_view bytes, bool* sound) {
  std::vector<DataRecord> records;
  bool ignored = false;
  if (sound == nullptr) sound = &ignored;
  *sound = bytes.starts_with(kDataMagic);
  if (!*sound) return records;
  bytes.remove_prefix(kDataMagic.size());
  DataScrambler scrambler;
  while (bytes.size() >= kRecordHeader) {
    const std::string header = Scrambled(bytes.substr(0, kRecordHeader), &scrambler);
    const std::size_t length = ReadLength(std::string_view(header).substr(kKeyField));
    if (length > bytes.size() - kRecordHeader) break;
    bytes.remove_prefix(kRecordHeader);
    if (length > kMaxDataValue) *sound = false;
    const std::string value = Scrambled(bytes.substr(0, length), &scrambler);
    bytes.remove_prefix(length);
    const std::string_view key = std::string_view(header).substr(0, kMaxDataKey);
    records.emplace_back(UpToNul(key), platform::FirstBytes(UpToNul(value), kMaxDataValue));
  }
  if (!bytes.empty()) *sound = false;
  return records;
}

std::string EncodeDataRecords(const std::vector<DataRecord>& records) {
  std::string bytes(kDataMagic);
  DataScrambler scrambler;
  for (const auto& [key, value] : records) {
    std::string record = key;
    record.resize(kKeyField, '\0');
    const auto length = static_cast<std::uint32_t>(value.size());
    for (int shift = 0; shift < 32; shift += 8) record += static_cast<char>(length >> shift & 0xFF);
    record += value;
    bytes += Scrambled(record, &scrambler);
  }
  return bytes;
}

}  // namespace orvalo
