#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "cli/command.h"
#include "cli/json_output.h"
#include "cli/table.h"
#include "store/records.h"

namespace orvalo::cli {

// Messages as the operator asked for them: the outbox's columns behind the id, or JSON. Rows are
// printed as they are added; End must follow the last.
class MessageListing {
 public:
  // `reasons`: a further column tells why messages were refused, which JSON always does, and how
  // far those have come that wait for the gateway.
  explicit MessageListing(const Context& context, bool reasons = false);
  void Add(const MessageRow& row);
  void End();

 private:
  std::string ReasonOf(const MessageRow& row) const;

  Program& program_;
  const bool reasons_;
  std::optional<JsonArray> json_;
  std::optional<Table> table_;
};

// A message's time on the machine's calendar, by string 1033.
std::string MessageTimeText(Program& program, std::int32_t time);

}  // namespace orvalo::cli
