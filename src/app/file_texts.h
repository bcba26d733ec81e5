#pragma once
#include <string>

#include "platform/file_error.h"

namespace orvalo {

class Texts;

// `text`, and in a second paragraph why the file could not be written, and what to do about it.
std::string WithReason(const std::string& text, const platform::FileError& error,
                       const Texts& texts);

}  // namespace orvalo
