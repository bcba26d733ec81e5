#include "messages/recipient_string.h"

#include <algorithm>
#include <charconv>

namespace orvalo {

void RecipientString::AddNumber(std::string_view number) {
  if (number.empty()) return;
  text_.append(",").append(number);
  ++count_;
}

void RecipientString::AddContact(std::int32_t cid) {
  text_.append(",A").append(std::to_string(cid));
  ++count_;
}

namespace {

std::optional<std::int32_t> ContactOf(std::string_view item) {
  if (item.size() < 2 || item[0] != 'A' || item[1] < '0' || item[1] > '9') return std::nullopt;
  std::int32_t cid = 0;
  const auto [end, error] = std::from_chars(item.data() + 1, item.data() + item.size(), cid);
  if (end != item.data() + item.size()) return std::nullopt;
  return error == std::errc() ? cid : INT32_MAX;  // beyond every contact
}

}  // namespace

std::vector<RecipientItem> SplitRecipients(std::string_view to) {
  std::vector<RecipientItem> items;
  while (!to.empty()) {
    const std::string_view item = to.substr(0, to.find(','));
    to.remove_prefix(std::min(item.size() + 1, to.size()));
    if (!item.empty()) items.push_back({ContactOf(item), item});
  }
  return items;
}

}  // namespace orvalo
