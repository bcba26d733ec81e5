#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo {

// Members dragged onto groups.

// What a drop would do; a source and a target may offer several. The values are those of the
// desktop's drag and drop.
enum class DropEffect : std::uint32_t { kNone = 0, kCopy = 1, kMove = 2 };

// The notifications of the group list to the page: a text was dropped on an entry.
inline constexpr std::uint32_t kWmUser = 0x0400;
inline constexpr std::uint32_t kWmContactCopyDrop = kWmUser + 1000;
inline constexpr std::uint32_t kWmContactMoveDrop = kWmUser + 1001;

// None held moves, Ctrl copies, Shift moves; both together ask for a link, which is refused.
DropEffect DropEffectOf(bool ctrl, bool shift);

// The text that a dragged member is: its place among the loaded members and the group shown.
struct DraggedContact {
  std::int32_t place = 0;
  std::int32_t gid = -1;  // -1: not told

  std::string Text() const;
  // Nothing when the text is not that of a member.
  static std::optional<DraggedContact> Parse(std::string_view text);
};

}  // namespace orvalo
