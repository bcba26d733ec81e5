#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace orvalo {
class SmsDatabase;
}

namespace orvalo::cli {

// The recipients of a new message: numbers, contacts, and the members of groups.
class RecipientArguments {
 public:
  void Define(CLI::App& app);
  // Throws CommandError(kUsage) for an item that is no number, and when there are no recipients.
  void Check() const;
  // The recipient string: the numbers as given, then the contacts in order of their ids, each once.
  // Throws CommandError for unknown contacts and groups, and (kNothing) when nobody is left.
  std::string RecipientString(SmsDatabase& database) const;

 private:
  std::vector<std::string> Numbers() const;

  std::vector<std::string> number_lists_;
  std::vector<std::int32_t> contacts_;
  std::vector<std::string> groups_;
};

}  // namespace orvalo::cli
