#pragma once
#include <string>

#include "cli/command.h"
#include "cli/secret_argument.h"

namespace orvalo::cli {

// Verifies name and password, online with the gateway, offline with the stored ones, and stores
// them.
class LoginCommand : public Command {
 public:
  LoginCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return offline_ ? Access::kChange : Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  void VerifyOffline(const Context& context, const std::string& password) const;

  std::string user_;
  SecretArgument password_;
  bool remember_ = false;
  bool offline_ = false;
};

// The balance, asked of the gateway; offline the last known one.
class BalanceCommand : public Command {
 public:
  BalanceCommand();
  void Define(CLI::App& app) override;
  Access AccessNeeded() const override { return offline_ ? Access::kLook : Access::kGateway; }
  bool Answers() const override { return true; }
  ExitCode Execute(Context& context) override;

 private:
  bool offline_ = false;
};

// Redeems a voucher.
class VoucherCommand : public Command {
 public:
  VoucherCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  std::string number_;
};

// Prints the address of the account's web page: online with a key that opens it once.
class AccountPageCommand : public Command {
 public:
  AccountPageCommand();
  void Define(CLI::App&) override {}
  Access AccessNeeded() const override { return Access::kGateway; }
  bool Answers() const override { return true; }
  ExitCode Execute(Context& context) override;
};

// Has the gateway send a password.
class RecoverCommand : public Command {
 public:
  RecoverCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  std::string user_;
  std::string email_;
};

}  // namespace orvalo::cli
