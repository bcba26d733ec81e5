#pragma once
#include <string>

namespace orvalo::platform {

// What the program asks of the desktop around it. Main thread.
class Shell {
 public:
  virtual ~Shell() = default;
  // Opens an address with the program that the desktop has for it: web addresses in the browser,
  // "file://" addresses with their file's own program. A failure is not reported.
  virtual void OpenAddress(const std::string& address) = 0;
};

}  // namespace orvalo::platform
