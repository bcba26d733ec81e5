#include "contacts/contact_search.h"

#include <limits>

#include "platform/code_page.h"
#include "platform/collation.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::size_t kSearchedLength = 127;  // characters of a text that are looked at

}  // namespace

void ContactSearch::SetText(std::string_view text) {
  needle_ = platform::ToLower(text);
  last_hit_ = 0;
}

std::optional<std::int32_t> ContactSearch::FindNext() {
  if (needle_.empty()) return std::nullopt;
  auto hit = FindBetween(last_hit_, std::numeric_limits<std::int32_t>::max());
  if (!hit && last_hit_ > 0) hit = FindBetween(0, last_hit_);
  if (hit) last_hit_ = *hit;
  return hit;
}

std::optional<std::int32_t> ContactSearch::FindBetween(std::int32_t after, std::int32_t last) {
  std::optional<std::int32_t> hit;
  database_.ForEachContact(after, [&](const ContactView& contact) {
    if (contact.cid > last) return false;
    for (const std::string_view text : {contact.name, contact.surname, contact.mobile}) {
      const std::string lower = platform::ToLower(platform::FirstCharacters(text, kSearchedLength));
      if (lower.find(needle_) == std::string::npos) continue;
      hit = contact.cid;
      return false;
    }
    return true;
  });
  return hit;
}

}  // namespace orvalo
