#include "service/hashing_pace.h"

#include <algorithm>

namespace orvalo::service {
namespace {

constexpr int kMostWaiting = 16;  // a second or so
constexpr std::int64_t kShare = 4;
constexpr std::int64_t kAtOnceMs = 250 * kShare;

}  // namespace

bool HashingPace::Run(const std::function<bool()>& work) {
  {
    std::unique_lock lock(mutex_);
    if (waiting_ >= kMostWaiting) return false;
    ++waiting_;
    changed_.wait(lock, [this] { return !busy_; });
    busy_ = true;
    clock_.WaitUntil(lock, changed_, paid_ - kAtOnceMs, [] { return false; });
    --waiting_;
  }
  const auto began = clock_.Tick();
  try {
    Pay(began, work());
  } catch (...) {
    Pay(began, false);
    throw;
  }
  return true;
}

void HashingPace::Pay(std::int64_t began, bool was_right) {
  std::lock_guard guard(mutex_);
  if (!was_right) paid_ = std::max(paid_, began) + kShare * (clock_.Tick() - began);
  busy_ = false;
  changed_.notify_one();
}

}  // namespace orvalo::service
