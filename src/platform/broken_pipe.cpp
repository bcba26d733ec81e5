#include "platform/broken_pipe.h"

#include <signal.h>

#include <csignal>

namespace orvalo::platform {

void SurviveBrokenPipes() {
  struct sigaction present {};
  if (sigaction(SIGPIPE, nullptr, &present) == 0 && present.sa_handler == SIG_DFL)
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace orvalo::platform
