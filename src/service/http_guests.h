#pragma once
#include <list>
#include <string>
#include <unordered_map>

namespace orvalo::service {

class HttpConversation;

// The connections of a server: how many each address has, and which of them wait for their client,
// the longest first. Owns none of them. The reader's thread only.
class HttpGuests {
 public:
  HttpGuests(int most, int most_of_an_address) : most_(most), most_of_one_(most_of_an_address) {}

  // A new one, which waits. Where there is no room, another that waits is taken off the list of
  // those, and `leaver` is set: it must be ended. False when nobody can go; the new one must then.
  bool Enter(HttpConversation* guest, const std::string& address, bool any_number,
             HttpConversation*& leaver);
  void Leave(HttpConversation* guest);

  void Waits(HttpConversation* guest);  // from now on
  void Works(HttpConversation* guest);  // and is not to be ended for another's sake

  // Somebody who waits and is to go for another; null: nobody. Taken off the list of those.
  HttpConversation* PickLeaver();

  bool empty() const { return guests_.empty(); }
  template <typename Visit>
  void ForEach(Visit visit) const {
    for (const auto& [guest, entry] : guests_) visit(*guest);
  }

 private:
  using Queue = std::list<HttpConversation*>;
  struct House {
    int count = 0;
    Queue waiting;
  };
  struct Entry {
    std::string address;
    bool waits = false;
    Queue::iterator place;
  };
  static HttpConversation* Front(House& house);
  HttpConversation* TakeOff(HttpConversation* guest);

  const int most_, most_of_one_;
  std::unordered_map<std::string, House> houses_;  // by address
  std::unordered_map<HttpConversation*, Entry> guests_;
};

}  // namespace orvalo::service
