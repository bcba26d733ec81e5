#include "contacts/contact_drag.h"

#include <charconv>

namespace orvalo {

namespace {

constexpr std::string_view kPlaceMark = "CID:";
constexpr std::string_view kGroupMark = "|GID:";

// The number that `text` begins with; nothing when it begins with none.
std::optional<std::int32_t> LeadingNumber(std::string_view text) {
  std::int32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc()) return std::nullopt;
  return number;
}

}  // namespace

DropEffect DropEffectOf(bool ctrl, bool shift) {
  if (ctrl && shift) return DropEffect::kNone;
  return ctrl ? DropEffect::kCopy : DropEffect::kMove;
}

std::string DraggedContact::Text() const {
  return std::string(kPlaceMark)
      .append(std::to_string(place))
      .append(kGroupMark)
      .append(std::to_string(gid));
}

std::optional<DraggedContact> DraggedContact::Parse(std::string_view text) {
  if (!text.starts_with(kPlaceMark)) return std::nullopt;
  const auto place = LeadingNumber(text.substr(kPlaceMark.size()));
  if (!place) return std::nullopt;
  DraggedContact dragged{*place, -1};
  const std::size_t mark = text.find(kGroupMark);
  if (mark != std::string_view::npos)
    dragged.gid = LeadingNumber(text.substr(mark + kGroupMark.size())).value_or(-1);
  return dragged;
}

}  // namespace orvalo
