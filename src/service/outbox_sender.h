#pragma once
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "platform/http.h"
#include "service/database.h"
#include "service/engine_watch.h"
#include "service/event_log.h"
#include "service/kannel_request.h"
#include "service/metrics.h"

namespace orvalo::service {

// Hands what waits in the outbox to the engine: one thread reads ahead and groups, one for each
// connection asks. Every part is marked as asked, on the disk, before the engine hears of it; what
// the engine's reply makes of it is written together with the mark for the next one.
class OutboxSender {
 public:
  struct Parts {
    Database& database;
    EngineWatch& watch;
    platform::HttpClient& client;
    platform::Clock& clock;
    Metrics& metrics;
    const EventLog& log;
    const KannelOptions& options;
  };

  explicit OutboxSender(const Parts& parts) : parts_(parts) {}
  ~OutboxSender() { Stop(); }
  OutboxSender(const OutboxSender&) = delete;
  OutboxSender& operator=(const OutboxSender&) = delete;

  void Start();
  void Stop();      // requests in hand are finished first
  void Poke();      // there may be something new. Any thread
  void RoomMade();  // the engine has handed something on. Any thread

 private:
  // A handover that has been answered, and not yet written.
  struct Answered {
    Handover handover;
    EngineAnswer answer;
  };

  void ReadAhead();
  void Load();
  std::int64_t Room();  // for parts that the engine may still be given
  void Work();
  std::optional<Handover> Next(bool wait);
  bool Write(std::optional<Answered>& answered, std::optional<Handover>& next);
  void Record(Connection& connection, const Answered& answered);
  EngineAnswer Ask(const Handover& handover);
  void Forget(const std::vector<outbox::PartId>& ids);

  const Parts parts_;
  std::mutex mutex_;
  std::condition_variable reader_, workers_;
  std::deque<Handover> queue_;
  std::set<outbox::PartId> loaded_;  // in the queue, or being marked as asked
  bool poked_ = true, stops_ = false;
  std::atomic<bool> lacks_room_{false};
  std::vector<std::thread> threads_;
};

}  // namespace orvalo::service
