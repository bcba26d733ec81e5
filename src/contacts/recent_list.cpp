#include "contacts/recent_list.h"

#include <algorithm>
#include <utility>

#include "app/settings.h"
#include "platform/code_page.h"

namespace orvalo {

namespace {

// The record: kind, flags, two bytes reserved, label and number (both ending in a zero byte), one
// byte reserved.
constexpr unsigned char kRecentKind = 3;
constexpr std::size_t kFlagsAt = 1;
constexpr unsigned char kEmptyFlag = 1;
constexpr unsigned char kSelectedFlag = 2;
constexpr std::size_t kLabelAt = 4;
constexpr std::size_t kLabelSize = 86;
constexpr std::size_t kNumberAt = 90;
constexpr std::size_t kNumberSize = 17;

std::string_view FieldOf(const RecentRecord& record, std::size_t at, std::size_t size) {
  const auto first = record.begin() + static_cast<std::ptrdiff_t>(at);
  const auto last = first + static_cast<std::ptrdiff_t>(size);
  const auto end = std::find(first, last, 0);
  return {reinterpret_cast<const char*>(record.data()) + at, static_cast<std::size_t>(end - first)};
}

void SetField(RecentRecord& record, std::size_t at, std::size_t size, std::string_view text) {
  const std::string_view kept = platform::FirstBytes(text, size - 1);
  std::copy(kept.begin(), kept.end(), record.begin() + static_cast<std::ptrdiff_t>(at));
}

std::string_view NumberOf(const RecentRecord& record) {
  return FieldOf(record, kNumberAt, kNumberSize);
}

bool IsEntry(const RecentRecord& record) {
  return record[0] == kRecentKind && (record[kFlagsAt] & kEmptyFlag) == 0 &&
         !NumberOf(record).empty();
}

bool IsChosen(const RecentRecord& record) {
  return IsEntry(record) && (record[kFlagsAt] & kSelectedFlag) != 0;
}

std::string LabelText(std::string_view name, std::string_view surname, std::string_view number) {
  std::string label;
  for (const std::string_view part : {name, surname}) {
    if (!part.empty()) label.append(part).append(" ");
  }
  return label.append("(").append(number).append(")");
}

}  // namespace

std::optional<std::string> RecentList::AddRecent(std::string_view name, std::string_view surname,
                                                 std::string_view number) {
  const std::string_view kept = platform::FirstBytes(number, kNumberSize - 1);
  if (kept.empty()) return std::nullopt;
  auto records = settings_.Recent();
  const bool known = std::any_of(records.begin(), records.end(), [&](const RecentRecord& record) {
    return IsEntry(record) && NumberOf(record) == kept;
  });
  if (known) return std::nullopt;
  RecentRecord record{};
  record[0] = kRecentKind;
  SetField(record, kLabelAt, kLabelSize, LabelText(name, surname, number));
  SetField(record, kNumberAt, kNumberSize, kept);
  records.insert(records.begin(), record);
  std::optional<std::string> lost;
  if (records.size() > kMaxRecent && IsChosen(records.back())) lost = NumberOf(records.back());
  settings_.SetRecent(std::move(records));
  return lost;
}

void RecentList::ClearRecent() { settings_.SetRecent({}); }

std::size_t RecentList::size() const { return settings_.Recent().size(); }

bool RecentList::IsFilled(std::size_t slot) const {
  return slot < size() && IsEntry(settings_.Recent()[slot]);
}

std::string RecentList::Label(std::size_t slot) const {
  if (!IsFilled(slot)) return {};
  return std::string(FieldOf(settings_.Recent()[slot], kLabelAt, kLabelSize));
}

std::string RecentList::Number(std::size_t slot) const {
  return IsFilled(slot) ? std::string(NumberOf(settings_.Recent()[slot])) : std::string();
}

bool RecentList::IsSelected(std::size_t slot) const {
  return slot < size() && IsChosen(settings_.Recent()[slot]);
}

void RecentList::Select(std::size_t slot, bool selected) {
  if (!IsFilled(slot) || IsSelected(slot) == selected) return;
  auto records = settings_.Recent();
  records[slot][kFlagsAt] ^= kSelectedFlag;
  settings_.SetRecent(std::move(records));
}

void RecentList::ClearSelections() {
  for (std::size_t slot = 0; slot < size(); ++slot) Select(slot, false);
}

std::size_t RecentList::SelectedCount() const {
  const auto& records = settings_.Recent();
  return static_cast<std::size_t>(std::count_if(records.begin(), records.end(), IsChosen));
}

}  // namespace orvalo
