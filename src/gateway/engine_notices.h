#pragma once
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "platform/mailbox.h"

namespace orvalo {

// Window messages of the engine; the numbers never change.
inline constexpr std::uint32_t kWmSwitchPage = platform::kWmApp + 1;
inline constexpr std::int32_t kComposeTab = 1044;  // the second number of kWmSwitchPage
inline constexpr std::uint32_t kWmBalance =
    platform::kWmApp + 6;  // a row of a send pass is done: refresh the balance
inline constexpr std::uint32_t kWmGoOffline = platform::kWmApp + 9;  // to the options page
inline constexpr std::uint32_t kWmBusy = platform::kWmApp + 10;      // a burst of work begins
inline constexpr std::uint32_t kWmIdle = platform::kWmApp + 11;      // and ends
inline constexpr std::uint32_t kWmPromoting = platform::kWmApp + 12;
inline constexpr std::uint32_t kWmSending = platform::kWmApp + 13;
inline constexpr std::uint32_t kWmQuerying = platform::kWmApp + 14;
inline constexpr std::uint32_t kWmProgress =
    platform::kWmApp + 15;  // rows still to do, recipients still to go
inline constexpr std::uint32_t kWmOnline = platform::kWmApp + 30;
inline constexpr std::uint32_t kWmOffline = platform::kWmApp + 31;
// The store refuses what the engine has to write; TakeStoreProblem says why.
inline constexpr std::uint32_t kWmStoreRefused = platform::kWmApp + 33;
// What the operator wanted to know of messages was not told; TakeQueryProblem says why.
inline constexpr std::uint32_t kWmQueryFailed = platform::kWmApp + 34;
// Messages wait because nobody answers; TakeWaitingReason says why.
inline constexpr std::uint32_t kWmSendingWaits = platform::kWmApp + 35;
inline constexpr std::uint32_t kWmLoggedIn = platform::kWmApp + 32;  // a login has succeeded

// Whoever shows the outbox. Called on the worker thread: store the id, ask your own thread to
// redraw, return.
class OutboxView {
 public:
  virtual ~OutboxView() = default;
  virtual void MessageInHand(std::int32_t id) = 0;  // 0: a pass that changed rows has ended
};

// The engine's only way of speaking to the windows: it posts and never waits. Nothing that merely
// reports progress is posted once a stop was requested. The receivers are set and cleared by their
// owners on the main thread; a receiver that has been cleared gets no further call.
class EngineNotices {
 public:
  void SetMainWindow(platform::Mailbox* window);
  void SetOptionsPage(platform::Mailbox* page);
  void SetOutboxView(OutboxView* view);

  void RequestStop() { stop_requested_ = true; }
  bool Stopping() const { return stop_requested_; }

  void ToMainWindow(std::uint32_t message, std::int32_t wparam = 0,
                    std::int32_t lparam = 0);  // unless stopping
  void TellOutbox(std::int32_t id);            // unless stopping
  void GoOffline();                            // to the options page, stopping or not
  void Offline();                              // to the main window, stopping or not

  // The store has refused what the engine wanted to write, which it will try again. Told to the
  // main window, stopping or not, and not again until a round of the engine's timed work has passed
  // without.
  void StoreRefused(const std::string& why);
  void StoreRoundEnds();
  bool IsStoreRefusing() const;
  std::string TakeStoreProblem();  // in words; empty when it has been taken

  // The operator's question about messages has failed; told to the main window, unless stopping.
  void QueryFailed(const std::string& text);
  std::string TakeQueryProblem();  // the latest; empty when it has been taken

  // A submission has not been answered: what is left waits and is tried again. Told to the main
  // window once, until sending goes on.
  void SendingWaits(const std::string& why);
  void SendingGoesOn();
  std::string TakeWaitingReason();  // in words; empty when it has been taken

 private:
  mutable std::mutex mutex_;  // guards the receivers and what they are to be told
  bool store_refuses_ = false;
  bool refused_in_round_ = false;
  std::string store_problem_;
  bool sending_waits_ = false;
  std::string waiting_reason_;
  std::string query_problem_;
  platform::Mailbox* main_window_ = nullptr;
  platform::Mailbox* options_page_ = nullptr;
  OutboxView* outbox_view_ = nullptr;
  std::atomic<bool> stop_requested_ = false;
};

}  // namespace orvalo
