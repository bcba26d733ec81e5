#pragma once
#include <functional>

namespace orvalo::platform {
class Clipboard;
class Shell;
}  // namespace orvalo::platform

namespace orvalo::ui {

class FileDialogs;

// What the desktop program asks of the desktop around it; a test hands in its own. All of it
// outlives the run; main thread.
struct Surroundings {
  FileDialogs& files;
  platform::Shell& shell;
  platform::Clipboard& clipboard;
  // Whoever wants to be told that the session ends; an empty one unsets it. May be empty.
  std::function<void(std::function<void()>)> set_end_handler;
  // After each event loop: throws what an event handler has thrown. May be empty.
  std::function<void()> rethrow_fault;
  // Before the main thread waits for the worker: whatever that asks is answered unasked. May be
  // empty.
  std::function<void()> stop_asking;
  // Lets the windows live on for so many milliseconds; empty: at once over.
  std::function<void(int)> pause;
};

}  // namespace orvalo::ui
