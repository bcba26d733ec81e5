#include "gateway_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "platform/file.h"

namespace orvalo::bench {

namespace {

// Starts the program; its output goes nowhere. The process id.
int Spawn(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const int process = fork();
  if (process == 0) {
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int descriptor : {0, 1, 2}) dup2(nowhere, descriptor);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  return process;
}

int RunToEnd(const std::vector<std::string>& words) {
  int status = -1;
  waitpid(Spawn(words), &status, 0);
  return status;
}

}  // namespace

GatewayProcess::GatewayProcess(const std::string& folder, const std::vector<std::string>& options) {
  const std::string program = ORVALO_GATEWAY_PROGRAM;
  const std::string port_file = folder + "/port";
  setenv("ORVALO_PASSWORD", "bench", 1);
  if (RunToEnd({program, "account", "add", "bench", "--credit", "100000000", "--data", folder}) !=
      0) {
    throw std::runtime_error("the gateway service took no account");
  }
  std::vector<std::string> words{program,       "--data",      folder,   "--listen",
                                 "127.0.0.1:0", "--port-file", port_file};
  words.insert(words.end(), options.begin(), options.end());
  process_ = Spawn(words);
  for (int tries = 0; tries < 100; ++tries) {
    const auto port = platform::ReadFile(port_file);
    if (port && !port->empty()) {
      url_ = "http://127.0.0.1:" + port->substr(0, port->find_first_not_of("0123456789"));
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  throw std::runtime_error("the gateway service did not start");
}

GatewayProcess::~GatewayProcess() {
  if (process_ <= 0) return;
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
}

}  // namespace orvalo::bench
