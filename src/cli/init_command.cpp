#include "cli/init_command.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "app/startup/program.h"
#include "cli/gateway_address.h"
#include "cli/json_output.h"
#include "cli/setting_access.h"

namespace orvalo::cli {

namespace {

constexpr char kOwnClientId[] = "Orvalo";
constexpr char kAccountPage[] = "/account";  // of a gateway service

}  // namespace

InitCommand::InitCommand() : Command("init", "Make a data folder") {}

void InitCommand::Define(CLI::App& app) {
  app.add_option("--gateway", gateway_, "Address of the gateway")->type_name("URL");
  app.add_flag("--plain-http", plain_http_, "Accept http:// to another machine");
  app.add_option("--client-id", client_id_,
                 std::string("Identifier of the installation (else ") + kOwnClientId + ")")
      ->type_name("ID");
}

ExitCode InitCommand::Execute(Context& context) {
  const std::string address = GatewayAddress(gateway_, plain_http_);
  AppSettings& settings = context.program.GetSettings();
  std::string client_id = client_id_;
  if (client_id.empty() && settings.Text(TextSetting::kClientId).empty()) client_id = kOwnClientId;
  if (!client_id.empty()) WriteSetting(context.program, *AppSettings::Find("client_id"), client_id);
  if (!address.empty()) {
    WriteSetting(context.program, *AppSettings::Find("COMBaseURL"), address);
    const std::string base = address.substr(0, address.find_last_not_of('/') + 1);
    WriteSetting(context.program, *AppSettings::Find("voucher_url"), base + kAccountPage);
  }
  const std::string& folder = context.program.DataFolder();
  if (context.json) {
    PrintJson(context.out, {{"DataFolder", folder},
                            {"client_id", settings.Text(TextSetting::kClientId)},
                            {"COMBaseURL", settings.Text(TextSetting::kComBaseUrl)}});
  } else {
    context.out << "Data folder: " << folder
                << "\nGateway: " << settings.Text(TextSetting::kComBaseUrl) << '\n';
  }
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
