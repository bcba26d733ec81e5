#include "service/http_guests.h"

namespace orvalo::service {

bool HttpGuests::Enter(HttpConversation* guest, const std::string& address, bool any_number,
                       HttpConversation*& leaver) {
  leaver = nullptr;
  const auto house = houses_.find(address);
  if (!any_number && house != houses_.end() && house->second.count >= most_of_one_) {
    leaver = TakeOff(Front(house->second));
    if (leaver == nullptr) return false;
  } else if (guests_.size() >= static_cast<std::size_t>(most_)) {
    leaver = PickLeaver();
    if (leaver == nullptr) return false;
  }
  ++houses_[address].count;
  guests_[guest].address = address;
  Waits(guest);
  return true;
}

void HttpGuests::Leave(HttpConversation* guest) {
  Works(guest);
  const auto entry = guests_.find(guest);
  if (entry == guests_.end()) return;
  const auto house = houses_.find(entry->second.address);
  if (--house->second.count == 0) houses_.erase(house);
  guests_.erase(entry);
}

void HttpGuests::Waits(HttpConversation* guest) {
  Works(guest);
  auto& entry = guests_[guest];
  auto& waiting = houses_[entry.address].waiting;
  entry.place = waiting.insert(waiting.end(), guest);
  entry.waits = true;
}

void HttpGuests::Works(HttpConversation* guest) {
  const auto entry = guests_.find(guest);
  if (entry == guests_.end() || !entry->second.waits) return;
  houses_[entry->second.address].waiting.erase(entry->second.place);
  entry->second.waits = false;
}

HttpConversation* HttpGuests::PickLeaver() {
  House* fullest = nullptr;
  for (auto& [address, house] : houses_) {
    if (!house.waiting.empty() && (fullest == nullptr || house.count > fullest->count)) {
      fullest = &house;
    }
  }
  return fullest == nullptr ? nullptr : TakeOff(Front(*fullest));
}

HttpConversation* HttpGuests::Front(House& house) {
  return house.waiting.empty() ? nullptr : house.waiting.front();
}

HttpConversation* HttpGuests::TakeOff(HttpConversation* guest) {
  if (guest != nullptr) Works(guest);
  return guest;
}

}  // namespace orvalo::service
