#include "gateway/gateway_client.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/code_page.h"

namespace orvalo {

using platform::HResult;
using platform::InvokeKind;
using platform::Variant;
using platform::VariantFlag;

namespace {

constexpr char kClassName[] = "SMS_COMAPI.SMS";
constexpr char16_t kSubmissionKey[] = u"smsSUBMISSION_KEY";
constexpr char16_t kQuerySubmission[] = u"QuerySubmission";
constexpr char16_t kListMessages[] = u"ListMessages";

Variant TextArgument(std::u16string_view text) { return Variant(std::u16string(text)); }
Variant FlagArgument(std::int16_t flag) { return Variant(VariantFlag{flag}); }
Variant PropertyFlag(bool on) {
  return Variant(VariantFlag{static_cast<std::int16_t>(on ? -1 : 0)});
}

}  // namespace

GatewayClient::GatewayClient(const platform::ClassRegistry& registry)
    : component_(registry.Create(kClassName)) {
  if (component_ == nullptr) return;
  methods_resolved_ = methods_.Resolve(*component_, platform::kUserDefaultLocale);
  properties_resolved_ = properties_.Resolve(*component_, platform::kUserDefaultLocale);
  further_methods_.Resolve(*component_, platform::kUserDefaultLocale);
  further_.Resolve(*component_, platform::kUserDefaultLocale);
  connected_ = true;
}

HResult GatewayClient::CallMethod(Text name, std::initializer_list<Variant> arguments,
                                  std::u16string* result) {
  if (!connected_ || result == nullptr) return platform::kFail;
  const auto id = methods_.Find(name);
  return id ? CallMember(*id, arguments, result) : platform::kFail;
}

HResult GatewayClient::CallMember(platform::MemberId id, std::initializer_list<Variant> arguments,
                                  std::u16string* result) {
  std::vector<Variant> reversed(arguments);
  std::reverse(reversed.begin(), reversed.end());
  Variant value;
  const HResult outcome =
      component_->Invoke(id, platform::kUserDefaultLocale, InvokeKind::kMethod, reversed, &value);
  if (!platform::Succeeded(outcome)) return outcome;
  if (auto* text = std::get_if<std::u16string>(&value)) {
    *result = std::move(*text);
  } else {
    result->clear();
  }
  return outcome;
}

HResult GatewayClient::Get(Text name, Variant* value) {
  if (!connected_ || value == nullptr) return platform::kFail;
  const auto id = properties_.Find(name);
  if (!id) return platform::kFail;
  return component_->Invoke(*id, platform::kUserDefaultLocale, InvokeKind::kPropertyGet, {}, value);
}

HResult GatewayClient::Put(Text name, Variant value) {
  if (!connected_) return platform::kFail;
  const auto id = properties_.Find(name);
  if (!id) return platform::kFail;
  return component_->Invoke(*id, platform::kUserDefaultLocale, InvokeKind::kPropertyPut,
                            {&value, 1}, nullptr);
}

HResult GatewayClient::Send(std::int16_t flag, Text text, Text number, std::u16string* reply) {
  return CallMethod(u"SendMsg", {FlagArgument(flag), TextArgument(text), TextArgument(number)},
                    reply);
}

HResult GatewayClient::Authenticate(Text client_id, Text user, Text password,
                                    std::u16string* reply) {
  return CallMethod(u"AuthenticateClient",
                    {TextArgument(client_id), TextArgument(user), TextArgument(password)}, reply);
}

HResult GatewayClient::Ping(std::u16string* reply) { return CallMethod(u"Ping", {}, reply); }

HResult GatewayClient::QueryBalance(std::u16string* balance) {
  return CallMethod(u"QueryBalance", {}, balance);
}

HResult GatewayClient::RecoverPassword(Text user, Text email, std::u16string* reply) {
  return CallMethod(u"RecoverPassword", {TextArgument(user), TextArgument(email)}, reply);
}

HResult GatewayClient::EncodeUnicode(Text text, std::u16string* encoded) {
  return CallMethod(u"EncodeToUnicode", {TextArgument(text)}, encoded);
}

HResult GatewayClient::PayToken(Text voucher, std::u16string* reply) {
  return CallMethod(u"TokenPay", {TextArgument(voucher)}, reply);
}

HResult GatewayClient::StartBatch(Text text, std::u16string* reply) {
  return CallMethod(u"StartBatch", {TextArgument(text)}, reply);
}

HResult GatewayClient::BatchSend(Text numbers, std::u16string* reply) {
  return CallMethod(u"QuickBatchSend", {TextArgument(numbers)}, reply);
}

HResult GatewayClient::EndBatch(std::u16string* reply) {
  return CallMethod(u"EndBatch", {}, reply);
}

HResult GatewayClient::ConfigureProxy(bool test, std::int32_t type, Text host, Text port, Text user,
                                      Text password, std::u16string* reply) {
  return CallMethod(u"ConfigureProxyEx",
                    {FlagArgument(test ? 1 : 0), Variant(type), TextArgument(host),
                     TextArgument(port), TextArgument(user), TextArgument(password)},
                    reply);
}

HResult GatewayClient::SetBaseUrl(Text url, std::u16string* reply) {
  return CallMethod(u"SetBaseURL", {TextArgument(url)}, reply);
}

HResult GatewayClient::Version(std::u16string* version) {
  return CallMethod(u"Version", {FlagArgument(0)}, version);
}

HResult GatewayClient::MessageCharge(std::int16_t flag, Text gateway_id, std::u16string* reply) {
  return CallMethod(u"GetMsgCharge", {FlagArgument(flag), TextArgument(gateway_id)}, reply);
}

HResult GatewayClient::ErrorCode(std::int32_t* code) {
  if (code == nullptr) return platform::kFail;
  Variant value;
  const HResult outcome = Get(u"smsERROR", &value);
  if (!platform::Succeeded(outcome)) return outcome;
  const auto* number = std::get_if<std::int32_t>(&value);
  if (number == nullptr) return platform::kTypeMismatch;
  *code = *number;
  return outcome;
}

HResult GatewayClient::LoginToken(std::u16string* token) {
  if (token == nullptr) return platform::kFail;
  Variant value;
  const HResult outcome = Get(u"smsSESSION_ID", &value);
  if (!platform::Succeeded(outcome)) return outcome;
  auto* text = std::get_if<std::u16string>(&value);
  if (text == nullptr) return platform::kTypeMismatch;
  *token = std::move(*text);
  return outcome;
}

HResult GatewayClient::SetMessageType(std::int32_t type) {
  return Put(u"smsMSG_TYPE", Variant(type));
}
HResult GatewayClient::SetConcatenation(std::int32_t parts) {
  return Put(u"smsCONCAT", Variant(parts));
}
HResult GatewayClient::SetDeliveryTime(std::int32_t minutes) {
  return Put(u"smsDELIVERY_TIME", Variant(minutes));
}
HResult GatewayClient::SetSender(Text sender) { return Put(u"smsFROM", TextArgument(sender)); }
HResult GatewayClient::SetUnicode(bool on) { return Put(u"smsUNICODE", PropertyFlag(on)); }
HResult GatewayClient::SetDeliveryAcknowledgement(bool on) {
  return Put(u"smsDELIVERY_ACK", PropertyFlag(on));
}

// Nothing when the component lacks the property.
template <typename Value>
std::optional<Value> GatewayClient::FurtherProperty(Text name) {
  const auto id = FurtherId(further_, name);
  if (id == 0) return std::nullopt;
  Variant value;
  const HResult outcome =
      component_->Invoke(id, platform::kUserDefaultLocale, InvokeKind::kPropertyGet, {}, &value);
  auto* found = std::get_if<Value>(&value);
  if (!platform::Succeeded(outcome) || found == nullptr) return std::nullopt;
  return std::move(*found);
}

// The id of a further member; 0 when the component lacks it.
platform::MemberId GatewayClient::FurtherId(const MemberTable& table, Text name) const {
  return connected_ ? table.Find(name).value_or(0) : 0;
}

bool GatewayClient::KeepsKeys() const {
  return FurtherId(further_, kSubmissionKey) != 0 &&
         FurtherId(further_methods_, kQuerySubmission) != 0;
}

HResult GatewayClient::SetSubmissionKey(Text key) {
  const auto id = FurtherId(further_, kSubmissionKey);
  if (id == 0) return platform::kFail;
  const auto value = TextArgument(key);
  return component_->Invoke(id, platform::kUserDefaultLocale, InvokeKind::kPropertyPut, {&value, 1},
                            nullptr);
}

HResult GatewayClient::QuerySubmission(Text key, std::u16string* reply) {
  return CallFurther(kQuerySubmission, {TextArgument(key)}, reply);
}

bool GatewayClient::ListsMessages() const {
  return FurtherId(further_methods_, kListMessages) != 0;
}

HResult GatewayClient::ListMessages(Text cursor, Text since, std::u16string* page) {
  return CallFurther(kListMessages, {TextArgument(cursor), TextArgument(since)}, page);
}

HResult GatewayClient::QueryFunds(std::u16string* funds) {
  return CallFurther(u"QueryFunds", {}, funds);
}

HResult GatewayClient::CallFurther(Text name, std::initializer_list<Variant> arguments,
                                   std::u16string* result) {
  const auto id = FurtherId(further_methods_, name);
  return id == 0 || result == nullptr ? platform::kFail : CallMember(id, arguments, result);
}

GatewayFailure GatewayClient::LastFailure(Text reply) {
  const std::int32_t code = LastError();
  if (code == kGatewayOk) return {};
  const std::string text = platform::FromWide(reply);
  GatewayFailure failure{code, platform::HttpObstacle::kNotKnown, std::string(RefusalWords(text))};
  if (auto words = FurtherProperty<std::u16string>(u"smsERROR_TEXT"))
    failure.words = platform::FromWide(*words);
  if (const auto cause = FurtherProperty<std::int32_t>(u"smsERROR_CAUSE"))
    failure.obstacle = static_cast<platform::HttpObstacle>(*cause);
  return failure;
}

std::int32_t GatewayClient::LastError() {
  std::int32_t code = kGatewayUnreachable;
  ErrorCode(&code);
  return code;
}

}  // namespace orvalo
