#include "platform/machine_config.h"

#include <cstdlib>
#include <optional>
#include <utility>

#include "platform/code_page.h"
#include "platform/collation.h"
#include "platform/file.h"

namespace orvalo::platform {
namespace {

constexpr std::size_t kLongestValue = 259;              // bytes
constexpr std::uint64_t kLargestConfigFile = 1u << 20;  // bytes
constexpr std::string_view kConfigFile = "/Corvane/Orvalo3.conf";

std::string EnvironmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::vector<std::string> StandardFiles() {
  std::vector<std::string> files;
  std::string user = EnvironmentValue("XDG_CONFIG_HOME");
  if (!user.starts_with('/')) {  // a relative folder would depend on where the program stands
    user = EnvironmentValue("HOME");
    if (!user.empty()) user += "/.config";
  }
  if (!user.empty()) files.push_back(user.append(kConfigFile));
  files.push_back(std::string("/etc/xdg").append(kConfigFile));
  return files;
}

std::string_view WithoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\v\f";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The value that one line gives to `name`, if it does.
std::optional<std::string_view> ValueInLine(std::string_view line, std::string_view name) {
  line = WithoutBlanks(line);
  if (line.empty() || line[0] == '#' || line[0] == ';' || line[0] == '[') return std::nullopt;
  const auto equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  if (!EqualNoCaseAscii(WithoutBlanks(line.substr(0, equals)), name)) return std::nullopt;
  return WithoutBlanks(line.substr(equals + 1));
}

std::optional<std::string_view> ValueInText(std::string_view text, std::string_view name) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  while (!text.empty()) {
    const auto end = text.find('\n');
    if (const auto value = ValueInLine(text.substr(0, end), name)) return value;
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return std::nullopt;
}

}  // namespace

MachineConfig::MachineConfig() : MachineConfig(StandardFiles()) {}

MachineConfig::MachineConfig(std::vector<std::string> files) : files_(std::move(files)) {}

std::string MachineConfig::Read(std::string_view name) const {
  for (const auto& file : files_) {
    const auto text = ReadFile(file, kLargestConfigFile);
    if (!text) continue;
    if (const auto value = ValueInText(*text, name)) {
      return std::string(FirstBytes(*value, kLongestValue));
    }
  }
  return {};
}

std::string ReadDataPath(const MachineConfig& config) {
  const std::string given = EnvironmentValue("ORVALO_DATA_PATH");
  if (given.empty()) return config.Read("DataPath");
  return std::string(FirstBytes(given, kLongestValue));
}

}  // namespace orvalo::platform
