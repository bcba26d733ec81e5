#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "messages/pasted_numbers.h"

namespace CLI {
class App;
}

namespace orvalo {
class SmsDatabase;
}

namespace orvalo::cli {

class ErrorOutput;
struct Context;

// The recipients of a new message: numbers, contacts, and the members of groups.
class RecipientArguments {
 public:
  void Define(CLI::App& app);
  // Throws CommandError(kUsage) for an item of --to that is no number (written in any of the ways
  // of NumberOf), and when there are no recipients. `input_taken`: the standard input is the
  // message's text.
  void Check(bool input_taken) const;
  // Reads the numbers of --to-file; to be called before RecipientString. Items that are no numbers
  // are left out, as the heading of a column may be, which one line tells.
  void ReadFile(Context& context);
  // Says which numbers were given more than once; a number is written to once.
  void TellDoubles(ErrorOutput& errors) const;
  // The recipient string: the numbers as given, then the contacts in order of their ids, each once.
  // Throws CommandError for unknown contacts and groups, and (kNothing) when nobody is left.
  std::string RecipientString(SmsDatabase& database) const;

 private:
  PastedNumbers Numbers() const;

  std::vector<std::string> number_lists_;
  std::string to_file_;
  PastedNumbers from_file_;  // those that --to does not have
  std::vector<std::int32_t> contacts_;
  std::vector<std::string> groups_;
};

}  // namespace orvalo::cli
