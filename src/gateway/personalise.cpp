#include "gateway/personalise.h"

#include <algorithm>

#include "app/texts.h"
#include "gateway/recipients.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::array<int, 4> kFieldTextIds{1029, 1030, 1031,
                                           1032};  // first name, surname, title, custom

void ReplaceAll(std::string* text, const std::string& field, const std::string& value) {
  if (field.empty()) return;
  for (std::size_t at = 0; (at = text->find(field, at)) != std::string::npos; at += value.size()) {
    text->replace(at, field.size(), value);
  }
}

}  // namespace

Personaliser::Personaliser(const Texts& texts, SmsDatabase& database) : database_(database) {
  std::transform(kFieldTextIds.begin(), kFieldTextIds.end(), fields_.begin(),
                 [&](int id) { return texts.Load(id); });
}

bool Personaliser::HasFields(std::string_view text) const {
  return std::any_of(fields_.begin(), fields_.end(), [&](const std::string& field) {
    return text.find(field) != std::string_view::npos;
  });
}

std::string Personaliser::Personalise(std::int32_t contact_id, std::string_view text) const {
  std::string result(text);
  if (contact_id == kTypedNumber) return result;
  const auto contact = database_.GetContactRecord(contact_id);
  if (!contact) return result;
  ReplaceAll(&result, fields_[0], contact->name);
  ReplaceAll(&result, fields_[1], contact->surname);
  ReplaceAll(&result, fields_[2], contact->title);
  ReplaceAll(&result, fields_[3], contact->custom);
  return result;
}

}  // namespace orvalo
