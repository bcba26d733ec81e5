#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_error.h"

namespace orvalo::platform {

// Where a configuration file of that name may stand, in the order of precedence: the user's
// ($XDG_CONFIG_HOME or ~/.config)/Corvane/, then the machine's /etc/xdg/Corvane/.
std::vector<std::string> ConfigFiles(std::string_view name);

// The user's folder for the data of programs: $XDG_DATA_HOME or ~/.local/share; empty when there is
// no home.
std::string UserDataFolder();

// The per-machine configuration: the vendor's key "Corvane/Orvalo3" as a small file of "Name=value"
// lines ('#' and ';' start comment lines, "[section]" lines are ignored, blanks around name and
// value are dropped). Names compare without regard to ASCII case; the first line with the name
// counts, even when its value is empty.
//
// Read from ConfigFiles("Orvalo3.conf"), first match wins. Any thread; reads the files anew at
// every call.
class MachineConfig {
 public:
  MachineConfig();                                         // the two standard files
  explicit MachineConfig(std::vector<std::string> files);  // in the order of precedence

  // A file that stands there, or may do so, and cannot be read or is larger than 1 MiB.
  struct Unreadable {
    std::string path;  // empty: all were read
    FileError error;
  };

  // The value, or the empty text when no file has the name. Nobody knows what an unreadable file
  // says: the search ends with it, without a value, and tells of it.
  std::string Read(std::string_view name, Unreadable* unreadable) const;

 private:
  std::vector<std::string> files_;
};

inline constexpr std::size_t kLongestDataPath = 259;  // bytes

// The data folder: the environment variable ORVALO_DATA_PATH unless it is empty, else the value
// "DataPath". Empty when none is given. One longer than kLongestDataPath is given as it is, to be
// refused: cut, it would be another folder. So is what a file that cannot be read might have named;
// the environment's word needs no file.
std::string ReadDataPath(const MachineConfig& config, MachineConfig::Unreadable* unreadable);

// The user's folder for documents, or the home folder when there is none.
std::string DocumentsFolder();

}  // namespace orvalo::platform
