#pragma once
#include <memory>
#include <string>

#include "platform/named_mutex.h"

namespace orvalo {

class DataFile;
class Texts;

// What start-up asks of a data folder before it opens anything there. Every text is whole, for the
// operator. Main thread.

// The folder that the environment or the machine's configuration names; empty when neither does, or
// when the configuration cannot be read: `problem` then says so.
std::string ConfiguredFolder(const Texts& texts, std::string* problem);

// Whether the path is too long to be used; `problem` then says so.
bool IsTooLong(const std::string& data_folder, const Texts& texts, std::string* problem);

// The lock on a data folder.
struct FolderLock {
  std::unique_ptr<platform::NamedMutex> held;  // null for a folder that is missing or read-only
  bool in_use = false;                         // another program holds it
  std::string problem;                         // it cannot be had: nobody must work on the folder
};

// Takes the lock without waiting. Who holds it also clears away what killed programs have left.
FolderLock TakeFolder(const std::string& data_folder, const Texts& texts);

// What is to be said of settings that were not found sound; empty when all is well. A damaged file
// is kept aside, unless the program only looks.
std::string ProblemOf(DataFile& file, bool look_only, const Texts& texts);

}  // namespace orvalo
