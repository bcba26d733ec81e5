#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/command.h"
#include "gateway/send_engine.h"

namespace CLI {
class App;
}

namespace orvalo::cli {

// Puts new messages into the outbox, all or none, lists them, and on request sends them and waits
// for what becomes of them.
class Delivery {
 public:
  void Define(CLI::App& app);
  // The status, or CommandError. Nothing is queued when nobody has logged in yet or the gateway
  // refuses the login; offline, and when the gateway cannot be reached, the messages wait in the
  // outbox and the status is kQueued. `says` begins the line that is printed of messages that are
  // only queued.
  ExitCode Perform(Context& context, const std::vector<QueuedMessage>& messages,
                   const std::string& says) const;

 private:
  ExitCode QueueOnly(Context& context, const std::vector<QueuedMessage>& messages,
                     const std::string& says) const;
  ExitCode SendNow(Context& context, const std::vector<QueuedMessage>& messages) const;

  std::int32_t wait_seconds_ = 0;  // 0: only queue
};

}  // namespace orvalo::cli
