#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvalo {

class SmsDatabase;
class Texts;

// The personalisation fields of a message text ("<<FIRSTNAME>>", "<<SURNAME>>", "<<TITLE>>",
// "<<CUSTOM>>"; a language may spell them otherwise) and their replacement by a contact's data.
// Holds no state but the field texts; any thread.
class Personaliser {
 public:
  Personaliser(const Texts& texts, SmsDatabase& database);

  // True when the text holds at least one field, compared exactly.
  bool HasFields(std::string_view text) const;

  // Replaces every occurrence of each field, in the order above; what was put in is not searched
  // again for the same field. An empty contact value removes the field; a contact that does not
  // exist leaves the text as it is.
  std::string Personalise(std::int32_t contact_id, std::string_view text) const;

 private:
  std::array<std::string, 4> fields_;
  SmsDatabase& database_;
};

}  // namespace orvalo
