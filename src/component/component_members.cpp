#include "component/component_members.h"

#include "component/error_codes.h"

namespace orvalo::component {
namespace {

// The first four characters are dropped where the version is shown.
constexpr char kVersionText[] = "COM " ORVALO_COMPONENT_VERSION;

constexpr Kind kText = Kind::kText;
constexpr Kind kFlag = Kind::kFlag;
constexpr Kind kInteger = Kind::kInteger;

}  // namespace

// An id is a method's place in this table, counted from 1, or a property's in the other, counted on
// from the last method; 0 is nobody's.
std::span<const Component::Method> Component::Methods() {
  static const std::vector<Method> methods = [] {
    auto all = MessageMethods();
    auto others = AccountMethods();
    all.insert(all.end(), others.begin(), others.end());
    return all;
  }();
  return methods;
}

// QuerySubmission, ListMessages and QueryFunds go beyond what every component behind this name has.
std::vector<Component::Method> Component::MessageMethods() {
  using C = Component;
  using A = Arguments;
  return {
      {u"SendSimpleSMS",
       {kText, kText},
       [](C& c, const A& a) { return c.SendSimple(a.Key(), a.Wide(0), a.Wide(1)); },
       true},
      {u"SendMsg",
       {kFlag, kText, kText},
       [](C& c, const A& a) {
         return c.messages_.Send(a.Key(), c.OptionsFor(a.Wide(1)), a.Text(1), a.Text(2));
       },
       true},
      {u"QueryMsg", {kText}, [](C& c, const A& a) { return c.messages_.QueryStatus(a.Text(0)); }},
      {u"ResetSMS", {}, [](C& c, const A&) { return c.ResetMessage(); }},
      {u"EncodeToUnicode", {kText}, [](C& c, const A& a) { return c.EncodeToUnicode(a.Wide(0)); }},
      {u"StartBatch",
       {kText},
       [](C& c, const A& a) {
         return c.messages_.StartBatch(a.Key(), c.OptionsFor(a.Wide(0)), a.Text(0));
       },
       true},
      {u"QuickBatchSend",
       {kText},
       [](C& c, const A& a) { return c.messages_.SendToBatch(a.Key(), a.Text(0)); },
       true},
      {u"EndBatch", {}, [](C& c, const A& a) { return c.messages_.EndBatch(a.Key()); }, true},
      {u"GetMsgCharge",
       {kFlag, kText},
       [](C& c, const A& a) { return c.messages_.QueryCharge(a.Text(1)); }},
      {u"QuerySubmission",
       {kText},
       [](C& c, const A& a) { return c.messages_.QuerySubmission(a.Text(0)); }},
      {u"ListMessages",
       {kText, kText},
       [](C& c, const A& a) { return c.messages_.ListMessages(a.Text(0), a.Text(1)); }},
  };
}

std::vector<Component::Method> Component::AccountMethods() {
  using C = Component;
  using A = Arguments;
  return {
      {u"Authenticate", {}, [](C& c, const A&) { return c.Authenticate(); }},
      {u"AuthenticateClient",
       {kText, kText, kText},
       [](C& c, const A& a) {
         return c.account_.LogIn({a.Text(0), a.Text(1), a.Text(2)});
       }},
      {u"Ping", {}, [](C& c, const A&) { return c.account_.Ping(); }},
      {u"QueryBalance", {}, [](C& c, const A&) { return c.account_.QueryBalance(); }},
      {u"QueryFunds", {}, [](C& c, const A&) { return c.account_.QueryFunds(); }},
      {u"RecoverPassword",
       {kText, kText},
       [](C& c, const A& a) { return c.account_.RecoverPassword(a.Text(0), a.Text(1)); }},
      {u"TokenPay", {kText}, [](C& c, const A& a) { return c.account_.RedeemVoucher(a.Text(0)); }},
      {u"TokenPayWithURL",
       {kText, kText},
       [](C& c, const A& a) { return c.account_.RedeemVoucherAt(a.Text(0), a.Text(1)); }},
      {u"SetBaseURL", {kText}, [](C& c, const A& a) { return c.account_.SetBase(a.Text(0)); }},
      {u"ConfigureProxy",
       {kInteger, kText, kText, kText, kText},
       [](C& c, const A& a) {
         return c.account_.ConfigureProxy(false, a.Integer(0),
                                          {{}, a.Text(1), a.Text(2), a.Text(3), a.Text(4)});
       }},
      {u"ConfigureProxyEx",
       {kFlag, kInteger, kText, kText, kText, kText},
       [](C& c, const A& a) {
         return c.account_.ConfigureProxy(a.Flag(0), a.Integer(1),
                                          {{}, a.Text(2), a.Text(3), a.Text(4), a.Text(5)});
       }},
      {u"Version",
       {kFlag},
       [](C&, const A&) {
         return Answer{kSuccess, kVersionText};
       }},
  };
}

std::span<const Component::Property> Component::PropertyList() {
  using C = Component;
  static const std::vector<Property> properties = {
      {u"smsUSER", &Properties::user},
      {u"smsPASSWORD", &Properties::password,
       [](C&) { return platform::Variant(std::u16string()); }},
      {u"smsTEXT", &Properties::text},
      {u"smsFROM", &Properties::from},
      {u"smsTO", &Properties::to},
      {u"smsIsLoggedIn",
       {},
       [](C& c) {
         const bool logged_in = !c.session_.Current().token.empty();
         return platform::Variant(
             platform::VariantFlag{static_cast<std::int16_t>(logged_in ? -1 : 0)});
       }},
      {u"smsERROR",
       {},
       [](C& c) { return platform::Variant(std::int32_t{c.threads_.Mine().error}); }},
      {u"smsMSG_TYPE", &Properties::type},
      {u"smsCONCAT", &Properties::concat},
      {u"smsSESSION_ID",
       {},
       [](C& c) { return platform::Variant(platform::ToWide(c.account_.PageToken())); }},
      {u"smsUNICODE", &Properties::unicode},
      {u"smsDELIVERY_ACK", &Properties::acknowledge},
      {u"smsDELIVERY_TIME", &Properties::delivery_minutes},
      {u"smsERROR_TEXT",
       {},
       [](C& c) { return platform::Variant(platform::ToWide(c.threads_.Mine().reason)); }},
      {u"smsERROR_CAUSE",
       {},
       [](C& c) {
         return platform::Variant(static_cast<std::int32_t>(c.threads_.Mine().obstacle));
       }},
      {u"smsSUBMISSION_KEY",
       {},
       nullptr,
       [](C& c, const platform::Variant& value) { return c.PutSubmissionKey(value); }},
  };
  return properties;
}

}  // namespace orvalo::component
