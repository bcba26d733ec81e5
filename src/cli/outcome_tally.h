#pragma once
#include <cstddef>
#include <string>

#include "cli/exit_code.h"
#include "store/records.h"

namespace orvalo::cli {

class ErrorOutput;

// "1 message", "2 messages". `several` is for a plural that an "s" does not make.
std::string Counted(std::size_t count, const std::string& one, const std::string& several = {});

// Counts what became of messages, and says it as an exit status.
class OutcomeTally {
 public:
  // A message that was expanded counts by those made of it, which are rows of their own.
  void Add(const MessageRow& row);
  // A line for each thing that went wrong, but for the one of which the status is made.
  void SayAllBut(ExitCode code, ErrorOutput& errors) const;
  // Of the things that went wrong the one with the lowest value; kDone when nothing did.
  ExitCode Status() const;
  // Throws CommandError for every status but kDone, having said the others.
  void End(ErrorOutput& errors) const;

 private:
  std::string Line(ExitCode code) const;

  std::size_t arrived_ = 0;
  std::size_t refused_ = 0;
  std::size_t undelivered_ = 0;
  std::size_t open_ = 0;     // the gateway has it, and has not told the end
  std::size_t waiting_ = 0;  // not with the gateway yet
};

}  // namespace orvalo::cli
