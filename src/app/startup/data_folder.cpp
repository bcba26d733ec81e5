#include "app/startup/data_folder.h"

#include "app/data_file.h"
#include "app/texts.h"
#include "platform/file_replacement.h"
#include "platform/machine_config.h"

namespace orvalo {

namespace {

constexpr char kMutexName[] = "Orvalo3Mutex";
constexpr int kUnreadableTextId = 2168;
constexpr int kDamagedTextId = 2169;
constexpr int kKeptTextId = 2170;
constexpr int kLockTextId = 2173;
constexpr int kTooLongTextId = 2174;
constexpr int kConfigTextId = 2333;

}  // namespace

std::string ConfiguredFolder(const Texts& texts, std::string* problem) {
  platform::MachineConfig::Unreadable unreadable;
  std::string folder = platform::ReadDataPath(platform::MachineConfig(), &unreadable);
  if (!unreadable.path.empty())
    *problem = texts.Format(kConfigTextId, {unreadable.path, unreadable.error.detail})
                   .value_or(unreadable.path);
  return folder;
}

bool IsTooLong(const std::string& data_folder, const Texts& texts, std::string* problem) {
  if (data_folder.size() <= platform::kLongestDataPath) return false;
  constexpr auto kLimit = static_cast<std::int64_t>(platform::kLongestDataPath);
  *problem = texts.Format(kTooLongTextId, {kLimit, data_folder}).value_or(data_folder);
  return true;
}

FolderLock TakeFolder(const std::string& data_folder, const Texts& texts) {
  using Outcome = platform::NamedMutex::Outcome;
  FolderLock lock;
  Outcome outcome{};
  platform::FileError error;
  lock.held = platform::NamedMutex::Create(data_folder, kMutexName, &outcome, &error);
  if (lock.held != nullptr) platform::RemoveDeadTemporaries(data_folder);
  lock.in_use = outcome == Outcome::kElsewhere;
  if (outcome == Outcome::kUnusable) {
    const std::string path = platform::NamedMutex::PathOf(data_folder, kMutexName);
    lock.problem = texts.Format(kLockTextId, {path, error.detail}).value_or(path);
  }
  return lock;
}

std::string ProblemOf(DataFile& file, bool look_only, const Texts& texts) {
  switch (file.state()) {
    case DataFile::State::kSound:
      return {};
    case DataFile::State::kUnreadable:
      return texts.Format(kUnreadableTextId, {file.path(), file.Error().detail})
          .value_or(file.path());
    case DataFile::State::kDamaged:
      break;
  }
  std::string text = texts.Format(kDamagedTextId, {file.path()}).value_or(file.path());
  if (look_only) return text;
  if (const auto kept = file.KeepDamaged())
    text.append("\n\n").append(texts.Format(kKeptTextId, {*kept}).value_or(*kept));
  return text;
}

}  // namespace orvalo
