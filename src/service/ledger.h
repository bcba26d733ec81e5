#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/clock.h"
#include "service/carrier.h"
#include "service/database.h"
#include "service/message_request.h"
#include "service/money.h"
#include "service/pricing.h"

namespace orvalo::service {

// Everything that was ever accepted, and what it cost. Any thread; operations that take a
// Connection run within the caller's read or write.
class Ledger {
 public:
  // One submission: whose, under which idempotency key (16 bytes), as part of which batch (its
  // row; 0 for none).
  struct Submission {
    std::int64_t account = 0;
    std::string_view key;
    std::int64_t batch = 0;
  };
  using Outcome = std::variant<CarriedMessage, Refusal>;  // for one number

  struct Entry {
    CarriedMessage message;
    std::string user, key;  // the key in hexadecimal
    Money charge = 0;
  };

  Ledger(Pricing& pricing, Carrier& carrier, const platform::Clock& clock)
      : pricing_(pricing), carrier_(carrier), clock_(clock) {}

  // Accepts and debits each number that is one, that the network takes and that the credit still
  // reaches for; one outcome for each, in order. Within a write: all of it happens or none.
  std::vector<Outcome> Accept(Connection& connection, const Submission& submission,
                              const MessageContent& content,
                              const std::vector<std::string>& numbers);

  // The account's message of this id (32 hexadecimal digits).
  std::optional<Entry> Find(Connection& connection, std::int64_t account, std::string_view id);

  // The account's latest entries, newest first.
  static std::vector<Entry> Latest(Connection& connection, std::int64_t account, int count);

  // The account's entries whose rows follow `row`, in the order of their acceptance, at most
  // `count` and without their texts. Costs as much as what it gives. What is accepted later has
  // a later row, whatever the clock says: who goes on from the last row misses none.
  static std::vector<Entry> After(Connection& connection, std::int64_t account, std::int64_t row,
                                  int count);

  // The row to begin after for what was accepted since `time`, in seconds since 1970 UTC. (Of what
  // came before the clock was set back some may be left out, or come too much.)
  static std::int64_t RowBefore(Connection& connection, std::int64_t account, std::int64_t time);

  // Every entry, oldest first.
  static void ForEach(Connection& connection, const std::function<void(const Entry&)>& visit);

 private:
  std::variant<Money, Refusal> Charge(Connection& connection, const std::string& number, int parts,
                                      Money balance);
  static std::int64_t Insert(Connection& connection, const Submission& submission,
                             const CarriedMessage& message, std::string_view id, Money charge);

  Pricing& pricing_;
  Carrier& carrier_;
  const platform::Clock& clock_;
};

// A new id of a message or batch, 16 bytes. Ids begin with the time, so that the ledger's index
// grows at its end; the rest is random and cannot be guessed.
std::string NewId(std::int64_t now);

}  // namespace orvalo::service
