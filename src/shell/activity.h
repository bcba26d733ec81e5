#pragma once
#include <cstdint>
#include <string>

namespace orvalo {

class Texts;

// What the engine is doing, in words, from the messages by which it reports. Main thread.
class Activity {
 public:
  explicit Activity(const Texts& texts) : texts_(texts) {}

  // Takes one of kWmBusy, kWmIdle, kWmPromoting, kWmSending, kWmQuerying and kWmProgress; false,
  // changing nothing, for any other and for progress of no known phase.
  bool Take(std::uint32_t message, std::int32_t wparam, std::int32_t lparam);

  bool IsBusy() const { return !text_.empty(); }
  const std::string& Text() const { return text_; }  // empty when the engine rests

 private:
  bool Begin(int title_id, int format_id);
  bool Progress(std::int32_t index, std::int32_t recipients_to_go);

  const Texts& texts_;
  std::string text_;
  std::string title_;  // of the phase
  int format_id_ = 0;  // of its progress line; 0: no phase has begun
};

}  // namespace orvalo
