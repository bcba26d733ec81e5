#pragma once
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "cli/exit_code.h"

namespace CLI {
class App;
}

namespace orvalo {

class Program;

namespace cli {

class ErrorOutput;

// Ends a command; the message, in words for the operator, goes to the error output.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode code, const std::string& message)
      : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

// What a command wants of the data folder.
enum class Access {
  kLook,     // reads only, also beside a running program
  kChange,   // holds the folder
  kGateway,  // holds the folder and speaks to the gateway, or gives the send engine work
  kMake,     // as kChange, and makes the folder and the database when they are missing
};

// What a command works with. Valid while it executes.
struct Context {
  Program& program;
  std::istream& in;
  std::ostream& out;    // results
  ErrorOutput& errors;  // everything else
  bool json;            // results as JSON
  bool ask_terminal;    // secrets are asked for on the terminal, else read from `in`
};

// One command of orvaloctl. Its options live in the object from Define to Execute; one object runs
// at most once, on the main thread.
class Command {
 public:
  Command(std::string name, std::string description)
      : name_(std::move(name)), description_(std::move(description)) {}
  virtual ~Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  const std::string& name() const { return name_; }
  const std::string& description() const { return description_; }

  // Adds the command's arguments to its part of the command line.
  virtual void Define(CLI::App& app) = 0;
  // After parsing: throws CommandError(kUsage) for arguments that do not go together.
  virtual void Check() const {}
  virtual Access AccessNeeded() const = 0;
  // Whether its results are what it is for, so that they are printed even when all else is quiet.
  virtual bool Answers() const { return AccessNeeded() == Access::kLook; }
  // Failures: the code returned, or CommandError.
  virtual ExitCode Execute(Context& context) = 0;

 private:
  std::string name_;
  std::string description_;
};

}  // namespace cli
}  // namespace orvalo
