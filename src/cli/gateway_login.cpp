#include "cli/gateway_login.h"

#include "app/startup/program.h"

namespace orvalo::cli {

namespace {

constexpr int kRefusedTextId = 1058;
constexpr std::int32_t kUnknownUser = 110;  // the gateway's code that the text already says

}  // namespace

void LogIn(Context& context, std::string_view user, std::string_view password) {
  Program& program = context.program;
  if (program.GetAccount().LoginToGateway(user, password)) return;
  const std::int32_t error = program.GetGateway()->LastError();
  if (error == kGatewayUnreachable) ThrowUnreachable(context);
  std::string reason = program.GetTexts().Load(kRefusedTextId);
  if (error != kUnknownUser) reason += " (gateway code " + std::to_string(error) + ")";
  throw CommandError(ExitCode::kGateway, reason);
}

void LogInAsStored(Context& context) {
  const AppSettings& settings = context.program.GetSettings();
  const std::string user = settings.Text(TextSetting::kLogin);
  if (user.empty())
    throw CommandError(ExitCode::kFailed, "Nobody has logged in yet: `orvaloctl login USER`");
  LogIn(context, user, settings.Text(TextSetting::kPassword));
}

void RequireOnline(const Context& context) {
  if (context.program.GetSettings().Flag(FlagSetting::kWorkingOnLine)) return;
  throw CommandError(ExitCode::kFailed,
                     "Working offline; to go online: `orvaloctl settings WorkingOnLine 1`");
}

void StayOnline(Context& context) {
  context.program.GetSettings().SetFlag(FlagSetting::kWorkingOnLine, true);
}

void ThrowUnreachable(Context& context) {
  throw CommandError(ExitCode::kGateway,
                     "The gateway at " +
                         context.program.GetSettings().Text(TextSetting::kComBaseUrl) +
                         " cannot be reached");
}

}  // namespace orvalo::cli
