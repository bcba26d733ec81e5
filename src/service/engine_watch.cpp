#include "service/engine_watch.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace orvalo::service {
namespace {

constexpr std::int64_t kBoxPauseMs = 2'000, kLoginPauseMs = 30'000, kSinglesMs = 10'000;

// The text between <tag> and </tag> from `at` on, which moves behind it; nothing at the end.
std::optional<std::string_view> NextElement(std::string_view xml, std::string_view tag,
                                            std::size_t& at) {
  const auto opening = "<" + std::string(tag) + ">", closing = "</" + std::string(tag) + ">";
  const auto begin = xml.find(opening, at);
  if (begin == std::string_view::npos) return std::nullopt;
  const auto end = xml.find(closing, begin);
  if (end == std::string_view::npos) return std::nullopt;
  at = end + closing.size();
  return xml.substr(begin + opening.size(), end - begin - opening.size());
}

std::int64_t NumberIn(std::string_view text) {
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string WhyNoStatus(const platform::HttpReply& reply) {
  const std::string why = "its status cannot be had";
  if (reply.failure != platform::HttpFailure::kNone) return why + ": " + reply.error;
  return reply.status == 200 ? why + ": what came is no status page; is the password right?"
                             : why + ": HTTP status " + std::to_string(reply.status);
}

// Of "running, uptime 1d 2h 3m 4s". An engine whose clock was set back behind its start has none.
std::optional<std::int64_t> UptimeIn(std::string_view words) {
  constexpr std::string_view kUptime = "uptime ";
  struct Unit {
    char sign;
    std::int64_t seconds;
  };
  constexpr std::array kUnits{Unit{'d', 86'400}, Unit{'h', 3'600}, Unit{'m', 60}, Unit{'s', 1}};
  const auto begin = words.find(kUptime);
  if (begin == std::string_view::npos) return std::nullopt;
  std::int64_t uptime = 0;
  const char* at = words.data() + begin + kUptime.size();
  const char* const end = words.data() + words.size();
  for (const auto& unit : kUnits) {
    while (at != end && *at == ' ') ++at;
    std::int64_t count = -1;
    at = std::from_chars(at, end, count).ptr;
    if (count < 0 || count > 100'000 || at == end || *at != unit.sign) return std::nullopt;
    uptime += count * unit.seconds;
    ++at;
  }
  return uptime;
}

}  // namespace

std::optional<EngineStatus> ParseEngineStatus(std::string_view xml) {
  std::size_t at = 0;
  const auto state = NextElement(xml, "status", at);
  if (xml.find("<gateway>") == std::string_view::npos || !state) return std::nullopt;
  EngineStatus status;
  status.running = state->starts_with("running");
  status.uptime = UptimeIn(*state);
  if (const auto sms = NextElement(xml, "sms", at)) {
    std::size_t within = 0;
    if (const auto sent = NextElement(*sms, "sent", within)) {
      std::size_t inner = 0;
      status.queued = NumberIn(NextElement(*sent, "queued", inner).value_or("0"));
    }
  }
  while (const auto link = NextElement(xml, "smsc", at)) {
    ++status.links;
    std::size_t within = 0;
    const auto words = NextElement(*link, "status", within).value_or("");
    if (words.starts_with("online")) ++status.links_usable;
    status.queued += NumberIn(NextElement(*link, "queued", within).value_or("0"));
  }
  return status;
}

EngineWatch::EngineWatch(const KannelOptions& options, platform::Clock& clock, const EventLog& log)
    : options_(options), clock_(clock), log_(log), boxes_(options.urls.size()) {}

void EngineWatch::Refresh(platform::HttpClient& client) {
  if (options_.status_url.empty()) return;
  platform::HttpRequest request;
  request.url = options_.status_url;
  request.timeout_ms = 5'000;
  request.connect_timeout_ms = 2'000;
  const auto asked = clock_.Tick();
  const auto reply = client.Perform(request);
  const auto status = reply.status == 200 ? ParseEngineStatus(reply.body) : std::nullopt;
  const bool usable = status && status->running && status->links_usable > 0;
  std::lock_guard guard(mutex_);
  status_ = status;
  status_failed_ = !status;
  if (status && status->uptime) NoteUptime(*status->uptime, asked);
  if (usable == was_usable_) return;
  was_usable_ = usable;
  if (usable) {
    log_.Info("engine_usable", {{"links", std::to_string(status->links_usable)}});
  } else {
    log_.Warn("engine_unusable", {{"reason", !status            ? WhyNoStatus(reply)
                                             : !status->running ? "it is not running"
                                                                : "no link to a network is up"}});
  }
}

bool EngineWatch::HasAllLinks(platform::HttpClient& client) {
  Refresh(client);
  const auto said = status();
  return said && said->running && said->links_usable == said->links;
}

// The start as it comes out of one reading may be late, by the time the reply took and by parts of
// seconds, so the earliest is kept. It has moved only when the engine can have begun since the page
// was last read; else a clock was set: of a clock that both share the start moves not at all.
void EngineWatch::NoteUptime(std::int64_t uptime, std::int64_t asked) {
  constexpr std::int64_t kMsPerSecond = 1'000;
  const auto start = clock_.Now() - uptime;
  const auto since_last = clock_.Tick() - std::exchange(uptime_asked_, asked);
  if (started_ && start > *started_ + 1 && (uptime - 1) * kMsPerSecond <= since_last) {
    log_.Warn("engine_restarted", {{"uptime_seconds", std::to_string(uptime)}});
    started_ = start;
    return;
  }
  started_ = std::min(started_.value_or(start), start);
}

bool EngineWatch::IsOpen(std::int64_t now) const {
  return now >= refused_until_ && !status_failed_ &&
         (!status_ || (status_->running && status_->links_usable > 0));
}

std::optional<std::size_t> EngineWatch::NextBox() {
  std::lock_guard guard(mutex_);
  const auto now = clock_.Tick();
  if (!IsOpen(now)) return std::nullopt;
  for (std::size_t i = 0; i < boxes_.size(); ++i) {
    const auto box = next_++ % boxes_.size();
    if (now >= boxes_[box].down_until) return box;
  }
  return std::nullopt;
}

bool EngineWatch::CanSend() {
  std::lock_guard guard(mutex_);
  const auto now = clock_.Tick();
  if (!IsOpen(now)) return false;
  for (const auto& box : boxes_) {
    if (now >= box.down_until) return true;
  }
  return false;
}

void EngineWatch::BoxAnswered(std::size_t box) {
  std::lock_guard guard(mutex_);
  if (!boxes_[box].is_down) return;
  boxes_[box] = {};
  log_.Info("smsbox_up", {{"url", options_.urls[box]}});
}

void EngineWatch::BoxIsDown(std::size_t box, const std::string& why) {
  std::lock_guard guard(mutex_);
  boxes_[box].down_until = clock_.Tick() + kBoxPauseMs;
  if (boxes_[box].is_down) return;
  boxes_[box].is_down = true;
  log_.Warn("smsbox_down", {{"url", options_.urls[box]}, {"reason", why}});
}

void EngineWatch::LoginRefused() {
  std::lock_guard guard(mutex_);
  const auto now = clock_.Tick();
  if (now < refused_until_) return;
  refused_until_ = now + kLoginPauseMs;
  log_.Error("engine_login_refused", {{"user", options_.user}});
}

bool EngineWatch::TakesGroups() const {
  std::lock_guard guard(mutex_);
  return clock_.Tick() >= singles_until_;
}

void EngineWatch::QueueIsLong() {
  std::lock_guard guard(mutex_);
  singles_until_ = clock_.Tick() + kSinglesMs;
}

std::optional<std::int64_t> EngineWatch::started() const {
  std::lock_guard guard(mutex_);
  return started_;
}

std::optional<EngineStatus> EngineWatch::status() const {
  std::lock_guard guard(mutex_);
  return status_;
}

}  // namespace orvalo::service
