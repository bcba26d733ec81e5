#include "service/outbox_sender.h"

#include <algorithm>

#include "service/ledger.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kFewLoaded = 500;
constexpr int kMostLoaded = 2'000;
constexpr std::chrono::milliseconds kPatience(2);
constexpr std::int64_t kLookAroundMs = 1'000;

}  // namespace

void OutboxSender::Start() {
  threads_.reserve(static_cast<std::size_t>(parts_.options.connections) + 1);
  threads_.emplace_back([this] { ReadAhead(); });
  for (int i = 0; i < parts_.options.connections; ++i) threads_.emplace_back([this] { Work(); });
}

void OutboxSender::Stop() {
  {
    std::lock_guard guard(mutex_);
    stops_ = true;
  }
  reader_.notify_all();
  workers_.notify_all();
  for (auto& thread : threads_) thread.join();
  threads_.clear();
}

void OutboxSender::Poke() {
  {
    std::lock_guard guard(mutex_);
    if (poked_) return;
    poked_ = true;
  }
  reader_.notify_all();
}

void OutboxSender::RoomMade() {
  if (lacks_room_.exchange(false)) Poke();
}

void OutboxSender::ReadAhead() {
  std::unique_lock lock(mutex_);
  while (!stops_) {
    poked_ = false;
    if (loaded_.size() < kFewLoaded && parts_.watch.CanSend()) {
      lock.unlock();
      try {
        Load();
      } catch (const std::exception& failure) {
        parts_.log.Error("outbox_unreadable", {{"reason", failure.what()}});
      }
      lock.lock();
    }
    parts_.clock.WaitUntil(lock, reader_, parts_.clock.Tick() + kLookAroundMs,
                           [this] { return stops_ || (poked_ && loaded_.size() < kFewLoaded); });
  }
}

std::int64_t OutboxSender::Room() {
  return parts_.database.Read([&](Connection& connection) {
    return parts_.options.window - outbox::CountOpen(connection, PartState::kTaken) -
           outbox::CountOpen(connection, PartState::kAsked);
  });
}

void OutboxSender::Load() {
  const auto room = Room();
  std::unique_lock lock(mutex_);
  auto known = loaded_;
  lock.unlock();
  const auto most = std::min<std::int64_t>(room, kMostLoaded);
  lacks_room_ = room < kMostLoaded;
  if (most <= static_cast<std::int64_t>(known.size())) return;
  auto waiting = parts_.database.Read([&](Connection& connection) {
    const auto now = parts_.clock.Now();
    const auto validity = parts_.options.validity_minutes * std::int64_t{60};
    return outbox::Due(connection, now, now - validity, static_cast<int>(most));
  });
  // What was loaded when the read began may be asked by now; the mark decides.
  std::erase_if(waiting, [&](const auto& part) { return known.contains(part.id); });
  if (waiting.empty()) return;
  lock.lock();
  for (const auto& part : waiting) loaded_.insert(part.id);
  const auto receivers = parts_.watch.TakesGroups() ? parts_.options.receivers : 1;
  for (auto& group : GroupUp(std::move(waiting), static_cast<std::size_t>(receivers))) {
    queue_.push_back(std::move(group));
  }
  lock.unlock();
  workers_.notify_all();
}

void OutboxSender::Work() {
  std::optional<Answered> answered;
  for (;;) {
    auto next = Next(!answered);
    if (!next && !answered) return;
    if (!Write(answered, next)) continue;
    if (!next) continue;
    const auto answer = Ask(*next);
    answered.emplace(Answered{std::move(*next), answer});
  }
}

// The next handover; without waiting nothing when there is none just now, else nothing at the end.
std::optional<Handover> OutboxSender::Next(bool wait) {
  std::unique_lock lock(mutex_);
  if (wait) workers_.wait(lock, [this] { return stops_ || !queue_.empty(); });
  if (stops_ || queue_.empty()) return std::nullopt;
  auto next = std::move(queue_.front());
  queue_.pop_front();
  return next;
}

