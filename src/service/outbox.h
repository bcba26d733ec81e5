#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "service/carrier.h"
#include "service/database.h"
#include "service/money.h"
#include "service/part_fate.h"

namespace orvalo::service {

// The parts of messages on their way to an engine: one row for each, made in the transaction that
// accepts the message and kept with the ledger. A row says before the engine is asked that it will
// be, so that a crash never leads to a second try by itself. Operations run within the caller's
// read or write.
namespace outbox {

struct PartId {
  std::int64_t message = 0;  // the message's row in the ledger
  int part = 0;              // from 0
  friend bool operator<(const PartId& one, const PartId& other) {
    return std::tie(one.message, one.part) < std::tie(other.message, other.part);
  }
};

// A part that waits to be handed over.
struct Waiting {
  PartId id;
  std::string number;  // digits only
  std::int64_t batch = 0;
  std::shared_ptr<const std::string> text;  // of the whole message; its parts share it
  std::string sender;
  int type = 0, parts = 1;
  bool unicode = false, ack = false;
  int reference = 0, attempts = 0;
  std::int64_t due = 0;  // the message's delivery time, from which its validity counts
};

// The reference, 0 to 255, of a long message to the number that is accepted now: `wanted`, or the
// next that none of the number's latest long messages has whose parts may still be under way. A
// phone puts the parts of two messages together that have the same.
int FreeReference(Connection& connection, std::string_view number, std::uint8_t wanted,
                  std::int64_t under_way_since);

// Rows for all parts of a message that is in the ledger since `message.row`.
void Add(Connection& connection, const CarriedMessage& message, Money charge, int reference);

// Waiting parts that are due, the longest due first, without those of messages that were due
// before a time. (In one read; the texts are in there.)
std::vector<Waiting> Due(Connection& connection, std::int64_t now, std::int64_t due_from, int most);

// Up to `most` parts that wait, of messages that were due before a time.
std::vector<PartId> Outdated(Connection& connection, std::int64_t due_before, int most);

// What an event made of a part.
struct Moved {
  PartState before, after;
};

// The event happens to the part, and to its siblings what follows from that; the money with it
// (FateOf). `since`: from when it is in the new state, or, of one that is to wait, the time before
// which it is not handed over. One that the engine has taken keeps the time at which it was asked,
// which tells whether the engine that took it is still the same. Nothing when there is no such
// part, or the event means nothing to it.
std::optional<Moved> Happen(Connection& connection, const PartId& id, PartEvent event,
                            std::int64_t since, const std::string& reason);

// Marks the part as asked under the report key (16 bytes). False when it no longer waits.
bool Ask(Connection& connection, const PartId& id, std::string_view key, std::int64_t now);

// The engine's answer about a part as it was asked under the key; nothing to one that has been
// asked again meanwhile, under another.
void Answer(Connection& connection, const PartId& id, std::string_view key, PartEvent answer,
            std::int64_t since, const std::string& reason);

// For how long a part waits when it is put back that was asked so often before, in seconds:
// doubling from one to a minute.
std::int64_t PauseAfter(int attempts);

// While a link of the engine is down, or nobody knows, "no way to the number" is believed after so
// many tries only: an hour of them.
constexpr int kTriesWithoutRoute = 64;

// What was asked when the service last ended is in doubt. The number of such parts.
std::int64_t DoubtAsked(Connection& connection, std::int64_t now);

// What waits and is due is in doubt: the ledger is of the past. The number of such parts.
std::int64_t DoubtWaiting(Connection& connection, std::int64_t now);

// Takes a delivery report in. Nothing when no part has this key and number. A part to whose number
// the engine had no way is put back unless `has_all_links`.
struct Reported {
  PartId id;
  PartState before, after;
  bool repeated;  // nothing in it was new
};
std::optional<Reported> TakeReport(Connection& connection, std::string_view key,
                                   std::string_view number, int bits, std::string_view detail,
                                   bool has_all_links, std::int64_t now);

// Up to `most` parts that have been in an open state since before a time.
std::vector<PartId> Stale(Connection& connection, PartState state, std::int64_t before, int most);

// The worst of the parts' statuses; nothing when the message has no rows here.
std::optional<GatewayStatus> StatusOf(Connection& connection, const CarriedMessage& message,
                                      std::int64_t now);

std::int64_t CountOpen(Connection& connection, PartState state);

// Waiting parts: those whose delivery time has come, and those that are held until it does.
struct WaitingCount {
  std::int64_t due = 0, held = 0;
};
WaitingCount CountWaiting(Connection& connection, std::int64_t now);

// Waiting parts that are due by then; later deliveries are not.
std::int64_t CountDue(Connection& connection, std::int64_t by);

// One row as a person sees it.
struct Row {
  PartId id;
  std::string message_id, user, number, reason;
  PartState state = PartState::kWaiting;
  std::int64_t since = 0;
  int attempts = 0, seen = 0;
  Money price = 0;
  bool refunded = false;
};
// In the order of acceptance; `open_only`: without the history.
void ForEach(Connection& connection, bool open_only, const std::function<void(const Row&)>& visit);

}  // namespace outbox
}  // namespace orvalo::service
