#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace orvalo::platform {

// Automation: objects known by a class name whose members are called by name, as far as the gateway
// client relies on it.

// 32-bit result of a call; negative means failure. The values are the platform's usual ones.
using HResult = std::int32_t;
inline constexpr HResult kOk = 0;
inline constexpr HResult kFail = static_cast<HResult>(0x80004005);
inline constexpr HResult kMemberNotFound = static_cast<HResult>(0x80020003);
inline constexpr HResult kTypeMismatch = static_cast<HResult>(0x80020005);
inline constexpr HResult kUnknownName = static_cast<HResult>(0x80020006);
inline constexpr HResult kBadParameterCount = static_cast<HResult>(0x8002000E);
inline constexpr HResult kException = static_cast<HResult>(0x80020009);
inline constexpr HResult kClassNotRegistered = static_cast<HResult>(0x80040154);
inline constexpr bool Succeeded(HResult result) { return result >= 0; }

// A flag as it travels: a property flag is -1 for true; a method's flag may be any 16-bit value and
// is not normalised.
struct VariantFlag {
  std::int16_t value = 0;
  bool operator==(const VariantFlag&) const = default;
};

// Nothing, a text, a flag or an integer.
using Variant = std::variant<std::monostate, std::u16string, VariantFlag, std::int32_t>;

enum class InvokeKind { kMethod, kPropertyGet, kPropertyPut };

using MemberId = std::int32_t;
using LocaleId = std::uint32_t;
inline constexpr LocaleId kUserDefaultLocale = 0x0400;

// An object whose members are reached by name. An implementation says itself which threads may call
// it.
class Dispatch {
 public:
  virtual ~Dispatch() = default;

  // kUnknownName when the object has no such member (names compare without regard to ASCII case);
  // `id` is then untouched.
  virtual HResult GetIdOfName(std::u16string_view name, LocaleId locale, MemberId* id) = 0;

  // Calls a member. `arguments` are in reverse order: the last argument of the call comes first; a
  // property put has exactly one. `result` may be null; it is written only when the call succeeds.
  virtual HResult Invoke(MemberId id, LocaleId locale, InvokeKind kind,
                         std::span<const Variant> arguments, Variant* result) = 0;
};

// The classes that can be created, by class name ("Vendor.Class", compared without regard to ASCII
// case). Filled at the composition root, read afterwards from any thread.
class ClassRegistry {
 public:
  using Factory = std::function<std::unique_ptr<Dispatch>()>;

  // A class registered again is made by its new factory.
  void Register(const std::string& class_name, Factory factory);

  // Null with kClassNotRegistered for an unknown name, with kFail when the factory gives nothing.
  // `why` may be null. What the factory throws passes through.
  std::unique_ptr<Dispatch> Create(const std::string& class_name, HResult* why = nullptr) const;

 private:
  std::map<std::string, Factory> factories_;  // by lower-cased name
};

}  // namespace orvalo::platform
