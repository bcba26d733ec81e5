#pragma once
#include <string>
#include <vector>

namespace orvalo::test {

// A program of ours as a process of its own, its output in files. Killed at the end of the scope if
// it still runs.
class ChildProcess {
 public:
  // `words`: the program's path and its arguments. The output goes to `out` and `err` (paths;
  // "/dev/null" will do).
  ChildProcess(std::vector<std::string> words, const std::string& out, const std::string& err);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void Signal(int signal) const;
  bool IsRunning() const;  // it has not ended yet
  int Wait();  // for its end; the exit status, or -1 when a signal ended it or it never began

 private:
  int process_ = -1;
};

struct ProgramResult {
  int status = -1;
  std::string out, err;
};

// Runs a program to its end.
ProgramResult RunProgram(std::vector<std::string> words);

}  // namespace orvalo::test
