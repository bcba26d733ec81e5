#pragma once
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "platform/automation.h"

namespace orvalo {

// One member of the gateway component: its name and the id under which the component knows it.
struct Member {
  std::u16string_view name;
  platform::MemberId id = 0;
};

// A table of members, resolved once when the gateway client is created and only read afterwards.
class MemberTable {
 public:
  // The component's methods and properties, in the order in which they are resolved.
  static MemberTable Methods();
  static MemberTable Properties();
  // Members beyond those: a component may lack them, and their id then is 0.
  static MemberTable FurtherMethods();
  static MemberTable FurtherProperties();

  // Asks `component` for the id of every member in order. A method that the component does not know
  // gets id 0; a property keeps whatever the component answered. Returns how many were asked for:
  // all of them, always.
  std::size_t Resolve(platform::Dispatch& component, platform::LocaleId locale);

  // The id by name, whatever its case (ASCII); nothing when the table has no such member.
  std::optional<platform::MemberId> Find(std::u16string_view name) const;

  std::span<const Member> members() const { return {members_.data(), count_}; }

 private:
  static constexpr std::size_t kCapacity = 20;
  std::array<Member, kCapacity> members_{};
  std::size_t count_ = 0;
  explicit MemberTable(std::initializer_list<std::u16string_view> names);
};

}  // namespace orvalo
