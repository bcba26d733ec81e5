#pragma once
#include <string>

#include "platform/file_error.h"

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class DataFile;
class Texts;

// `text`, and in a second paragraph why the file could not be written, and what to do about it.
std::string WithReason(const std::string& text, const platform::FileError& error,
                       const Texts& texts);

// Tells the operator that the settings could not be saved in `file`: what becomes of them, why, and
// what to do. `at_end`: of the run, after which nobody tries again.
void TellSettingsNotSaved(const DataFile& file, bool at_end, const Texts& texts,
                          platform::MessageBoxes& boxes);

}  // namespace orvalo
