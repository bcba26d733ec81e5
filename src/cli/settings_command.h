#pragma once
#include <string>

#include "cli/command.h"
#include "cli/secret_argument.h"

namespace orvalo {
struct SettingInfo;
}

namespace CLI {
class Option;
}

namespace orvalo::cli {

// Lists the settings, shows one, or changes one. Secrets are shown as stars, and their new value
// comes from where passwords come from.
class SettingsCommand : public Command {
 public:
  SettingsCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Changes() ? Access::kChange : Access::kLook; }
  ExitCode Execute(Context& context) override;

 private:
  bool Changes() const;
  void Change(Context& context, const SettingInfo& setting) const;

  std::string key_;
  std::string value_;
  SecretArgument secret_;
  CLI::Option* key_option_ = nullptr;
  CLI::Option* value_option_ = nullptr;
};

}  // namespace orvalo::cli
