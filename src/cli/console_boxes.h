#pragma once
#include <mutex>
#include <string>

#include "platform/message_box.h"

namespace orvalo::cli {

class ErrorOutput;

// Messages to the operator as lines "caption: text" on the error output. A message that comes
// several times in a row is printed once; how often it came follows when another one comes, or at
// the end. Questions are not asked: their answer is kAccepted. Any thread.
class ConsoleBoxes : public platform::MessageBoxes {
 public:
  explicit ConsoleBoxes(ErrorOutput& errors) : errors_(errors) {}
  ~ConsoleBoxes() override;

  platform::BoxAnswer Show(const std::string& text, const std::string& caption,
                           platform::BoxIcon icon, platform::BoxButtons buttons) override;
  platform::BoxAnswer ShowLink(const std::string& text, const std::string& caption,
                               const std::string& url) override;

 private:
  void Print(const std::string& line);
  void PrintCount();

  std::mutex mutex_;
  ErrorOutput& errors_;
  std::string last_;
  int times_ = 0;  // that the last one came
};

}  // namespace orvalo::cli
