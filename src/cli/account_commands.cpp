#include "cli/account_commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <ostream>

#include "app/startup/program.h"
#include "cli/error_output.h"
#include "cli/gateway_login.h"
#include "cli/json_output.h"
#include "platform/code_page.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

constexpr char kRecoveringClientId[] = "Orvalo";
constexpr int kMismatchTextId = 1058;
constexpr int kRecoveredTextId = 1056;
constexpr int kNotRecoveredTextId = 1057;
constexpr int kBalanceTextId = 1333;
constexpr std::size_t kLongestUser = 126;  // characters
constexpr std::size_t kLongestRecoveredUser = 31;
constexpr std::size_t kLongestEmail = 127;
constexpr std::size_t kVoucherLength = 16;

void RequireText(const char* what, const std::string& text, std::size_t longest) {
  if (text.find_first_not_of(' ') == std::string::npos)
    throw CommandError(ExitCode::kUsage, std::string(what) + " is empty");
  if (platform::CountCharacters(text) > longest)
    throw CommandError(ExitCode::kUsage, std::string(what) + " is too long");
}

// `asked`: of the gateway just now. Where it has not answered, the balance is the last known one:
// false then, the operator having been told.
bool PrintBalance(const Context& context, bool asked) {
  const std::string why = asked ? context.program.GetAccount().BalanceFailure() : std::string();
  const bool fresh = asked && why.empty();
  const std::int32_t tenths = context.program.GetSettings().Number(NumberSetting::kLastBalance);
  const int fraction = std::abs(tenths % 10);
  const std::string known = std::to_string(tenths / 10) + "." + std::to_string(fraction);
  const std::string told = fresh ? context.program.GetAccount().BalanceAsTold() : known;
  if (context.json) {
    Json balance = {{"balance", told}, {"tenths", tenths}, {"online", fresh}};
    if (!why.empty()) balance["reason"] = why;
    PrintJson(context.out, balance);
  } else {
    std::string line = context.program.GetTexts()
                           .Format(kBalanceTextId, {tenths / 10, fraction, fresh ? "" : "?"})
                           .value_or("");
    // Money as the gateway tells it, not rounded to the tenths that the window shows.
    if (const auto at = line.find(known); at != std::string::npos)
      line.replace(at, known.size(), platform::PrintableLine(told));
    context.out << line << '\n';
  }
  if (!why.empty()) context.errors.Line("This is the last known balance: " + why);
  return fresh || !asked;
}

}  // namespace

// ---------------------------------------------------------------------------------------- login

LoginCommand::LoginCommand()
    : Command("login", "Check a user name and password and store them for the other commands") {}

void LoginCommand::Define(CLI::App& app) {
  app.add_option("USER", user_, "The gateway account's user name")->required();
  password_.Define(app);
  app.add_flag("--remember", remember_, "Have the window fill in name and password by itself");
  app.add_flag("--offline", offline_, "Compare with what is stored, and work offline from now on");
}

void LoginCommand::Check() const { RequireText("The user name", user_, kLongestUser); }

ExitCode LoginCommand::Execute(Context& context) {
  const std::string password = password_.Read(context, "Password for " + user_ + ": ");
  if (offline_) {
    VerifyOffline(context, password);
  } else {
    LogIn(context, user_, password);
  }
  AppSettings& settings = context.program.GetSettings();
  settings.SetText(TextSetting::kLogin, user_);
  settings.SetText(TextSetting::kPassword, password);
  settings.SetFlag(FlagSetting::kRememberPassword, remember_);
  settings.SetFlag(FlagSetting::kWorkingOnLine, !offline_);
  settings.SaveLoginValues(context.program.GetDataFile());  // the end tells of what is not saved
  PrintBalance(context, !offline_);
  return ExitCode::kDone;
}

void LoginCommand::VerifyOffline(const Context& context, const std::string& password) const {
  const AppSettings& settings = context.program.GetSettings();
  if (user_ == settings.Text(TextSetting::kLogin) &&
      password == settings.Text(TextSetting::kPassword))
    return;
  throw CommandError(ExitCode::kFailed, context.program.GetTexts().Load(kMismatchTextId));
}

// -------------------------------------------------------------------------------------- balance

BalanceCommand::BalanceCommand() : Command("balance", "Show the account's balance") {}

void BalanceCommand::Define(CLI::App& app) {
  app.add_flag("--offline", offline_, "The last known balance, without asking the gateway");
}

ExitCode BalanceCommand::Execute(Context& context) {
  const bool ask = !offline_ && context.program.GetSettings().Flag(FlagSetting::kWorkingOnLine);
  if (ask) LogInAsStored(context);
  return PrintBalance(context, ask) ? ExitCode::kDone : FailedCallCode(context);
}

// -------------------------------------------------------------------------------------- voucher

VoucherCommand::VoucherCommand() : Command("voucher", "Redeem a voucher") {}

void VoucherCommand::Define(CLI::App& app) {
  app.add_option("NUMBER", number_, "The voucher's number, 16 digits")->required();
}

void VoucherCommand::Check() const {
  if (number_.find_first_not_of("0123456789") != std::string::npos)
    throw CommandError(ExitCode::kUsage, "A voucher's number has digits only");
}

ExitCode VoucherCommand::Execute(Context& context) {
  const bool worth_asking = context.program.GetSettings().Flag(FlagSetting::kWorkingOnLine) &&
                            number_.size() == kVoucherLength;
  if (worth_asking) LogInAsStored(context);
  if (!context.program.GetAccount().RedeemVoucher(number_))  // which says why
    return worth_asking ? FailedCallCode(context) : ExitCode::kFailed;
  PrintBalance(context, true);
  return ExitCode::kDone;
}

// --------------------------------------------------------------------------------- account page

AccountPageCommand::AccountPageCommand()
    : Command("account-page", "Print the address of the account's web page, good for one visit") {}

ExitCode AccountPageCommand::Execute(Context& context) {
  if (context.program.GetSettings().Flag(FlagSetting::kWorkingOnLine)) LogInAsStored(context);
  const std::string address = context.program.GetAccount().AccountPageAddress();
  if (context.json) {
    PrintJson(context.out, {{"address", address}});
  } else {
    context.out << address << '\n';
  }
  return ExitCode::kDone;
}

// -------------------------------------------------------------------------------------- recover

RecoverCommand::RecoverCommand()
    : Command("recover", "Have the account's password sent by e-mail") {}

void RecoverCommand::Define(CLI::App& app) {
  app.add_option("USER", user_, "The account's user name")->required();
  app.add_option("EMAIL", email_, "The e-mail address that the account was registered with")
      ->required();
}

void RecoverCommand::Check() const {
  RequireText("The user name", user_, kLongestRecoveredUser);
  RequireText("The e-mail address", email_, kLongestEmail);
}

ExitCode RecoverCommand::Execute(Context& context) {
  Program& program = context.program;
  const AppSettings& settings = program.GetSettings();
  if (settings.Text(TextSetting::kClientId) != kRecoveringClientId) {
    throw CommandError(ExitCode::kFailed,
                       "Passwords are recovered at " + settings.Text(TextSetting::kHelpUrl));
  }
  std::string why;
  if (!program.GetAccount().RecoverPassword(user_, email_, &why))
    throw CommandError(FailedCallCode(context),
                       program.GetTexts().Load(kNotRecoveredTextId) + "  " + why);
  const std::string text = program.GetTexts().Load(kRecoveredTextId);
  if (context.json) {
    PrintJson(context.out, {{"recovered", true}, {"text", text}});
  } else {
    context.out << text << '\n';
  }
  return ExitCode::kDone;
}

}  // namespace orvalo::cli
