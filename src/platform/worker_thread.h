#pragma once
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/clock.h"

namespace orvalo::platform {

// How an alertable wait ended.
enum class WaitResult {
  kEvent,     // the wake event is signalled (wins over waiting calls)
  kCallsRan,  // queued procedure calls ran on this thread
  kTimedOut,
};

// One thread with a wake event (manual reset) and a first-in first-out queue of procedure calls.
// Calls queued from other threads run on this thread, and only while it waits alertably.
//
// Owned by one object, which starts, awaits and destroys it, never on the thread itself; QueueCall,
// Signal and IsRunning may be called from any thread. An exception that leaves the body ends the
// program.
class WorkerThread {
 public:
  explicit WorkerThread(Clock& clock) : clock_(clock) {}
  ~WorkerThread();  // signals the event and joins; a body that ignores the event blocks here

  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  // Starts `body` on the new thread. False when one runs already or the system gives no thread. May
  // be called again once the body has returned: the event is then as it was left.
  bool Start(std::function<void()> body);

  // Hands `call` over. False when no thread is running: the call is then not kept. A call taken but
  // not run when the body returns stays queued for the body of the next Start; the destructor drops
  // it unrun.
  bool QueueCall(std::function<void()> call);

  void Signal();           // sets the wake event; it stays set
  bool IsRunning() const;  // the body has not returned yet

  // On the thread itself only: waits at most `milliseconds` (0 or less only looks). Every call
  // queued before the wait ends by kCallsRan has run, those that the calls themselves queued
  // included. An exception from a call passes through to the body; the calls behind it stay queued.
  WaitResult WaitAlertable(std::int64_t milliseconds);

  // Waits at most `milliseconds` for the body's end. True when it has ended (or never began).
  bool WaitForEnd(std::int64_t milliseconds);

 private:
  Clock& clock_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;  // the event, a call, or the end
  std::deque<std::function<void()>> calls_;
  bool signalled_ = false;
  bool running_ = false;
  std::thread thread_;
};

}  // namespace orvalo::platform
