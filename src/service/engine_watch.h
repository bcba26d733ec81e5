#pragma once
#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/http.h"
#include "service/event_log.h"
#include "service/kannel_options.h"

namespace orvalo::service {

// What the engine says of itself.
struct EngineStatus {
  bool running = false;
  std::optional<std::int64_t> uptime;  // seconds since it was started
  int links = 0;                       // to mobile networks
  int links_usable = 0;                // connected; not those that only try to be
  std::int64_t queued = 0;             // messages that it has not handed to a network yet
};

// Reads the engine's status page; nothing when it is none.
std::optional<EngineStatus> ParseEngineStatus(std::string_view xml);

// Keeps in mind whether the engine can be given messages: by what it says and by how it answers.
// Any thread.
class EngineWatch {
 public:
  EngineWatch(const KannelOptions& options, platform::Clock& clock, const EventLog& log);

  // Asks the engine for its status; without an address for that nothing happens.
  void Refresh(platform::HttpClient& client);

  // Asks the engine whether every link to a network is up; false also when it does not tell.
  bool HasAllLinks(platform::HttpClient& client);

  // The next smsbox to hand something to, in turn, passing over those that are down; nothing when
  // all are, or when the engine has no use for messages now.
  std::optional<std::size_t> NextBox();
  bool CanSend();

  void BoxAnswered(std::size_t box);
  void BoxIsDown(std::size_t box, const std::string& why);  // for a few seconds
  void LoginRefused();                                      // for half a minute

  // Requests to many receivers are safe: the engine's queue has room.
  bool TakesGroups() const;
  void QueueIsLong();

  std::optional<EngineStatus> status() const;

  // When the engine was started, in seconds since 1970 UTC as this machine counts them, a second
  // early or late; nothing while that has not been read. A step of either machine's clock is not
  // taken for a new start. An engine that lived for less than two seconds may pass unnoticed.
  std::optional<std::int64_t> started() const;

 private:
  struct Box {
    std::int64_t down_until = 0;  // a tick
    bool is_down = false;
  };
  bool IsOpen(std::int64_t now) const;                       // with the lock held
  void NoteUptime(std::int64_t uptime, std::int64_t asked);  // at a tick; with the lock held

  const KannelOptions& options_;
  platform::Clock& clock_;
  const EventLog& log_;
  mutable std::mutex mutex_;
  std::vector<Box> boxes_;
  std::size_t next_ = 0;
  std::int64_t refused_until_ = 0, singles_until_ = 0;
  std::optional<EngineStatus> status_;
  std::optional<std::int64_t> started_;
  std::int64_t uptime_asked_ = 0;  // the tick at which it was last asked for, with success
  bool status_failed_ = false, was_usable_ = true;
};

}  // namespace orvalo::service
