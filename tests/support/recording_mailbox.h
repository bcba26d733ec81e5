#pragma once
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <tuple>
#include <vector>

#include "platform/mailbox.h"

namespace orvalo::test {

// Keeps what was posted. Any thread.
class RecordingMailbox : public platform::Mailbox {
 public:
  using Message = std::tuple<std::uint32_t, std::int32_t, std::int32_t>;

  void Post(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) override {
    std::lock_guard guard(mutex_);
    messages_.emplace_back(message, wparam, lparam);
    posted_.notify_all();
  }
  // Blocks (at most 10 s) until what was posted satisfies `enough`; false when it does not.
  bool Await(const std::function<bool(const std::vector<Message>&)>& enough) {
    std::unique_lock lock(mutex_);
    return posted_.wait_for(lock, std::chrono::seconds(10), [&] { return enough(messages_); });
  }
  std::vector<Message> messages() const {
    std::lock_guard guard(mutex_);
    return messages_;
  }
  void Clear() {
    std::lock_guard guard(mutex_);
    messages_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable posted_;
  std::vector<Message> messages_;
};

}  // namespace orvalo::test
