#pragma once
#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "platform/automation.h"
#include "platform/code_page.h"

namespace orvalo::test {

// Calls an automation object's members by name, as its only user does.
class Caller {
 public:
  using Variant = platform::Variant;

  explicit Caller(platform::Dispatch& object) : object_(object) {}

  static Variant Text(std::string_view text) { return platform::ToWide(text); }
  static Variant Flag(std::int16_t value) { return platform::VariantFlag{value}; }

  // Arguments in the order of the call; `result` may be null.
  platform::HResult Invoke(std::u16string_view name, platform::InvokeKind kind,
                           std::vector<Variant> arguments, Variant* result) {
    platform::MemberId id = 0;
    object_.GetIdOfName(name, platform::kUserDefaultLocale, &id);
    std::reverse(arguments.begin(), arguments.end());
    return object_.Invoke(id, platform::kUserDefaultLocale, kind, arguments, result);
  }

  // The text that a method answers with, "<failed>" when the call itself fails.
  std::string Call(std::u16string_view name, std::vector<Variant> arguments = {}) {
    Variant result;
    const auto code = Invoke(name, platform::InvokeKind::kMethod, std::move(arguments), &result);
    const auto* text = std::get_if<std::u16string>(&result);
    return platform::Succeeded(code) && text != nullptr ? platform::FromWide(*text) : "<failed>";
  }

  platform::HResult Put(std::u16string_view name, Variant value) {
    return Invoke(name, platform::InvokeKind::kPropertyPut, {std::move(value)}, nullptr);
  }

  Variant Get(std::u16string_view name) {
    Variant result;
    Invoke(name, platform::InvokeKind::kPropertyGet, {}, &result);
    return result;
  }

  int Error() {
    const auto value = Get(u"smsERROR");
    return std::holds_alternative<std::int32_t>(value) ? std::get<std::int32_t>(value) : -1;
  }

  std::string LogIn() {
    return Call(u"AuthenticateClient", {Text("Orvalo"), Text("demo"), Text("secret")});
  }
  std::string Send(std::string_view text, std::string_view number) {
    return Call(u"SendMsg", {Flag(1), Text(text), Text(number)});
  }

 private:
  platform::Dispatch& object_;
};

}  // namespace orvalo::test
