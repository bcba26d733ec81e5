#include "platform/fault_signal.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

namespace orvalo::platform {

namespace {

constexpr char kMark[] = "ORVALO_SHOW_FAULT";
constexpr std::array kFaults{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

// Made ready beforehand: after a fault no memory can be asked for.
struct FreshStart {
  std::string program, mark;
  std::vector<char*> arguments, environment;
  std::vector<char> stack;  // the fault may be the end of the other one
};

FreshStart& Prepared() {
  static FreshStart start;
  return start;
}

void StartAfresh(int) {
  FreshStart& start = Prepared();
  execve("/proc/self/exe", start.arguments.data(), start.environment.data());
  _exit(EXIT_FAILURE);
}

}  // namespace

void ShowFaultsAfresh(const char* program) {
  sigset_t faults;
  sigemptyset(&faults);
  for (const int fault : kFaults) sigaddset(&faults, fault);
  sigprocmask(SIG_UNBLOCK, &faults, nullptr);  // the handler that started us ran with one blocked
  if (FaultIsToBeShown()) return;              // a second fault ends the process

  FreshStart& start = Prepared();
  start.program = program;
  start.mark = std::string(kMark) + "=1";
  start.arguments = {start.program.data(), nullptr};
  for (char** variable = environ; *variable != nullptr; ++variable) {
    start.environment.push_back(*variable);
  }
  start.environment.push_back(start.mark.data());
  start.environment.push_back(nullptr);
  start.stack.resize(static_cast<std::size_t>(SIGSTKSZ));
  stack_t stack{};
  stack.ss_sp = start.stack.data();
  stack.ss_size = start.stack.size();
  sigaltstack(&stack, nullptr);
  struct sigaction action {};
  action.sa_handler = StartAfresh;
  action.sa_flags = SA_ONSTACK;
  for (const int fault : kFaults) sigaction(fault, &action, nullptr);
}

bool FaultIsToBeShown() { return std::getenv(kMark) != nullptr; }

}  // namespace orvalo::platform
