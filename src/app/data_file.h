#pragma once
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_error.h"

namespace orvalo {

// The scrambled key/value file "SMS.dat": settings and the last scheduling choices. Read whole at
// creation, changed in memory, written whole by Save (to a temporary file that then replaces the
// old one). Entries that this program does not know are kept and written back.
//
// Owned by start-up, used on the main thread only. Limits: keys of 47 bytes, values of 2047 bytes
// (longer ones are cut when they are set, never inside a character, and both end at their first
// NUL). What the file holds is never lost to a save: one that cannot be read is left alone, and one
// that is damaged gets a second name before it is replaced.
class DataFile {
 public:
  // What was found at creation.
  enum class State {
    kSound,       // all of it was read, or there is none yet
    kDamaged,     // foreign, broken off, or too large: it was read as far as it is sound
    kUnreadable,  // it stands there and cannot be read: there are no values, and Save fails
  };

  DataFile(std::string path, bool auto_save);
  ~DataFile();  // saves first when auto-save is on
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;

  // The file then stays as it was found when the object goes.
  void ForgetAutoSave() { auto_save_ = false; }

  State state() const { return state_; }
  // Why the file cannot be read, or why the last Save has failed.
  const platform::FileError& Error() const { return error_; }
  const std::string& path() const { return path_; }

  // Gives a damaged file a second name ("SMS.dat.damaged", or that with a number where it is
  // taken); the name, or nothing when that fails. Save does the same.
  std::optional<std::string> KeepDamaged();

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
  State state_ = State::kSound;
  platform::FileError error_;
};

}  // namespace orvalo
