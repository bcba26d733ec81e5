#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvalo {

// The bytes of "SMS.dat": the magic number BE BA FE CA, then one record after the other until the
// end, each a key field of 48 bytes (the key, filled up with NUL), the value's length as 32 bits
// little-endian, and the value. Every byte of every record is scrambled. Pure functions, any
// thread.
//
// The format is on the operators' disks: nothing here changes value.

inline constexpr std::size_t kMaxDataKey = 47;      // bytes
inline constexpr std::size_t kMaxDataValue = 2047;  // bytes

using DataRecord = std::pair<std::string, std::string>;  // key, value

// The stream cipher of the records: created at the first byte after the magic number, it goes on
// through every byte of the file. The same operation scrambles and unscrambles.
class DataScrambler {
 public:
  unsigned char Next(unsigned char byte);

 private:
  unsigned index_ = 0;
  unsigned state_ = 0;
};

// Every whole record, in file order, key and value each up to its first NUL. A foreign file has
// none; a last record that is cut short is dropped, whatever length it claims. A value above
// kMaxDataValue is cut, never inside a character, and its record still counts as whole.
// `sound` (may be null) says whether nothing but such records stood in the file, none of them cut.
std::vector<DataRecord> DecodeDataRecords(std::string_view bytes, bool* sound = nullptr);

// The file for these records. Keys and values must be within their limits and hold no NUL.
std::string EncodeDataRecords(const std::vector<DataRecord>& records);

}  // namespace orvalo
