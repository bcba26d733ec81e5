#pragma once
#include <string>
#include <vector>

namespace orvalo::test {

struct ProgramResult {
  int status = -1;  // exit status; -1 when a signal ended it
  std::string out, err;
};

// Runs the real gateway program to its end.
ProgramResult RunGateway(const std::vector<std::string>& arguments);

// The real gateway program, serving. Killed at the end of the scope if it still runs.
class RunningProgram {
 public:
  // Returns once it listens on a port of its own; `folder` holds its data.
  RunningProgram(const std::string& folder, const std::vector<std::string>& more);
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  int port() const { return port_; }  // 0: it does not listen
  int Stop(int signal);               // and its exit status; -1 when a signal ended it

 private:
  int process_ = -1;
  int port_ = 0;
};

}  // namespace orvalo::test
