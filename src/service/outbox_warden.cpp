#include "service/outbox_warden.h"

#include <map>

namespace orvalo::service {
namespace {

constexpr std::int64_t kStatusMs = 2'000, kReconcileMs = 30'000, kGraceSeconds = 3'600;
constexpr int kMostAtOnce = 1'000;

}  // namespace

void OutboxWarden::Start() {
  thread_ = std::thread([this] { Watch(); });
}

void OutboxWarden::Stop() {
  {
    std::lock_guard guard(mutex_);
    stops_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void OutboxWarden::Watch() {
  auto reconcile_at = parts_.clock.Tick() + kReconcileMs;
  std::unique_lock lock(mutex_);
  while (!stops_) {
    lock.unlock();
    parts_.watch.Refresh(parts_.client);
    try {
      if (const auto start = parts_.watch.started()) DoubtTakenBefore(*start);
      if (parts_.clock.Tick() >= reconcile_at) {
        reconcile_at = parts_.clock.Tick() + kReconcileMs;
        Reconcile();
      }
    } catch (const std::exception& failure) {
      parts_.log.Error("reconciliation_failed", {{"reason", failure.what()}});
    }
    lock.lock();
    parts_.clock.WaitUntil(lock, changed_, parts_.clock.Tick() + kStatusMs,
                           [this] { return stops_; });
  }
}

// What an engine had when it ended may be at the network with its report on the way, may come back
// from its store, or is gone: a report settles the first two. Until then none of it takes up room
// in the window. Looked for again and again, since a reply of the engine's last moment may be
// written after its end was noticed; a second covers what the start is read too early.
void OutboxWarden::DoubtTakenBefore(std::int64_t start) {
  constexpr std::int64_t kReadEarlySeconds = 1;
  std::vector<outbox::PartId> lost;
  do {
    lost = parts_.database.Read([&](Connection& connection) {
      return outbox::Stale(connection, PartState::kTaken, start + kReadEarlySeconds + 1,
                           kMostAtOnce);
    });
    Settle(lost, PartEvent::kEngineLost, "the engine was restarted");
  } while (lost.size() == std::size_t{kMostAtOnce});
}

void OutboxWarden::Reconcile() {
  const auto now = parts_.clock.Now();
  const auto validity = parts_.options.validity_minutes * std::int64_t{60};
  const auto stale = [&](PartState state, std::int64_t seconds) {
    return parts_.database.Read([&](Connection& connection) {
      return outbox::Stale(connection, state, now - seconds, kMostAtOnce);
    });
  };
  std::vector<outbox::PartId> outdated;
  do {
    outdated = parts_.database.Read([&](Connection& connection) {
      return outbox::Outdated(connection, now - validity, kMostAtOnce);
    });
    Settle(outdated, PartEvent::kValidityPassed, "its validity passed");
  } while (outdated.size() == std::size_t{kMostAtOnce});
  const auto status = parts_.watch.status();
  if (status && status->running && status->links_usable > 0 && status->queued == 0) {
    Settle(stale(PartState::kTaken, parts_.options.silence_minutes * std::int64_t{60}),
           PartEvent::kEngineLost, "the engine is idle and has not reported it");
  }
  Settle(stale(PartState::kTaken, validity + kGraceSeconds), PartEvent::kEngineLost,
         "the engine never reported it");
  Settle(stale(PartState::kAtNetwork, validity + kGraceSeconds), PartEvent::kNetworkSilent,
         "the network never reported it");
}

void OutboxWarden::Settle(const std::vector<outbox::PartId>& parts, PartEvent event,
                          const char* reason) {
  if (parts.empty()) return;
  const auto now = parts_.clock.Now();
  std::map<PartState, std::int64_t> settled;
  parts_.database.Write([&](Connection& connection) {
    settled.clear();
    for (const auto& part : parts) {
      const auto moved = outbox::Happen(connection, part, event, now, reason);
      if (moved) ++settled[moved->after];
    }
  });
  for (const auto& [state, count] : settled) {
    parts_.metrics.Count("orvalo_reconciled_parts_total",
                         std::string("state=\"") + NameOf(state) + "\"", count);
    parts_.log.Warn(
        "parts_reconciled",
        {{"parts", std::to_string(count)}, {"state", NameOf(state)}, {"reason", reason}});
  }
}

}  // namespace orvalo::service
