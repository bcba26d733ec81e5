#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "service/database.h"
#include "service/message_request.h"

namespace orvalo::service {

// Batches: one content, recipients handed in by and by. Operations run within the caller's write.
class Batches {
 public:
  struct Batch {
    std::int64_t row = 0;
    bool ended = false;
    std::int64_t accepted = 0;  // recipients so far
    MessageContent content;
  };

  explicit Batches(const platform::Clock& clock) : clock_(clock) {}

  // The new batch's id, 32 hexadecimal digits.
  std::string Open(Connection& connection, std::int64_t account, const MessageContent& content);
  std::optional<Batch> Find(Connection& connection, std::int64_t account, std::string_view id);
  void CountAccepted(Connection& connection, const Batch& batch, std::int64_t more);
  void End(Connection& connection, const Batch& batch);

 private:
  const platform::Clock& clock_;
};

}  // namespace orvalo::service
