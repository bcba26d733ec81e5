#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "cli/command.h"

namespace orvalo::cli {

// Logs in with this name and password, which also fetches the balance. Throws CommandError:
// kRefused or kUnreachable.
void LogIn(Context& context, std::string_view user, std::string_view password);

// Logs in with the stored name and password: every run begins logged out. Throws CommandError, also
// when none are stored.
void LogInAsStored(Context& context);

// Throws CommandError for what can only be done online.
void RequireOnline(const Context& context);

// After the engine has lost the gateway and gone offline: the next run tries again.
void StayOnline(Context& context);

// The status after a call to the gateway that has failed: kRefused, or kUnreachable also for a
// gateway that is out of order or asks to be asked later.
ExitCode FailedCallCode(const Context& context);
ExitCode CodeOfFailure(std::int32_t gateway_code);

// For an engine that has gone offline: why it could not log in again.
std::string LostGateway(Context& context);

}  // namespace orvalo::cli
