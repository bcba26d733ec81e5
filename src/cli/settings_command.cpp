#include "cli/settings_command.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "app/startup/program.h"
#include "cli/gateway_address.h"
#include "cli/json_output.h"
#include "cli/setting_access.h"
#include "cli/table.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

constexpr char kAskForIt[] = "-";

Json SettingJson(const AppSettings& settings, const SettingInfo& setting) {
  return {{"Key", setting.key}, {"Value", VisibleValue(settings, setting)}};
}

void PrintOneSetting(const Context& context, const SettingInfo& setting) {
  const AppSettings& settings = context.program.GetSettings();
  if (context.json) {
    JsonArray list(context.out);
    list.Add(SettingJson(settings, setting));
    list.End();
  } else {
    context.out << VisibleValue(settings, setting) << '\n';
  }
}

void PrintAllSettings(const Context& context) {
  const AppSettings& settings = context.program.GetSettings();
  JsonArray list(context.out);
  for (const SettingInfo& setting : AppSettings::Table()) {
    if (context.json) {
      list.Add(SettingJson(settings, setting));
    } else {
      context.out << setting.key << " = "
                  << platform::PrintableLine(VisibleValue(settings, setting)) << '\n';
    }
  }
  if (context.json) list.End();
}

}  // namespace

SettingsCommand::SettingsCommand()
    : Command("settings", "List the settings, show one, or change one") {}

void SettingsCommand::Define(CLI::App& app) {
  key_option_ = app.add_option("KEY", key_, "The setting's key");
  value_option_ =
      app.add_option("VALUE", value_, "Its new value; for a password \"-\": it is asked for");
  secret_.Define(app);
}

bool SettingsCommand::Changes() const { return value_option_->count() > 0 || secret_.file_given(); }

void SettingsCommand::Check() const {
  const SettingInfo* setting = AppSettings::Find(key_);
  if (setting == nullptr) {
    if (key_option_->count() > 0)
      throw CommandError(ExitCode::kUsage, "There is no setting " + key_);
    if (secret_.file_given()) throw CommandError(ExitCode::kUsage, "No setting is named");
    return;
  }
  if (setting->secret && value_option_->count() > 0 && value_ != kAskForIt) {
    throw CommandError(ExitCode::kUsage,
                       "A password does not belong on the command line: write \"-\" in its place, "
                       "or use --password-file");
  }
  if (!setting->secret && secret_.file_given())
    throw CommandError(ExitCode::kUsage, std::string(setting->key) + " is no password");
}

ExitCode SettingsCommand::Execute(Context& context) {
  const SettingInfo* setting = AppSettings::Find(key_);
  if (setting == nullptr) {
    PrintAllSettings(context);
    return ExitCode::kDone;
  }
  if (Changes()) Change(context, *setting);
  PrintOneSetting(context, *setting);
  return ExitCode::kDone;
}

void SettingsCommand::Change(Context& context, const SettingInfo& setting) const {
  std::string value =
      setting.secret ? secret_.Read(context, std::string(setting.key) + ": ") : value_;
  if (setting.key == "COMBaseURL") value = GatewayAddress(value, false);
  WriteSetting(context.program, setting, value);
}

}  // namespace orvalo::cli
