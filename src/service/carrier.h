#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "service/connection.h"
#include "service/message_request.h"
#include "service/money.h"
#include "service/refusal.h"

namespace orvalo::service {

// What becomes of a message. The numbers travel, and never change.
enum class GatewayStatus : int {
  kNotKnown = 1,
  kQueued = 2,
  kHandedOver = 3,
  kDelivered = 4,
  kMessageError = 5,
  kCancelled = 6,
  kDeliveryError = 7,
  kNoFurtherNews = 8,
  kRoutingError = 9,
  kExpired = 10,
  kHeld = 11,
};

// A message that the service has accepted and debited.
struct CarriedMessage {
  std::string id;  // 32 hexadecimal digits
  std::string number, text;
  int type = 0;
  bool unicode = false;
  int parts = 1;
  std::string sender;
  bool ack = false;
  std::int64_t accepted = 0;  // seconds since 1970 UTC
  std::int64_t due = 0;       // when to deliver; `accepted` unless a later delivery was asked for
  std::int64_t row = 0;       // in the ledger
  std::int64_t batch = 0;     // its row; 0 for none. Only when it is accepted
};

// Whoever brings messages to the phones. Called from any thread.
class Carrier {
 public:
  virtual ~Carrier() = default;

  // Asked before each submission, with nothing accepted yet: a refusal (113 or 503) sends the
  // client away. May block for as long as the network needs.
  virtual std::optional<Refusal> Admit() = 0;

  // Whether the network can carry the content for anyone: may refuse it (101, 203, 204), and counts
  // its parts where the network counts them in its own way.
  virtual std::optional<Refusal> Fit(MessageContent& content) = 0;

  // False when the network refuses the number outright (208).
  virtual bool TakesNumber(std::string_view number) = 0;

  // Runs in the transaction that accepts the message and debits `charge` for it: what a carrier
  // must know after a crash goes to the disk together with the ledger.
  virtual void Record(Connection& connection, const CarriedMessage& message, Money charge) = 0;

  // Takes a message that is in the ledger, on the disk. Must not block for long; a carrier that
  // needs to be sure across restarts finds the message in the ledger again.
  virtual void Submit(const CarriedMessage& message) = 0;

  // What is known of a submitted message now. Within a read.
  virtual GatewayStatus StatusOf(Connection& connection, const CarriedMessage& message,
                                 std::int64_t now) = 0;

  virtual bool IsHealthy() = 0;
};

}  // namespace orvalo::service
