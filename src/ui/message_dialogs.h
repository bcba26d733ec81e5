#pragma once
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "platform/message_box.h"
#include "platform/shell.h"

namespace orvalo::ui {

// Message boxes as windows, over whichever window is active. Shown on the main thread; a call from
// another thread waits for the operator. Created and destroyed on the main thread, which must call
// StopAsking before it waits for a thread that may be asking.
class MessageDialogs : public platform::MessageBoxes {
 public:
  // `shell` opens the addresses of link messages.
  explicit MessageDialogs(platform::Shell& shell) : shell_(shell) {}
  ~MessageDialogs() override;
  MessageDialogs(const MessageDialogs&) = delete;
  MessageDialogs& operator=(const MessageDialogs&) = delete;

  platform::BoxAnswer Show(const std::string& text, const std::string& caption,
                           platform::BoxIcon icon, platform::BoxButtons buttons) override;
  void ShowLink(const std::string& text, const std::string& caption,
                const std::string& url) override;

  // From now on other threads are answered at once, unasked, by kCancel, those that wait included.
  void StopAsking();

 private:
  struct Question;
  platform::BoxAnswer OnMainThread(std::function<platform::BoxAnswer()> ask);

  platform::Shell& shell_;
  std::mutex mutex_;  // guards what follows
  bool stopped_ = false;
  std::list<std::shared_ptr<Question>> waiting_;
};

}  // namespace orvalo::ui
