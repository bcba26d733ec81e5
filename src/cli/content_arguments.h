#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "cli/command.h"

namespace CLI {
class Option;
}

namespace orvalo::cli {

// Throws CommandError(kUsage) for a sender that gateways refuse.
void CheckSender(const std::string& sender);

// What a new message says: its type and its text, or the file that it carries.
class ContentArguments {
 public:
  void Define(CLI::App& app);
  // Throws CommandError(kUsage) for an unknown type, and unless there is exactly one source and it
  // goes with the type.
  void Check() const;

  bool ReadsInput() const;    // whether the text comes from the standard input
  std::int32_t type() const;  // valid once checked
  // The sender of this message alone; none: as the settings say when it is queued.
  std::optional<std::string> sender() const { return sender_; }
  // The text, or a file's bytes as hexadecimal. Throws CommandError when it is empty, too long for
  // one message while messages may not span several, or cannot be read.
  std::string Read(Context& context) const;

 private:
  std::string ReadTextFile(Context& context) const;
  std::string ReadImport(Context& context) const;

  std::string type_ = "text";
  std::optional<std::string> sender_;
  std::string text_;
  std::string text_file_;
  std::string import_file_;
  CLI::Option* text_option_ = nullptr;
  CLI::Option* text_file_option_ = nullptr;
  CLI::Option* import_option_ = nullptr;
};

}  // namespace orvalo::cli
