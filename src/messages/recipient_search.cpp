#include "messages/recipient_search.h"

#include <algorithm>
#include <utility>

#include "app/settings.h"
#include "contacts/external_address_book.h"
#include "messages/recipient_tree.h"
#include "platform/code_page.h"
#include "platform/collation.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::size_t kComparedLength = 127;  // characters of a field that are looked at

}  // namespace

void RecipientSearch::SetText(std::string_view text) {
  std::string needle = platform::ToLower(platform::FirstCharacters(text, kSearchLength));
  if (needle == needle_) return;
  needle_ = std::move(needle);
  Restart();
}

void RecipientSearch::Restart() {
  last_contact_ = 0;
  tried_entries_ = 0;
}

bool RecipientSearch::FindNext() {
  if (needle_.empty()) return false;
  const bool from_the_start = last_contact_ == 0 && tried_entries_ == 0;
  const std::vector<ContactRow> contacts = database_.AllContacts();
  tree_.FollowAddressBook();
  if (FindInContacts(contacts)) return true;
  LoadExternalIfWorthwhile();
  if (FindInExternal()) return true;
  Restart();
  if (from_the_start) return false;
  if (FindInContacts(contacts) || FindInExternal()) return true;
  Restart();
  return false;
}

bool RecipientSearch::FindInContacts(const std::vector<ContactRow>& contacts) {
  auto contact =
      std::upper_bound(contacts.begin(), contacts.end(), last_contact_,
                       [](std::int32_t cid, const ContactRow& row) { return cid < row.cid; });
  for (; contact != contacts.end(); ++contact) {
    last_contact_ = contact->cid;
    const bool matches =
        Matches(contact->name) || Matches(contact->surname) || Matches(contact->mobile);
    if (matches && tree_.RevealContact(contact->cid)) return true;
  }
  return false;
}

bool RecipientSearch::FindInExternal() {
  const AddressTree& tree = external_.tree();
  std::size_t position = 0;
  for (auto entry = tree.ChainHead(); entry != AddressTree::kNone;
       entry = tree.NextInChain(entry)) {
    if (position++ < tried_entries_) continue;
    tried_entries_ = position;
    const bool matches = Matches(tree.Name(entry)) || Matches(tree.Number(entry));
    if (matches && tree_.RevealEntry(entry)) return true;
  }
  return false;
}

void RecipientSearch::LoadExternalIfWorthwhile() {
  if (external_.tree().EntryCount() != 0) return;
  if (external_.IsLoaded() || !settings_.Text(TextSetting::kOutlookName).empty()) {
    tree_.ReloadExternal();
  }
}

bool RecipientSearch::Matches(std::string_view text) const {
  const std::string lower = platform::ToLower(platform::FirstCharacters(text, kComparedLength));
  return lower.find(needle_) != std::string::npos;
}

}  // namespace orvalo
