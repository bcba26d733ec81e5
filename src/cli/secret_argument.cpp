#include "cli/secret_argument.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <fstream>
#include <istream>
#include <optional>

#include "platform/code_page.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

constexpr char kVariable[] = "ORVALO_PASSWORD";
constexpr std::size_t kLongestSecret = 126;  // characters

std::optional<std::string> FirstLine(std::istream& stream) {
  std::string line;
  if (!std::getline(stream, line)) return std::nullopt;
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

std::string FromFile(const std::string& path) {
  std::ifstream file(path);  // any kind of file: a pipe of a password manager, too
  if (const auto line = FirstLine(file)) return *line;
  throw CommandError(ExitCode::kFailed, "There is no password in " + path);
}

std::string FromOperator(Context& context, const std::string& prompt) {
  const auto line = context.ask_terminal ? platform::AskSecret(prompt) : FirstLine(context.in);
  if (line) return *line;
  throw CommandError(ExitCode::kFailed, "No password was given");
}

}  // namespace

void SecretArgument::Define(CLI::App& app) {
  app.add_option("--password-file", file_,
                 std::string("File whose first line is the password (else the variable ") +
                     kVariable + ", else it is asked for)")
      ->type_name("F");
}

std::string SecretArgument::Read(Context& context, const std::string& prompt) const {
  std::string secret;
  if (file_given()) {
    secret = FromFile(file_);
  } else if (const char* value = std::getenv(kVariable); value != nullptr && *value != '\0') {
    secret = value;
  } else {
    secret = FromOperator(context, prompt);
  }
  if (platform::CountCharacters(secret) > kLongestSecret)
    throw CommandError(ExitCode::kFailed, "The password is too long");
  return secret;
}

}  // namespace orvalo::cli
