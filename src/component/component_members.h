#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "component/component.h"
#include "platform/code_page.h"

namespace orvalo::component {

// What the two tables of the component's members are made of; for component.cpp and
// component_members.cpp only.

enum class Kind { kText, kFlag, kInteger };

inline bool IsOfKind(const platform::Variant& value, Kind kind) {
  switch (kind) {
    case Kind::kText:
      return std::holds_alternative<std::u16string>(value);
    case Kind::kFlag:
      return std::holds_alternative<platform::VariantFlag>(value);
    case Kind::kInteger:
      return std::holds_alternative<std::int32_t>(value);
  }
  return false;
}

// The arguments in the order of the call, checked before a handler sees them.
class Component::Arguments {
 public:
  Arguments(std::span<const platform::Variant> reversed, std::string key)
      : reversed_(reversed), key_(std::move(key)) {}

  const std::string& Key() const { return key_; }  // put for this submission; "": none

  const std::u16string& Wide(std::size_t place) const {
    return std::get<std::u16string>(At(place));
  }
  std::string Text(std::size_t place) const { return platform::FromWide(Wide(place)); }
  bool Flag(std::size_t place) const {
    return std::get<platform::VariantFlag>(At(place)).value != 0;
  }
  std::int32_t Integer(std::size_t place) const { return std::get<std::int32_t>(At(place)); }

 private:
  const platform::Variant& At(std::size_t place) const {
    return reversed_[reversed_.size() - 1 - place];
  }

  std::span<const platform::Variant> reversed_;
  std::string key_;
};

struct Component::Method {
  std::u16string_view name;
  std::vector<Kind> arguments;  // in the order of the call
  Answer (*handle)(Component&, const Arguments&);
  bool submits = false;  // uses up the key that was put
};

struct Component::Property {
  using Field = std::variant<std::monostate, std::u16string Properties::*,
                             std::int32_t Properties::*, platform::VariantFlag Properties::*>;
  std::u16string_view name;
  Field field;  // where a put value is kept; none: cannot be put, but for `write`
  platform::Variant (*read)(Component&) = nullptr;  // null: reading gives what was put
  platform::HResult (*write)(Component&, const platform::Variant&) = nullptr;  // and not to be read
};

}  // namespace orvalo::component
