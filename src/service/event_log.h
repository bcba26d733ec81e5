#pragma once
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>

#include "platform/clock.h"

namespace orvalo::service {

// The service's own log: one JSON object a line with "time" (UTC), "level", "event" and what
// belongs to the event. Never texts, numbers of people, passwords or keys. Any thread.
class EventLog {
 public:
  using Fields = std::initializer_list<std::pair<const char*, std::string>>;

  // `sink` gets each line, without its line feed, on the thread that writes.
  EventLog(const platform::Clock& clock, std::function<void(const std::string&)> sink)
      : clock_(clock), sink_(std::move(sink)) {}

  void Info(const char* event, Fields fields) const { Write("info", event, fields); }
  void Warn(const char* event, Fields fields) const { Write("warning", event, fields); }
  void Error(const char* event, Fields fields) const { Write("error", event, fields); }

 private:
  void Write(const char* level, const char* event, Fields fields) const;

  const platform::Clock& clock_;
  const std::function<void(const std::string&)> sink_;
};

}  // namespace orvalo::service
