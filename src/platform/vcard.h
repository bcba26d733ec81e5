#pragma once
#include <string>
#include <vector>

namespace orvalo::platform {

// What an address book wants of a card. Texts are UTF-8 and may hold line breaks.
struct Vcard {
  std::string name;                 // to show; empty: the card has none
  std::string mobile;               // the first cell number as it is written; empty: none
  std::string uid;                  // as NormalUid has it; may be empty
  std::vector<std::string> emails;  // in lower case
  bool is_group = false;
  std::vector<std::string> members;  // of a group: "urn:uuid:...", "mailto:...", "tel:...", a uid
};

// The cards of a file, in their order: vCard 2.1, 3.0 and 4.0, mixed at will, in the shapes that
// phones, mail programs and directories write (folded lines, quoted-printable, character sets,
// grouped properties with labels, groups by KIND or by its X- forerunner). Never fails: lines that
// make no sense are passed over, and a card that breaks off counts as far as it goes. Any thread.
std::vector<Vcard> ParseVcards(std::string bytes);

// A uid, or the reference to one, in the form in which they can be compared: no "urn:uuid:", lower
// case.
std::string NormalUid(const std::string& text);

// The number that a "tel:" address, or the value of a TEL property, names: without parameters,
// extension, and whatever is dialled after a pause.
std::string NumberOf(const std::string& value);

}  // namespace orvalo::platform
