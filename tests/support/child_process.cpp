#include "support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/temporary_folder.h"

namespace orvalo::test {

ChildProcess::ChildProcess(std::vector<std::string> words, const std::string& out,
                           const std::string& err) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  constexpr int kFlags = O_CREAT | O_WRONLY | O_TRUNC;
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), kFlags, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), kFlags, 0600);
  if (posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
    process_ = -1;
  posix_spawn_file_actions_destroy(&actions);
}

ChildProcess::~ChildProcess() {
  Signal(SIGKILL);
  Wait();
}

void ChildProcess::Signal(int signal) const {
  if (process_ > 0) kill(process_, signal);
}

bool ChildProcess::IsRunning() const {
  siginfo_t ended{};
  return process_ > 0 &&
         waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         ended.si_pid == 0;
}

int ChildProcess::Wait() {
  int status = 0;
  const int process = process_;
  process_ = -1;
  if (process <= 0 || waitpid(process, &status, 0) != process) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

ProgramResult RunProgram(std::vector<std::string> words) {
  const TemporaryFolder folder;
  const std::string out = folder.File("out"), err = folder.File("err");
  const int status = ChildProcess(std::move(words), out, err).Wait();
  return {status, Slurp(out), Slurp(err)};
}

}  // namespace orvalo::test