// Writes what became of one handover and marks the next as asked, without the parts that no longer
// wait. Whatever could not be written is tried again; false when that was so.
bool OutboxSender::Write(std::optional<Answered>& answered, std::optional<Handover>& next) {
  std::vector<outbox::Waiting> asked;
  std::vector<outbox::PartId> loaded;
  if (next) {
    loaded.reserve(next->to.size());
    for (const auto& part : next->to) loaded.push_back(part.id);
  }
  const auto now = parts_.clock.Now();
  try {
    parts_.database.Write(
        [&](Connection& connection) {
          asked.clear();
          if (answered) Record(connection, *answered);
          if (!next) return;
          next->key = NewId(now);
          for (auto& part : next->to) {
            if (outbox::Ask(connection, part.id, next->key, now)) asked.push_back(part);
          }
        },
        kPatience);
  } catch (const std::exception& failure) {
    parts_.log.Error("outbox_unwritable", {{"reason", failure.what()}});
    Forget(loaded);
    parts_.clock.Sleep(kLookAroundMs);
    std::lock_guard guard(mutex_);
    if (stops_) answered.reset();  // asked for ever: in doubt at the next start
    return false;
  }
  answered.reset();
  Forget(loaded);
  if (next) next->to = std::move(asked);
  if (next && next->to.empty()) next.reset();
  return true;
}

void OutboxSender::Record(Connection& connection, const Answered& answered) {
  const auto now = parts_.clock.Now();
  const auto& [handover, answer] = answered;
  const auto event = EventOf(answer, handover.to.size());
  for (const auto& part : handover.to) {
    const auto pause = event == PartEvent::kAnswerNotSent ? outbox::PauseAfter(part.attempts) : 0;
    outbox::Answer(connection, part.id, handover.key, event, now + pause,
                   event == PartEvent::kAnswerTaken ? "" : NameOf(answer));
  }
}

EngineAnswer OutboxSender::Ask(const Handover& handover) {
  auto answer = EngineAnswer::kNotAsked;
  const auto begin = parts_.clock.Tick();
  // A box that is surely not reached has taken nothing, so the next may be asked at once.
  while (const auto box = parts_.watch.NextBox()) {
    const auto& url = parts_.options.urls[*box];
    const auto reply =
        parts_.client.Perform(RequestOf(handover, parts_.options, url, parts_.clock.Now()));
    answer = ReadAnswer(reply);
    if (answer != EngineAnswer::kNotAsked) {
      if (reply.status != 0) parts_.watch.BoxAnswered(*box);
      break;
    }
    parts_.watch.BoxIsDown(*box, reply.status != 0 ? "it is no sendsms address" : reply.error);
  }
  if (answer == EngineAnswer::kUnroutable &&
      handover.to.front().attempts < outbox::kTriesWithoutRoute &&
      !parts_.watch.HasAllLinks(parts_.client)) {
    answer = EngineAnswer::kNoLink;
  }
  if (answer == EngineAnswer::kWrongLogin) parts_.watch.LoginRefused();
  if (answer == EngineAnswer::kTakenSlowly || answer == EngineAnswer::kBusy) {
    parts_.watch.QueueIsLong();
  }
  if (answer == EngineAnswer::kUnclear) {
    parts_.log.Warn("engine_reply_unclear", {{"parts", std::to_string(handover.to.size())}});
  }
  const auto label = std::string("answer=\"") + NameOf(answer) + "\"";
  parts_.metrics.Count("orvalo_engine_requests_total", label);
  parts_.metrics.Count("orvalo_engine_parts_total", label,
                       static_cast<std::int64_t>(handover.to.size()));
  parts_.metrics.Count("orvalo_engine_seconds_total", "", parts_.clock.Tick() - begin);
  return answer;
}

void OutboxSender::Forget(const std::vector<outbox::PartId>& ids) {
  bool few = false;
  {
    std::lock_guard guard(mutex_);
    for (const auto& id : ids) loaded_.erase(id);
    few = loaded_.size() < kFewLoaded;
    if (few) poked_ = true;
  }
  if (few) reader_.notify_all();
}

}  // namespace orvalo::service
