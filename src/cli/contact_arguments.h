#pragma once
#include <optional>
#include <string>
#include <vector>

#include "store/records.h"

namespace CLI {
class App;
}

namespace orvalo {
class SmsDatabase;
}

namespace orvalo::cli {

// A contact's texts and groups as options. Those that are not given leave a contact as it is; an
// empty text empties it.
class ContactArguments {
 public:
  // `complete`: what a new contact cannot do without is required.
  void Define(CLI::App& app, bool complete);
  // Throws CommandError(kUsage) for a text that is too long, blank where it must not be, or no
  // number.
  void Check() const;
  // Throws CommandError for an unknown group.
  void ApplyTo(ContactRecord* contact, SmsDatabase& database) const;

 private:
  std::optional<std::string> name_, surname_, title_, custom_, mobile_;
  std::vector<std::string> groups_;
};

}  // namespace orvalo::cli
