#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/records.h"

namespace orvalo {
class SmsDatabase;
}

namespace orvalo::cli {

// The group that every contact belongs to by itself; it is neither renamed nor deleted.
inline constexpr std::int32_t kAllContacts = 1;

// The first group of that name, whatever its case. Throws CommandError when there is none.
GroupRow GroupByName(SmsDatabase& database, std::string_view name);

// As GroupByName, and throws for the group of all contacts.
GroupRow OwnGroupByName(SmsDatabase& database, std::string_view name);

// A group's members; of kAllContacts every contact.
std::vector<ContactRow> ContactsIn(SmsDatabase& database, std::int32_t gid);

// Throws CommandError when there is no such contact.
ContactRecord ContactById(SmsDatabase& database, std::int32_t cid);

// The names of the contact's groups.
std::vector<std::string> GroupNamesOf(SmsDatabase& database, std::int32_t cid);

// Whether a number can be sent to: 3 to 16 digits, a "+" before them allowed within the 16.
bool IsMobileNumber(std::string_view text);

}  // namespace orvalo::cli
