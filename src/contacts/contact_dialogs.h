#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "contacts/group_choices.h"
#include "store/records.h"

namespace orvalo {

class Texts;

// What the dialogs of the contacts page know and allow. Each is made for one showing, filled by its
// window as the operator types, and read by the page when the window was left with OK. After each
// change the window asks OkEnabled. Main thread.

// "ADD NEW GROUP" and "EDIT GROUP NAME".
class GroupDialog {
 public:
  static constexpr std::size_t kNameWidth = 21;  // characters of the name field

  // A new group, or the renaming of the one called `name`.
  explicit GroupDialog(const Texts& texts);
  GroupDialog(const Texts& texts, std::string_view name);

  const std::string& Caption() const { return caption_; }
  const std::string& Name() const { return name_; }
  void EditName(std::string_view name);  // cut to kNameWidth
  bool OkEnabled() const;

 private:
  std::string caption_;
  std::string name_;
};

enum class ContactField { kName, kSurname, kTitle, kCustom, kMobile };
inline constexpr std::array<std::size_t, 5> kContactFieldWidths{
    kContactNameWidth, kContactSurnameWidth, kContactTitleWidth, kContactCustomWidth,
    kContactMobileWidth};  // characters, by ContactField

// "ADD NEW MEMBER" and "EDIT MEMBER DETAILS".
class ContactDialog {
 public:
  // A new contact; the group `gid` starts checked. Both throw StoreError.
  ContactDialog(const Texts& texts, SmsDatabase& database, std::int32_t gid);
  // Changes the contact `cid`, whose stored texts are `contact`.
  ContactDialog(const Texts& texts, SmsDatabase& database, std::int32_t cid,
                const ContactRecord& contact);

  const std::string& Caption() const { return caption_; }
  const std::string& Text(ContactField field) const;
  void EditText(ContactField field, std::string_view text);  // cut to the field's width
  // Whether the mobile field takes a character that is typed. Keys held with Ctrl or Alt, control
  // characters and pasted text are not to be asked about.
  static bool MobileAccepts(char32_t character);
  const GroupChoices& Groups() const { return groups_; }
  void CheckGroup(std::size_t group, bool checked) { groups_.Check(group, checked); }
  bool OkEnabled() const;
  ContactRecord Record() const;  // with the checked groups

 private:
  std::string caption_;
  std::array<std::string, kContactFieldWidths.size()> fields_;  // by ContactField
  GroupChoices groups_;
};

// The answer to "Delete contact from:".
enum class DeleteScope { kAllGroups, kThisGroup };

}  // namespace orvalo
