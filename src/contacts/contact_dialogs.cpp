#include "contacts/contact_dialogs.h"

#include "app/texts.h"
#include "platform/code_page.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr int kNewContactCaptionId = 1088;
constexpr int kEditContactCaptionId = 1089;
constexpr int kNewGroupCaptionId = 1104;
constexpr int kRenameGroupCaptionId = 1105;

bool HoldsMoreThanBlanks(std::string_view text) {
  return text.find_first_not_of(' ') != std::string_view::npos;
}

}  // namespace

GroupDialog::GroupDialog(const Texts& texts) : caption_(texts.Load(kNewGroupCaptionId)) {}

GroupDialog::GroupDialog(const Texts& texts, std::string_view name)
    : caption_(texts.Load(kRenameGroupCaptionId)),
      name_(platform::FirstCharacters(name, kNameWidth)) {}

void GroupDialog::EditName(std::string_view name) {
  name_ = platform::FirstCharacters(name, kNameWidth);
}

bool GroupDialog::OkEnabled() const { return HoldsMoreThanBlanks(name_); }

ContactDialog::ContactDialog(const Texts& texts, SmsDatabase& database, std::int32_t gid)
    : caption_(texts.Load(kNewContactCaptionId)), groups_(database) {
  groups_.CheckGid(gid);
}

ContactDialog::ContactDialog(const Texts& texts, SmsDatabase& database, std::int32_t cid,
                             const ContactRecord& contact)
    : caption_(texts.Load(kEditContactCaptionId)),
      fields_{contact.name, contact.surname, contact.title, contact.custom, contact.mobile},
      groups_(database) {
  for (const std::int32_t gid : database.GroupsOf(cid)) groups_.CheckGid(gid);
}

const std::string& ContactDialog::Text(ContactField field) const {
  return fields_[static_cast<std::size_t>(field)];
}

void ContactDialog::EditText(ContactField field, std::string_view text) {
  const auto i = static_cast<std::size_t>(field);
  fields_[i] = platform::FirstCharacters(text, kContactFieldWidths[i]);
}

bool ContactDialog::MobileAccepts(char32_t character) {
  return character >= U'0' && character <= U'9';
}

bool ContactDialog::OkEnabled() const {
  return groups_.CheckedCount() > 0 && HoldsMoreThanBlanks(Text(ContactField::kName)) &&
         HoldsMoreThanBlanks(Text(ContactField::kMobile));
}

ContactRecord ContactDialog::Record() const {
  return {Text(ContactField::kName),   Text(ContactField::kSurname), Text(ContactField::kTitle),
          Text(ContactField::kCustom), Text(ContactField::kMobile),  groups_.CheckedGids()};
}

}  // namespace orvalo
