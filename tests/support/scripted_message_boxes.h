#pragma once
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "platform/message_box.h"

namespace orvalo::test {

// Records every message and answers from a script (kAccepted when the script has run out). Any
// thread.
class ScriptedMessageBoxes : public platform::MessageBoxes {
 public:
  struct Shown {
    std::string text, caption;
    platform::BoxIcon icon = platform::BoxIcon::kNone;
    std::string url;  // of a link message
  };

  platform::BoxAnswer Show(const std::string& text, const std::string& caption,
                           platform::BoxIcon icon, platform::BoxButtons) override {
    std::lock_guard guard(mutex_);
    shown_.push_back({text, caption, icon, ""});
    if (answers_.empty()) return platform::BoxAnswer::kAccepted;
    const auto answer = answers_.front();
    answers_.pop_front();
    return answer;
  }
  platform::BoxAnswer ShowLink(const std::string& text, const std::string& caption,
                               const std::string& url) override {
    std::lock_guard guard(mutex_);
    shown_.push_back({text, caption, platform::BoxIcon::kNone, url});
    return platform::BoxAnswer::kAccepted;
  }

  void Answer(platform::BoxAnswer answer) {
    std::lock_guard guard(mutex_);
    answers_.push_back(answer);
  }
  std::vector<Shown> shown() const {
    std::lock_guard guard(mutex_);
    return shown_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Shown> shown_;
  std::deque<platform::BoxAnswer> answers_;
};

}  // namespace orvalo::test
