#include "service/running_program.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

int StartGateway(std::vector<std::string> arguments, const std::string& out,
                 const std::string& err) {
  arguments.insert(arguments.begin(), ORVALO_GATEWAY);
  std::vector<char*> words;
  for (auto& argument : arguments) words.push_back(argument.data());
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  constexpr int kFlags = O_CREAT | O_WRONLY | O_TRUNC;
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), kFlags, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), kFlags, 0600);
  int process = -1;
  if (posix_spawn(&process, ORVALO_GATEWAY, &actions, nullptr, words.data(), environ) != 0) {
    process = -1;
  }
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

int AwaitEnd(int process) {
  int status = 0;
  if (process <= 0 || waitpid(process, &status, 0) != process) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ProgramResult RunGateway(const std::vector<std::string>& arguments) {
  const TemporaryFolder folder;
  const auto out = folder.File("out"), err = folder.File("err");
  const int status = AwaitEnd(StartGateway(arguments, out, err));
  return {status, Slurp(out), Slurp(err)};
}

RunningProgram::RunningProgram(const std::string& folder, const std::vector<std::string>& more) {
  const auto port_file = folder + "/port";
  std::remove(port_file.c_str());
  std::vector<std::string> arguments{"--data",      folder + "/data", "--listen",
                                     "127.0.0.1:0", "--port-file",    port_file};
  arguments.insert(arguments.end(), more.begin(), more.end());
  process_ = StartGateway(arguments, folder + "/out", folder + "/err");
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (port_ == 0 && std::chrono::steady_clock::now() < give_up) {
    port_ = std::atoi(Slurp(port_file).c_str());
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

RunningProgram::~RunningProgram() {
  if (process_ > 0) Stop(SIGKILL);
}

int RunningProgram::Stop(int signal) {
  kill(process_, signal);
  const int status = AwaitEnd(process_);
  process_ = -1;
  return status;
}

}  // namespace orvalo::test
