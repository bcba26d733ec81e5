#pragma once
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

#include "cli/command.h"
#include "gateway/engine_notices.h"
#include "platform/mailbox.h"
#include "platform/stop_signal.h"

namespace orvalo::cli {

// The send engine at work for a command that waits for it: takes its messages, shows its progress,
// keeps the balance up to date, and hears the operator's wish to stop. At most one for a Program.
// Main thread; its end stops the engine, which finishes the request in flight.
class EngineSession : private platform::Mailbox, private OutboxView {
 public:
  enum class Event {
    kBurstOver,   // the engine has done what it had to do
    kTime,        // the time to wait for has come
    kStopWished,  // by the operator; comes again at every further wait
    kOffline,     // the gateway was lost; the engine works offline now
  };

  // From here on a wish to stop no longer ends the process.
  explicit EngineSession(Context& context);
  ~EngineSession() override;
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;

  // Throws CommandError when there is no thread for the engine.
  void Start();
  // Waits for the next event, at most until the clock's tick.
  Event Wait(std::int64_t tick);
  // Whether the engine has changed messages since the last call.
  bool TakeChanged();
  // Asks the engine to stop and waits for its end: as long as the request in flight takes.
  void Stop();
  // After Stop: throws CommandError when the store has not taken what the engine had to write.
  void RequireStored();

 private:
  struct Message {
    std::uint32_t number;
    std::int32_t wparam, lparam;
  };
  void Post(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) override;
  void MessageInHand(std::int32_t id) override;
  void WishStop();
  bool NextMessage(std::int64_t tick, Message* message, bool* stop_wished);
  void Show(const Message& message);
  void RefreshBalance();
  void ShowStoreProblem();
  void ShowWaiting();

  Context& context_;
  const char* stage_ = "";          // of the engine's burst, in words
  std::int64_t next_progress_ = 0;  // the clock's tick
  bool changed_ = false;
  bool balance_due_ = false;

  std::mutex mutex_;  // guards what follows
  std::condition_variable arrived_;
  std::deque<Message> messages_;
  bool stop_wished_ = false;

  platform::StopWatcher stop_watcher_;  // last: calls WishStop
};

}  // namespace orvalo::cli
