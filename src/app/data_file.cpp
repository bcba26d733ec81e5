#include "app/data_file.h"

#include <optional>
#include <utility>
#include <vector>

#include "app/data_file_format.h"
#include "platform/code_page.h"
#include "platform/collation.h"
#include "platform/file.h"
#include "platform/number.h"

namespace orvalo {
namespace {

// What fits into memory at ease; a larger file is none of ours.
constexpr std::uint64_t kLargestDataFile = 256u << 20;
constexpr char kDamagedSuffix[] = ".damaged";

std::string_view CutForFile(std::string_view text, std::size_t limit) {
  return platform::FirstBytes(text.substr(0, text.find('\0')), limit);
}

// The key as it stands in the file.
std::string StoredKey(std::string_view key) {
  return std::string(CutForFile(platform::ToUpper(key), kMaxDataKey));
}

}  // namespace

bool DataFile::KeyOrder::operator()(const std::string& a, const std::string& b) const {
  return platform::CompareTexts(a, b) < 0;
}

DataFile::DataFile(std::string path, bool auto_save)
    : path_(std::move(path)), auto_save_(auto_save) {
  const std::optional<std::string> bytes = platform::ReadFile(path_, kLargestDataFile, &error_);
  if (!bytes) {
    using Kind = platform::FileError::Kind;
    const bool is_new = error_.kind == Kind::kMissing && !platform::IsNameTaken(path_);
    const bool too_large = error_.kind == Kind::kTooLarge;
    state_ = is_new ? State::kSound : too_large ? State::kDamaged : State::kUnreadable;
    return;
  }
  bool sound = true;
  for (DataRecord& record : DecodeDataRecords(*bytes, &sound)) {
    values_.emplace(StoredKey(record.first), std::move(record.second));  // the first of a key wins
  }
  if (!sound) state_ = State::kDamaged;
}

DataFile::~DataFile() {
  if (auto_save_) Save();
}

std::optional<std::string> DataFile::KeepDamaged() {
  return state_ == State::kDamaged ? platform::KeepAside(path_, kDamagedSuffix) : std::nullopt;
}

bool DataFile::Save() {
  if (state_ == State::kUnreadable) return false;
  if (state_ == State::kDamaged && !KeepDamaged()) {
    error_ = platform::FileError::Last();
    return false;
  }
  const std::vector<DataRecord> records(values_.begin(), values_.end());
  if (!platform::ReplaceFile(path_, EncodeDataRecords(records), &error_)) return false;
  state_ = State::kSound;
  return true;
}

bool DataFile::GetString(std::string_view key, std::string* value,
                         std::string_view fallback) const {
  const auto found = values_.find(StoredKey(key));
  const bool present = found != values_.end() && !found->second.empty();
  *value = present ? std::string_view(found->second) : fallback;
  return present;
}

bool DataFile::GetInteger(std::string_view key, std::int32_t* value, std::int32_t fallback) const {
  std::string text;
  const bool present = GetString(key, &text, "");
  *value = present ? platform::ParseInteger(text) : fallback;
  return present;
}

bool DataFile::GetFlag(std::string_view key, bool* value, bool fallback) const {
  std::int32_t number = 0;
  const bool present = GetInteger(key, &number, fallback ? 1 : 0);
  *value = number != 0;
  return present;
}

void DataFile::SetString(std::string_view key, std::string_view value) {
  values_.insert_or_assign(StoredKey(key), std::string(CutForFile(value, kMaxDataValue)));
}

void DataFile::SetInteger(std::string_view key, std::int32_t value) {
  SetString(key, std::to_string(value));
}

}  // namespace orvalo
