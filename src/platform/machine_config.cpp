#include "platform/machine_config.h"

#include <QStandardPaths>
#include <cstdlib>
#include <optional>
#include <utility>

#include "platform/collation.h"
#include "platform/config_lines.h"
#include "platform/file.h"

namespace orvalo::platform {
namespace {

constexpr std::uint64_t kLargestConfigFile = 1u << 20;  // bytes
constexpr std::string_view kVendorFolder = "/Corvane/";

std::string EnvironmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::optional<std::string_view> ValueInText(std::string_view text, std::string_view name) {
  std::optional<std::string_view> value;
  ReadConfigLines(text, [&](const ConfigLine& line) {
    if (line.kind == ConfigLine::Kind::kValue && EqualNoCaseAscii(line.name, name))
      value = line.value;
    return !value;
  });
  return value;
}

// The folder that a variable names, else the one below the user's home; empty without either. A
// relative one would depend on where the program stands.
std::string UserFolder(const char* variable, const char* below_home) {
  std::string folder = EnvironmentValue(variable);
  if (folder.starts_with('/')) return folder;
  folder = EnvironmentValue("HOME");
  return folder.empty() ? folder : folder + below_home;
}

}  // namespace

std::vector<std::string> ConfigFiles(std::string_view name) {
  std::vector<std::string> files;
  const std::string user = UserFolder("XDG_CONFIG_HOME", "/.config");
  if (!user.empty()) files.push_back(user);
  files.emplace_back("/etc/xdg");
  for (std::string& file : files) file.append(kVendorFolder).append(name);
  return files;
}

std::string UserDataFolder() { return UserFolder("XDG_DATA_HOME", "/.local/share"); }

MachineConfig::MachineConfig() : MachineConfig(ConfigFiles("Orvalo3.conf")) {}

MachineConfig::MachineConfig(std::vector<std::string> files) : files_(std::move(files)) {}

std::string MachineConfig::Read(std::string_view name, Unreadable* unreadable) const {
  *unreadable = {};
  for (const auto& file : files_) {
    FileError error;
    const auto text = ReadFile(file, kLargestConfigFile, &error);
    if (!text && error.kind == FileError::Kind::kMissing) continue;
    if (!text) {
      *unreadable = {file, error};
      return {};
    }
    if (const auto value = ValueInText(*text, name)) return std::string(*value);
  }
  return {};
}

std::string ReadDataPath(const MachineConfig& config, MachineConfig::Unreadable* unreadable) {
  *unreadable = {};
  const std::string given = EnvironmentValue("ORVALO_DATA_PATH");
  return given.empty() ? config.Read("DataPath", unreadable) : given;
}

std::string DocumentsFolder() {
  const std::string documents =
      QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation).toStdString();
  return IsFolder(documents) ? documents : EnvironmentValue("HOME");
}

}  // namespace orvalo::platform
