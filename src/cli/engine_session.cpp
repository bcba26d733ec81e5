#include "cli/engine_session.h"

#include <utility>

#include "app/startup/program.h"
#include "cli/error_output.h"

namespace orvalo::cli {

namespace {

// Of this class's own: the engine changes messages. Its other numbers are the engine's.
constexpr std::uint32_t kMessageInHand = platform::kWmApp + 100;

constexpr std::int64_t kBetweenProgress = 100;  // milliseconds

}  // namespace

EngineSession::EngineSession(Context& context)
    : context_(context), stop_watcher_([this] { WishStop(); }) {
  context_.program.GetNotices().SetMainWindow(this);
  context_.program.GetNotices().SetOutboxView(this);
}

EngineSession::~EngineSession() {
  Stop();
  context_.program.GetNotices().SetMainWindow(nullptr);
  context_.program.GetNotices().SetOutboxView(nullptr);
}

void EngineSession::Start() {
  if (!context_.program.GetEngine().StartEngine())
    throw CommandError(ExitCode::kFailed, "The send engine cannot be started");
}

EngineSession::Event EngineSession::Wait(std::int64_t tick) {
  for (;;) {
    Message message{};
    bool stop_wished = false;
    if (!NextMessage(tick, &message, &stop_wished))
      return stop_wished ? Event::kStopWished : Event::kTime;
    Show(message);
    if (message.number == kWmOffline) return Event::kOffline;
    if (message.number == kWmIdle) {
      RefreshBalance();
      return Event::kBurstOver;
    }
    if (context_.program.GetClock().Tick() >= tick) return Event::kTime;
  }
}

bool EngineSession::TakeChanged() { return std::exchange(changed_, false); }

void EngineSession::Stop() {
  context_.program.GetEngine().RequestStop(nullptr);
  while (!context_.program.GetEngine().WaitForEnd())
    context_.errors.Progress("Finishing the message in hand");
  context_.errors.Progress("");
}

void EngineSession::RequireStored() {
  ShowStoreProblem();
  if (context_.program.GetNotices().IsStoreRefusing())
    throw CommandError(ExitCode::kFailed, "Not all that became of messages could be stored");
}

void EngineSession::ShowStoreProblem() {
  const std::string problem = context_.program.GetNotices().TakeStoreProblem();
  if (!problem.empty())
    context_.errors.Line("The send engine could not store its work, and tries again: " + problem);
}

void EngineSession::ShowWaiting() {
  const std::string reason = context_.program.GetNotices().TakeWaitingReason();
  if (!reason.empty())
    context_.errors.Line("Messages wait, and are tried again by and by: " + reason);
}

void EngineSession::Post(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) {
  {
    const std::lock_guard lock(mutex_);
    messages_.push_back({message, wparam, lparam});
  }
  arrived_.notify_all();
}

void EngineSession::MessageInHand(std::int32_t id) { Post(kMessageInHand, id, 0); }

void EngineSession::WishStop() {
  {
    const std::lock_guard lock(mutex_);
    stop_wished_ = true;
  }
  arrived_.notify_all();
}

// A wish to stop comes before the messages that have piled up.
bool EngineSession::NextMessage(std::int64_t tick, Message* message, bool* stop_wished) {
  std::unique_lock lock(mutex_);
  context_.program.GetClock().WaitUntil(lock, arrived_, tick,
                                        [this] { return stop_wished_ || !messages_.empty(); });
  *stop_wished = stop_wished_;
  if (stop_wished_ || messages_.empty()) return false;
  *message = messages_.front();
  messages_.pop_front();
  return true;
}

void EngineSession::Show(const Message& message) {
  switch (message.number) {
    case kWmPromoting:
      stage_ = "Looking for messages that are due";
      break;
    case kWmSending:
      stage_ = "Sending";
      break;
    case kWmQuerying:
      stage_ = "Asking for news";
      break;
    case kWmStoreRefused:
      ShowStoreProblem();
      return;
    case kWmSendingWaits:
      ShowWaiting();
      return;
    case kWmBalance:
      balance_due_ = true;
      return;
    case kMessageInHand:
      changed_ = true;
      return;
    case kWmIdle:
      context_.errors.Progress("");
      return;
    case kWmProgress: {
      const std::int64_t now = context_.program.GetClock().Tick();
      if (now < next_progress_) return;
      next_progress_ = now + kBetweenProgress;
      std::string text = std::string(stage_) + ": messages left " + std::to_string(message.wparam);
      if (message.lparam > 0) text += ", recipients left " + std::to_string(message.lparam);
      context_.errors.Progress(text);
      return;
    }
    default:
      return;
  }
  context_.errors.Progress(stage_);
}

void EngineSession::RefreshBalance() {
  if (std::exchange(balance_due_, false)) context_.program.GetAccount().QueryBalanceTenths();
}

}  // namespace orvalo::cli
