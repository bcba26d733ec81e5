#pragma once
#include <memory>
#include <string>

#include "platform/address_book.h"

namespace orvalo::platform {

// A folder of vCard files (".vcf", ".vcard") as an address book: its sub-folders and files are
// containers, the cards in them mail users, groups distribution lists whose members may stand in
// any file of the book. A file with a single card, as desktops keep them, is that card: it stands
// in its folder. Folders and their cards come by name, the cards of a file as they stand in it;
// hidden files are left out.
//
// Reads everything at once; null when the folder itself cannot be listed.
std::unique_ptr<AddressBook> OpenVcardFolder(const std::string& folder);

}  // namespace orvalo::platform
