#include "gateway_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>

namespace orvalo::test {

namespace {

// Starts the service's program with its standard output in `*output`.
pid_t Spawn(std::vector<std::string> args, int* output) {
  std::array<int, 2> pipe{};
  if (pipe2(pipe.data(), O_CLOEXEC) != 0) return -1;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
  args.insert(args.begin(), ORVALO_GATEWAY_PROGRAM);
  std::vector<char*> words;
  words.reserve(args.size() + 1);
  for (std::string& arg : args) words.push_back(arg.data());
  words.push_back(nullptr);
  pid_t process = -1;
  if (posix_spawn(&process, words[0], &actions, nullptr, words.data(), environ) != 0) process = -1;
  posix_spawn_file_actions_destroy(&actions);
  close(pipe[1]);
  *output = pipe[0];
  return process;
}

// The next line, or the empty text at the end.
std::string ReadLine(int descriptor) {
  std::string line;
  for (char byte = 0; read(descriptor, &byte, 1) == 1;) {
    if (byte == '\n') return line;
    line += byte;
  }
  return line;
}

}  // namespace

GatewayProcess::GatewayProcess() {
  process_ = Spawn({"--demo", "--listen", "127.0.0.1:0", "--data", folder_.path(),
                    "--sim-delivery-seconds", "0"},
                   &output_);
  for (std::string line = ReadLine(output_); !line.empty(); line = ReadLine(output_)) {
    const std::size_t at = line.find("http://");
    if (at == std::string::npos) continue;
    address_ = line.substr(at);
    return;
  }
}

GatewayProcess::~GatewayProcess() { End(); }

void GatewayProcess::End() {
  if (process_ < 0) return;
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
  close(output_);
  process_ = -1;
}

std::vector<std::string> GatewayProcess::Ledger() const {
  int output = -1;
  const pid_t process = Spawn({"ledger", "--json", "--data", folder_.path()}, &output);
  std::vector<std::string> lines;
  for (std::string line = ReadLine(output); !line.empty(); line = ReadLine(output))
    lines.push_back(line);
  close(output);
  if (process > 0) waitpid(process, nullptr, 0);
  return lines;
}

}  // namespace orvalo::test
