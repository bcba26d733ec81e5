#include "cli/content_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <optional>

#include "app/setting_rules.h"
#include "app/startup/program.h"
#include "cli/input_file.h"
#include "messages/hex_import.h"
#include "messages/message_types.h"
#include "platform/code_page.h"
#include "platform/collation.h"
#include "store/message_type.h"

namespace orvalo::cli {

namespace {

constexpr std::uint64_t kLargestTextFile = 1u << 20;  // bytes; no gateway takes more

struct NamedType {
  const char* name;
  MessageType type;
};
constexpr std::array kTypes{
    NamedType{"text", MessageType::kText}, NamedType{"flash", MessageType::kFlash},
    NamedType{"unicode", MessageType::kUnicode}, NamedType{"vcard", MessageType::kVCard},
    NamedType{"vcal", MessageType::kVCal}};

const NamedType* FindType(const std::string& name) {
  const auto found = std::find_if(kTypes.begin(), kTypes.end(), [&](const NamedType& known) {
    return platform::EqualNoCaseAscii(known.name, name);
  });
  return found == kTypes.end() ? nullptr : &*found;
}

// The line end that editors put behind the last line is not part of the message.
void TakeLastLineEnd(std::string* text) {
  if (text->ends_with('\n')) text->pop_back();
  if (text->ends_with('\r')) text->pop_back();
}

void CheckText(const std::string& text, bool may_span) {
  if (text.empty()) throw CommandError(ExitCode::kFailed, "The message is empty");
  if (!platform::IsValidUtf8(text) || text.find('\0') != std::string::npos)
    throw CommandError(ExitCode::kFailed, "The message is not a text in UTF-8");
  const std::size_t length = platform::CountCharacters(text);
  if (may_span || length <= kMessageLength) return;
  throw CommandError(ExitCode::kFailed,
                     "The message has " + std::to_string(length) + " characters, one takes " +
                         std::to_string(kMessageLength) +
                         "; to let it span several: `orvaloctl settings SpanSMS 1`");
}

}  // namespace

void CheckSender(const std::string& sender) {
  const std::string problem = SettingProblem(*AppSettings::Find("sender_id"), sender);
  if (!problem.empty()) throw CommandError(ExitCode::kUsage, "That is no sender: " + problem);
}

void ContentArguments::Define(CLI::App& app) {
  text_option_ = app.add_option("--text", text_, "The text")->type_name("T");
  text_file_option_ =
      app.add_option("--text-file", text_file_,
                     "File with the text, without its last line end; \"-\": the standard "
                     "input, byte for byte")
          ->type_name("F");
  import_option_ =
      app.add_option("--file", import_file_, "File of a vcard or vcal message")->type_name("F");
  app.add_option("--type", type_, "text (unless given), flash, unicode, vcard or vcal")
      ->type_name("TYPE");
  app.add_option_function<std::string>(
         "--sender", [this](const std::string& sender) { sender_ = sender; },
         "The sender of this message, in place of the setting sender_id")
      ->type_name("ID");
}

bool ContentArguments::ReadsInput() const { return text_file_ == kStandardInput; }

std::int32_t ContentArguments::type() const {
  return static_cast<std::int32_t>(FindType(type_)->type);
}

void ContentArguments::Check() const {
  CheckSender(sender_.value_or(""));
  if (FindType(type_) == nullptr) {
    throw CommandError(ExitCode::kUsage,
                       "There is no type " + type_ + ": text, flash, unicode, vcard or vcal");
  }
  const auto sources = text_option_->count() + text_file_option_->count() + import_option_->count();
  if (sources != 1) {
    throw CommandError(ExitCode::kUsage, "The message needs one of --text, --text-file and --file");
  }
  const bool imports = import_option_->count() > 0;
  if (IsFileType(type()) && !imports)
    throw CommandError(ExitCode::kUsage, "A message of this type needs --file");
  if (!IsFileType(type()) && imports)
    throw CommandError(ExitCode::kUsage, "--file goes with the types vcard and vcal");
}

std::string ContentArguments::Read(Context& context) const {
  if (import_option_->count() > 0) return ReadImport(context);
  std::string text = text_file_option_->count() > 0 ? ReadTextFile(context) : text_;
  CheckText(text, context.program.GetSettings().Flag(FlagSetting::kSpanSms));
  return text;
}

// What comes through the standard input was made for this message and is its text byte for byte.
std::string ContentArguments::ReadTextFile(Context& context) const {
  std::string text = ReadInput(context, text_file_, kLargestTextFile);
  if (!ReadsInput()) TakeLastLineEnd(&text);
  return text;
}

std::string ContentArguments::ReadImport(Context& context) const {
  ImportFailure failure{};
  auto digits = ImportAsHexadecimal(import_file_, &failure);
  if (!digits) {
    throw CommandError(ExitCode::kFailed,
                       ImportFailureText(context.program.GetTexts(), import_file_, failure));
  }
  if (digits->empty()) throw CommandError(ExitCode::kFailed, "The file is empty");
  return *std::move(digits);
}

}  // namespace orvalo::cli
