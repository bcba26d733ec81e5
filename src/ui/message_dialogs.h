#pragma once
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "platform/message_box.h"
#include "platform/shell.h"
#include "ui/window_mailbox.h"

namespace orvalo::ui {

// Message boxes as windows, over whichever window is active. Shown on the main thread; a call from
// another thread waits for the operator. Created and destroyed on the main thread, which must call
// StopAsking before it waits for a thread that may be asking.
class MessageDialogs : public platform::MessageBoxes {
 public:
  // `shell` opens the addresses of link messages.
  explicit MessageDialogs(platform::Shell& shell);
  ~MessageDialogs() override;
  MessageDialogs(const MessageDialogs&) = delete;
  MessageDialogs& operator=(const MessageDialogs&) = delete;

  platform::BoxAnswer Show(const std::string& text, const std::string& caption,
                           platform::BoxIcon icon, platform::BoxButtons buttons) override;
  platform::BoxAnswer ShowLink(const std::string& text, const std::string& caption,
                               const std::string& url) override;

  // From now on other threads are answered at once, unasked, by kCancel, those that wait included.
  void StopAsking();

 private:
  struct Question;
  platform::BoxAnswer OnMainThread(std::function<platform::BoxAnswer()> ask);
  void AskNext();

  platform::Shell& shell_;
  std::mutex mutex_;  // guards what follows
  bool stopped_ = false;
  std::deque<std::shared_ptr<Question>> to_ask_;
  std::list<std::shared_ptr<Question>> waiting_;
  WindowMailbox asked_;  // each message: one more stands in to_ask_
};

}  // namespace orvalo::ui
