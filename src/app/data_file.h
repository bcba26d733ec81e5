#pragma once
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace orvalo {

// The scrambled key/value file "SMS.dat": settings and the last scheduling choices. Read whole at
// creation, changed in memory, written whole by Save (to a temporary file that then replaces the
// old one). Entries that this program does not know are kept and written back.
//
// Owned by start-up, used on the main thread only. A missing, foreign or damaged file reads as far
// as it is sound and reports nothing; limits: keys of 47 bytes, values of 2047 bytes (longer ones
// are cut when they are set, never inside a character, and both end at their first NUL).
class DataFile {
 public:
  DataFile(std::string path, bool auto_save);
  ~DataFile();  // saves first when auto-save is on
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;

  // False when the file could not be written; the old one then stays.
  bool Save();

  // Keys are compared without regard to case. A missing or empty value yields `fallback` and false.
  bool GetString(std::string_view key, std::string* value, std::string_view fallback) const;
  bool GetInteger(std::string_view key, std::int32_t* value,
                  std::int32_t fallback) const;  // decimal, as atoi reads; clamped to 32 bits
  bool GetFlag(std::string_view key, bool* value, bool fallback) const;  // true when not 0

  void SetString(std::string_view key, std::string_view value);
  void SetInteger(std::string_view key, std::int32_t value);

 private:
  struct KeyOrder {
    bool operator()(const std::string& a, const std::string& b) const;
  };
  std::map<std::string, std::string, KeyOrder> values_;
  std::string path_;
  bool auto_save_;
};

}  // namespace orvalo
