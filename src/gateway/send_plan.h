#pragma once
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string_view>

#include "gateway/engine_parts.h"
#include "gateway/personalise.h"
#include "store/records.h"
#include "store/send_journal.h"

namespace orvalo {

// A message that is about to go out: its row, and its recipients as they are from now on.
struct PlannedMessage {
  MessageRow row;
  JournalEntry entry;  // without a key: in no journal
  bool taken = false;  // its row is in Processing already
};

// Fixes who gets a message, and with which text, before it goes out. Worker thread only.
class SendPlanner {
 public:
  SendPlanner(const EngineParts& parts, SendJournal& journal);

  // True for a text and a type that go out alike to everybody.
  bool IsPlain(const MessageRow& row) const;

  // Plans the last of `ids` that are Pending, and those before them, until there is enough for one
  // go, and enters them into the journal with one flush of the disk. A message that has an entry
  // keeps it. Shortens `ids` by what it has looked at.
  std::deque<PlannedMessage> Plan(std::span<const std::int32_t>* ids);

  // A message in Processing with its entry; nothing when either is gone.
  std::optional<PlannedMessage> Resume(std::int32_t id);

  // The recipients of a message for a component that keeps no keys.
  JournalEntry Fix(const MessageRow& row) const;

 private:
  EngineParts parts_;
  SendJournal& journal_;
  Personaliser personaliser_;
};

}  // namespace orvalo
