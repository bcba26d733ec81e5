#include "cli/gateway_login.h"

#include "app/startup/program.h"

namespace orvalo::cli {

void LogIn(Context& context, std::string_view user, std::string_view password) {
  Program& program = context.program;
  if (program.GetAccount().LoginToGateway(user, password)) return;
  throw CommandError(ExitCode::kGateway, program.GetAccount().LoginFailure());
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

void ThrowLost(Context& context) {
  const std::string why = context.program.GetAccount().LoginFailure();
  if (!why.empty()) throw CommandError(ExitCode::kGateway, why);
  throw CommandError(ExitCode::kGateway,
                     "The gateway at " +
                         context.program.GetSettings().Text(TextSetting::kComBaseUrl) +
                         " cannot be reached");
}

}  // namespace orvalo::cli
