#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace orvalo::platform {
class ClassRegistry;
class Clock;
}  // namespace orvalo::platform

namespace orvalo::cli {

// Where orvaloctl reads from and writes to. The flags say what stands behind the streams.
struct Console {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  bool in_is_terminal = false;   // secrets are then asked for without echo
  bool err_is_terminal = false;  // progress is then shown
};

// The whole of one run of orvaloctl; `args` are those behind the program's name. The exit status.
// Main thread.
int RunOrvaloctl(const std::vector<std::string>& args, const Console& console,
                 const platform::ClassRegistry& registry, platform::Clock& clock);

}  // namespace orvalo::cli
