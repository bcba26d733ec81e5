#pragma once

namespace orvalo {

// Whoever shows how many messages wait in the outbox; implemented by the outbox logic. Told after
// every change of the number of waiting messages that another page makes. Main thread.
class OutboxCaption {
 public:
  virtual ~OutboxCaption() = default;
  virtual void UpdateCaption() = 0;
};

}  // namespace orvalo
