#pragma once
#include <string>
#include <string_view>

#include "app/settings.h"

namespace orvalo {
class Program;
}

namespace orvalo::cli {

// The value for the operator's eyes: a secret that is set shows as stars.
std::string VisibleValue(const AppSettings& settings, const SettingInfo& setting);

// Gives a setting a value and writes it to the data file, also where the program itself only reads
// it. Throws CommandError when the value is none of the setting's kind. That the file cannot be
// written is told when the run ends, and is its exit status.
void WriteSetting(Program& program, const SettingInfo& setting, std::string_view value);

}  // namespace orvalo::cli
