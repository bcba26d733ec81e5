#pragma once
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace orvalo::platform {
class Clock;
}

namespace orvalo::service {

// One object on a line of the standard output; nothing in it steers a terminal.
void PrintJson(const nlohmann::json& line);

// The commands of an administrator on a data folder, which may be served meanwhile. Each opens the
// folder, does its work, prints to the standard output, and returns the program's exit status: 0,
// or 1 with a sentence on the standard error. They throw what the database throws.
class AdminCommands {
 public:
  AdminCommands(std::string folder, platform::Clock& clock)
      : folder_(std::move(folder)), clock_(clock) {}

  // The password comes from `password_file` (its first line), else from the environment variable
  // ORVALO_PASSWORD, else it is asked for on the terminal.
  int AddAccount(const std::string& user, const std::string& email, const std::string& credit,
                 const std::string& password_file);
  int SetPassword(const std::string& user, const std::string& password_file);
  int AddCredit(const std::string& user, const std::string& amount);
  int ListAccounts(bool json);

  int AddVoucher(const std::string& number, const std::string& amount);  // "" draws a number
  int ListVouchers();

  int SetPrice(const std::string& prefix, const std::string& amount);
  int ListPrices();

  // One line for each accepted recipient, oldest first; with `json` one object a line.
  int PrintLedger(bool json);
  // Proves that the ledger adds up; 1 when it does not.
  int CheckLedger(bool as_json);

  // Writes a copy of the whole ledger as it is at one moment, beside a running service too, to a
  // file that is not there yet (mode 0600), and proves that the copy adds up.
  int BackUp(const std::string& file);

  // The parts that something may still come of, or only those in doubt.
  int ListOutbox(bool doubts_only, bool as_json);
  // Decides about parts in doubt: parts' names as listed, messages' ids, or "all". "sent": as if
  // the engine had taken them; "not-sent": written off and refunded; "again": handed over anew, on
  // the decider's own risk. 1 when nothing of one of the names is in doubt; the others are settled
  // all the same.
  int SettleOutbox(const std::vector<std::string>& names, const std::string& decision);
  // Puts in doubt all that waits and is due: for a ledger that is of the past, as one from a
  // backup, whose parts may have been sent since. What is held for later than now surely was not.
  int DoubtOutbox();

 private:
  std::string folder_;
  platform::Clock& clock_;
};

}  // namespace orvalo::service
