#pragma once

namespace orvalo::platform {

// The wish of the system or of a person at the terminal that a program without windows should end
// (SIGTERM, SIGINT). One object for the process, made on the main thread before any other thread
// starts: from then on the signals no longer kill, they end Wait.
class StopSignal {
 public:
  StopSignal();
  void Wait();  // until the signal comes; main thread
};

}  // namespace orvalo::platform
