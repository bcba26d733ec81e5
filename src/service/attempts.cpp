#include "service/attempts.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kTidyAt = 10'000;  // names are anybody's to invent; do not keep them all

}  // namespace

Attempts::Attempts(const platform::Clock& clock, int limit, std::int64_t window_ms)
    : clock_(clock), limit_(limit), window_ms_(window_ms) {}

bool Attempts::Exhausted(const std::string& name) const {
  std::lock_guard guard(mutex_);
  const auto place = windows_.find(name);
  return place != windows_.end() && clock_.Tick() < place->second.ends &&
         place->second.count >= limit_;
}

bool Attempts::Take(const std::string& name) {
  std::lock_guard guard(mutex_);
  const auto now = clock_.Tick();
  if (windows_.size() >= kTidyAt && !windows_.contains(name)) DropEnded();
  auto& window = windows_[name];
  if (now >= window.ends) window = {now + window_ms_, 0};
  if (window.count >= limit_) return false;
  ++window.count;
  return true;
}

void Attempts::GiveBack(const std::string& name) {
  std::lock_guard guard(mutex_);
  const auto place = windows_.find(name);
  if (place != windows_.end() && --place->second.count <= 0) windows_.erase(place);
}

void Attempts::DropEnded() {
  const auto now = clock_.Tick();
  std::erase_if(windows_, [&](const auto& entry) { return now >= entry.second.ends; });
  if (windows_.size() >= kTidyAt) windows_.clear();
}

}  // namespace orvalo::service
