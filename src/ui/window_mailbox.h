#pragma once
#include <QObject>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "platform/mailbox.h"

namespace orvalo::ui {

// A mailbox whose messages come to the main thread's event loop, in order. Made, and destroyed, on
// the main thread by the window that reads it; what has not been handled by then is dropped.
class WindowMailbox : public QObject, public platform::Mailbox {
 public:
  using Handler =
      std::function<void(std::uint32_t message, std::int32_t wparam, std::int32_t lparam)>;

  explicit WindowMailbox(Handler handler = {}) : handler_(std::move(handler)) {}

  // Whoever handles the messages; until it is set they are dropped. Main thread.
  void SetHandler(Handler handler) { handler_ = std::move(handler); }

  void Post(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) override;

 protected:
  bool event(QEvent* event) override;

 private:
  struct Message {
    std::uint32_t message;
    std::int32_t wparam, lparam;
  };

  Handler handler_;
  std::mutex mutex_;  // guards what follows
  std::deque<Message> waiting_;
};

}  // namespace orvalo::ui
