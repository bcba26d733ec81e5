#include "component/component.h"

#include <sodium.h>

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>
#include <variant>
#include <vector>

#include "component/component_members.h"
#include "component/error_codes.h"
#include "component/reply_fields.h"
#include "component/submission_key.h"
#include "platform/code_page.h"

namespace orvalo::component {
namespace {

using platform::HResult;
using platform::InvokeKind;
using platform::Variant;
using platform::VariantFlag;

constexpr char kUsualClientId[] = "Orvalo";

bool SameName(std::u16string_view a, std::u16string_view b) {
  const auto lower = [](char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char16_t x, char16_t y) { return lower(x) == lower(y); });
}

// The UTF-16 code units in upper-case hexadecimal, the high byte first.
std::string HexOfUnits(std::u16string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string digits;
  digits.reserve(4 * text.size());
  for (const char16_t unit : text) {
    for (const int shift : {12, 8, 4, 0}) digits += kDigits[(unit >> shift) & 0xF];
  }
  return digits;
}

}  // namespace

Component::Component(platform::Clock& clock)
    : protocol_(http_, clock, session_),
      account_(protocol_, session_, http_),
      messages_(protocol_) {
  if (sodium_init() < 0) throw std::runtime_error("no source of random numbers");
}

HResult Component::GetIdOfName(std::u16string_view name, platform::LocaleId,
                               platform::MemberId* id) {
  platform::MemberId next = 1;
  for (const auto& method : Methods()) {
    if (SameName(method.name, name)) return *id = next, platform::kOk;
    ++next;
  }
  for (const auto& property : PropertyList()) {
    if (SameName(property.name, name)) return *id = next, platform::kOk;
    ++next;
  }
  return platform::kUnknownName;
}

HResult Component::Invoke(platform::MemberId id, platform::LocaleId, InvokeKind kind,
                          std::span<const Variant> arguments, Variant* result) try {
  const auto methods = Methods();
  const auto properties = PropertyList();
  const auto place = static_cast<std::size_t>(id) - 1;  // far too large for ids below 1
  if (kind == InvokeKind::kMethod) {
    if (place < methods.size()) return CallMethod(methods[place], arguments, result);
    threads_.Mine().Note(kNoSuchCall);
    return platform::kMemberNotFound;
  }
  if (place < methods.size() || place >= methods.size() + properties.size()) {
    return platform::kMemberNotFound;
  }
  const auto& property = properties[place - methods.size()];
  const bool get = kind == InvokeKind::kPropertyGet;
  if (arguments.size() != (get ? 0u : 1u)) return platform::kBadParameterCount;
  return get ? GetProperty(property, result) : PutProperty(property, arguments.front());
} catch (const std::exception&) {
  // Out of memory, or the like: whether the service did anything is not known.
  threads_.Mine().Note(kNotUnderstood);
  return platform::kException;
}

HResult Component::CallMethod(const Method& method, std::span<const Variant> arguments,
                              Variant* result) {
  threads_.Mine().Note(kMalformed);
  std::string key;
  if (method.submits) key.swap(threads_.Mine().submission_key);
  if (arguments.size() != method.arguments.size()) return platform::kBadParameterCount;
  // The last argument comes first.
  if (!std::equal(method.arguments.rbegin(), method.arguments.rend(), arguments.begin(),
                  [](Kind kind, const Variant& value) { return IsOfKind(value, kind); })) {
    return platform::kTypeMismatch;
  }
  auto answer = method.handle(*this, Arguments(arguments, std::move(key)));
  threads_.Mine().Note(answer.error, std::move(answer.reason), answer.obstacle);
  if (result != nullptr) *result = platform::ToWide(answer.text);
  return platform::kOk;
}

HResult Component::GetProperty(const Property& property, Variant* result) {
  if (property.write != nullptr) return platform::kMemberNotFound;
  Variant value;
  if (property.read != nullptr) {
    value = property.read(*this);
  } else {
    std::lock_guard guard(mutex_);
    std::visit(
        [&](auto field) {
          if constexpr (!std::is_same_v<decltype(field), std::monostate>) {
            value = properties_.*field;
          }
        },
        property.field);
  }
  if (result != nullptr) *result = std::move(value);
  return platform::kOk;
}

HResult Component::PutProperty(const Property& property, const Variant& value) {
  if (property.write != nullptr) return property.write(*this, value);
  std::lock_guard guard(mutex_);
  return std::visit(
      [&](auto field) {
        if constexpr (std::is_same_v<decltype(field), std::monostate>) {
          return platform::kMemberNotFound;
        } else {
          using Value = std::remove_reference_t<decltype(properties_.*field)>;
          const auto* given = std::get_if<Value>(&value);
          if (given == nullptr) return platform::kTypeMismatch;
          properties_.*field = *given;
          return platform::kOk;
        }
      },
      property.field);
}

HResult Component::PutSubmissionKey(const Variant& value) {
  const auto* text = std::get_if<std::u16string>(&value);
  if (text == nullptr) return platform::kTypeMismatch;
  auto key = platform::FromWide(*text);
  if (!IsHex(key, kKeyDigits)) return platform::kTypeMismatch;
  threads_.Mine().submission_key = std::move(key);
  return platform::kOk;
}

Properties Component::properties() const {
  std::lock_guard guard(mutex_);
  return properties_;
}

MessageOptions Component::OptionsFor(const std::u16string& text) {
  const auto properties = this->properties();
  const bool unicode = properties.unicode.value != 0;
  return {.type = properties.type,
          .concat = properties.concat,
          .delivery_minutes = properties.delivery_minutes,
          .sender = platform::FromWide(properties.from),
          .unicode = unicode,
          .acknowledge = properties.acknowledge.value != 0,
          .encoded = unicode && !text.empty() && text == threads_.Mine().encoded};
}

Answer Component::Authenticate() {
  const auto properties = this->properties();
  return account_.LogIn({kUsualClientId, platform::FromWide(properties.user),
                         platform::FromWide(properties.password)});
}

// An empty argument is taken from its property.
Answer Component::SendSimple(const std::string& key, const std::u16string& text,
                             const std::u16string& number) {
  const auto properties = this->properties();
  const auto& body = text.empty() ? properties.text : text;
  const auto& recipient = number.empty() ? properties.to : number;
  return messages_.Send(key, OptionsFor(body), platform::FromWide(body),
                        platform::FromWide(recipient));
}

Answer Component::EncodeToUnicode(const std::u16string& text) {
  auto digits = HexOfUnits(text);
  threads_.Mine().encoded.assign(digits.begin(), digits.end());
  return {kSuccess, std::move(digits)};
}

Answer Component::ResetMessage() {
  std::lock_guard guard(mutex_);
  Properties fresh;
  fresh.user = std::move(properties_.user);
  fresh.password = std::move(properties_.password);
  properties_ = std::move(fresh);
  return {kSuccess, "OK"};
}

}  // namespace orvalo::component
