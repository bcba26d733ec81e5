#include "contacts/address_walk.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace orvalo {

namespace {

using platform::AddressBook;

constexpr char kNameless[] = "?";
constexpr std::size_t kLongestName = 255;  // characters; no tree shows more

bool IsControl(std::string_view text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte == 0xC2 && at + 1 < text.size()) return static_cast<unsigned char>(text[at + 1]) < 0xA0;
  return byte < ' ' || byte == 0x7F;
}

// The name as a tree, or a terminal, can show it: sound UTF-8 without control characters.
std::string ShownName(std::string_view name) {
  std::string shown(platform::FirstCharacters(name, kLongestName));
  if (!platform::IsValidUtf8(shown)) shown = platform::FromWide(platform::ToWide(shown));
  for (std::size_t at = 0; at < shown.size(); ++at)
    if (IsControl(shown, at)) shown.replace(at, shown[at] == '\xC2' ? 2 : 1, " ");
  const auto first = shown.find_first_not_of(' ');
  if (first == std::string::npos) return kNameless;
  return shown.substr(first, shown.find_last_not_of(' ') - first + 1);
}

}  // namespace

void AddressWalk::WalkContainer(AddressBook::EntryId container, AddressTree::NodeId folder) {
  open_.push_back(container);
  for (const auto& row : book_.Hierarchy(container)) {
    if (!TakeRow()) break;
    AddFolder(folder, row.name, row.id);
  }
  for (const auto& row : book_.Contents(container)) {
    if (!TakeRow()) break;
    if (row.kind == AddressBook::Kind::kDistributionList) {
      AddFolder(folder, row.name, row.id);
    } else if (!row.mobile.empty()) {
      tree_.AddEntry(folder, ShownName(row.name), row.mobile);
    }
  }
  open_.pop_back();
}

void AddressWalk::AddFolder(AddressTree::NodeId parent, const std::string& name,
                            AddressBook::EntryId container) {
  if (container == AddressBook::kNoEntry) return;  // nothing would be below it
  if (std::find(open_.begin(), open_.end(), container) != open_.end()) return;
  if (open_.size() >= kDeepest) {
    cut_ = true;
    return;
  }
  WalkContainer(container, tree_.AddFolder(parent, ShownName(name)));
}

bool AddressWalk::TakeRow() {
  if (rows_ >= most_rows_) cut_ = true;
  return rows_++ < most_rows_;
}

}  // namespace orvalo
