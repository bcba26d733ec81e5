#pragma once
#include <condition_variable>
#include <mutex>
#include <thread>

#include "service/outbox_sender.h"

namespace orvalo::service {

// Looks after the parts that nothing happens to, on a thread of its own: asks the engine how it is,
// and what it still has, and lets time decide where no report will.
//
//   waiting, its validity passed                        → outdated, and free
//   taken by an engine that was restarted since         → in doubt
//   taken, the engine idle, no report for some minutes  → in doubt
//   taken or at the network, an hour past its validity  → in doubt, or expired
class OutboxWarden {
 public:
  explicit OutboxWarden(const OutboxSender::Parts& parts) : parts_(parts) {}
  ~OutboxWarden() { Stop(); }
  OutboxWarden(const OutboxWarden&) = delete;
  OutboxWarden& operator=(const OutboxWarden&) = delete;

  void Start();
  void Stop();

  // One pass over everything that has waited too long. Any thread.
  void Reconcile();

 private:
  void Watch();
  void DoubtTakenBefore(std::int64_t start);  // of the engine
  void Settle(const std::vector<outbox::PartId>& parts, PartEvent event, const char* reason);

  const OutboxSender::Parts parts_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stops_ = false;
  std::thread thread_;
};

}  // namespace orvalo::service
