#include "gateway/member_table.h"

#include <algorithm>
#include <cassert>

namespace orvalo {

namespace {

char16_t LowerAscii(char16_t letter) {
  return letter >= u'A' && letter <= u'Z' ? static_cast<char16_t>(letter + (u'a' - u'A')) : letter;
}

bool SameName(std::u16string_view a, std::u16string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char16_t x, char16_t y) { return LowerAscii(x) == LowerAscii(y); });
}

}  // namespace

MemberTable::MemberTable(std::initializer_list<std::u16string_view> names) {
  assert(names.size() <= kCapacity);
  for (const auto name : names) members_[count_++].name = name;
}

MemberTable MemberTable::Methods() {
  return MemberTable{u"SendSimpleSMS",
                     u"SendMsg",
                     u"Authenticate",
                     u"AuthenticateClient",
                     u"Ping",
                     u"QueryMsg",
                     u"QueryBalance",
                     u"ResetSMS",
                     u"RecoverPassword",
                     u"TokenPay",
                     u"TokenPayWithURL",
                     u"EncodeToUnicode",
                     u"StartBatch",
                     u"QuickBatchSend",
                     u"EndBatch",
                     u"SetBaseURL",
                     u"ConfigureProxy",
                     u"ConfigureProxyEx",
                     u"Version",
                     u"GetMsgCharge"};
}

MemberTable MemberTable::Properties() {
  return MemberTable{u"smsUSER",         u"smsPASSWORD",   u"smsTEXT",    u"smsFROM",
                     u"smsTO",           u"smsIsLoggedIn", u"smsERROR",   u"smsMSG_TYPE",
                     u"smsCONCAT",       u"smsSESSION_ID", u"smsUNICODE", u"smsDELIVERY_ACK",
                     u"smsDELIVERY_TIME"};
}

MemberTable MemberTable::FurtherMethods() {
  return MemberTable{u"QuerySubmission", u"ListMessages", u"QueryFunds"};
}

MemberTable MemberTable::FurtherProperties() {
  return MemberTable{u"smsERROR_TEXT", u"smsERROR_CAUSE", u"smsSUBMISSION_KEY"};
}

std::size_t MemberTable::Resolve(platform::Dispatch& component, platform::LocaleId locale) {
  for (std::size_t i = 0; i < count_; ++i) {
    platform::MemberId id = 0;
    if (component.GetIdOfName(members_[i].name, locale, &id) == platform::kUnknownName) id = 0;
    members_[i].id = id;
  }
  return count_;
}

std::optional<platform::MemberId> MemberTable::Find(std::u16string_view name) const {
  for (const Member& member : members()) {
    if (SameName(member.name, name)) return member.id;
  }
  return std::nullopt;
}

}  // namespace orvalo
