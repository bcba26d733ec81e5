#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/code_page.h"
#include "platform/config_lines.h"
#include "platform/ldap_dn.h"
#include "platform/ldap_profile.h"
#include "platform/vcard.h"
#include "platform/vcard_text.h"

namespace {

using orvalo::platform::IsValidUtf8;

void Require(bool condition) {
  if (!condition) std::abort();
}

// Whatever a file holds, what comes out of it is text, and no more than went in.
void ReadCards(const std::string& bytes) {
  std::size_t members = 0;
  for (const auto& card : orvalo::platform::ParseVcards(bytes)) {
    Require(IsValidUtf8(card.name) && IsValidUtf8(card.uid));
    Require(card.name.size() <= 4 * bytes.size() && card.mobile.size() <= 4 * bytes.size());
    for (const std::string& member : card.members) {
      Require(IsValidUtf8(member));
      ++members;
    }
  }
  Require(members <= bytes.size());
}

void ReadNames(const std::string& text) {
  const std::string name = orvalo::platform::ComparableDn(text);
  Require(orvalo::platform::IsBelowDn(name, orvalo::platform::ParentDn(name)));
  Require(name.size() <= 12 * text.size());
  orvalo::platform::RdnValue(text, 1);
  std::string problem;
  const auto profile = orvalo::platform::ParseLdapAddress(text, &problem);
  Require(profile.has_value() == problem.empty());
  if (profile && profile->server.starts_with("ldap:")) profile->NeedsStartTls(true);
  orvalo::platform::ReadConfigLines(
      text, [&](const auto& line) { return line.name.size() + line.value.size() <= text.size(); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  ReadCards(input);
  ReadCards("BEGIN:VCARD\n" + input);
  ReadNames(input);
  return 0;
}
