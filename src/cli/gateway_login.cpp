#include "cli/gateway_login.h"

#include "app/startup/program.h"
#include "gateway/gateway_failure.h"

namespace orvalo::cli {

void LogIn(Context& context, std::string_view user, std::string_view password) {
  Program& program = context.program;
  if (program.GetAccount().LoginToGateway(user, password)) return;
  throw CommandError(FailedCallCode(context), program.GetAccount().LoginFailure());
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

ExitCode FailedCallCode(const Context& context) {
  return CodeOfFailure(context.program.GetGateway()->LastError());
}

ExitCode CodeOfFailure(std::int32_t gateway_code) {
  switch (gateway_code) {
    case kNotUnderstood:
    case kTooManyRequests:
    case kServiceFailed:
    case kNetworkUnavailable:
      return ExitCode::kUnreachable;
    default:
      return IsUnreachable(gateway_code) ? ExitCode::kUnreachable : ExitCode::kRefused;
  }
}

std::string LostGateway(Context& context) {
  const std::string why = context.program.GetAccount().LoginFailure();
  if (!why.empty()) return why;
  return "The gateway at " + context.program.GetSettings().Text(TextSetting::kComBaseUrl) +
         " cannot be reached";
}

}  // namespace orvalo::cli
