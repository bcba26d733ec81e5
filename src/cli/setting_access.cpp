#include "cli/setting_access.h"

#include <algorithm>

#include "app/setting_rules.h"
#include "app/startup/program.h"
#include "cli/command.h"

namespace orvalo::cli {

namespace {

constexpr char kStars[] = "********";

// The country code goes in place of a number's leading zeros, so it has none itself.
std::string_view WithoutLeadingZeros(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return text;
}

// A failure is told at the end of the run, which comes at once and tries again.
void Store(AppSettings& settings, DataFile& file, const SettingInfo& setting) {
  switch (setting.saved_by) {
    case SavedBy::kSaveLogin:
    case SavedBy::kBoth:
      settings.SaveLoginValues(file);
      return;
    case SavedBy::kSaveSettings:
      settings.Save(file);
      return;
    case SavedBy::kNobody:
      break;
  }
  file.SetString(setting.key, settings.AsText(setting));
  file.Save();
}

}  // namespace

std::string VisibleValue(const AppSettings& settings, const SettingInfo& setting) {
  std::string value = settings.AsText(setting);
  if (setting.secret && !value.empty()) value = kStars;
  return value;
}

void WriteSetting(Program& program, const SettingInfo& setting, std::string_view value) {
  const bool is_prefix = setting.kind == SettingInfo::Kind::kText &&
                         setting.index == static_cast<int>(TextSetting::kPrefix);
  if (is_prefix) value = WithoutLeadingZeros(value);
  if (const std::string problem = SettingProblem(setting, value); !problem.empty()) {
    throw CommandError(ExitCode::kFailed,
                       "That is no value for " + std::string(setting.key) + ": " + problem);
  }
  AppSettings& settings = program.GetSettings();
  if (!settings.SetFromText(setting, value)) {
    throw CommandError(ExitCode::kFailed, "That is no value for " + std::string(setting.key));
  }
  Store(settings, program.GetDataFile(), setting);
}

}  // namespace orvalo::cli
