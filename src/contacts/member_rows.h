#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text_order.h"

namespace orvalo {

class SmsDatabase;
struct ContactView;

// Columns of the member list, in their order.
enum class MemberColumn : std::int32_t { kName = 0, kSurname = 1, kMobile = 2 };
inline constexpr std::size_t kMemberColumnCount = 3;

// What the list shows of one member, by column.
using MemberLine = std::array<std::string, kMemberColumnCount>;

// Which contact stands where in the member list: the members of one group, or all contacts, sorted
// by a column. It holds numbers only, some 28 bytes a member, so that a hundred thousand are shown
// and sorted without keeping their texts. Equal texts stand in order of their contact ids. Main
// thread. A damaged file makes Load and SortBy throw StoreError, and the rows then stay.
class MemberRows {
 public:
  // Nothing: no group.
  struct Source {
    std::int32_t gid = 0;
    bool every_contact = false;
  };

  explicit MemberRows(SmsDatabase& database) : database_(database) {}

  // Reads the members anew; the sort column and its direction stay.
  void Load(const std::optional<Source>& source);
  void SortBy(MemberColumn column);  // ascending
  void Reverse();

  std::size_t Count() const { return display_.size(); }
  MemberColumn SortColumn() const { return column_; }
  bool IsDescending() const { return descending_; }

  // A loaded member has a place, in order of contact ids, that stays while the display order
  // changes. Positions and places are below Count().
  std::int32_t CidAt(std::size_t position) const { return cids_[display_[position]]; }
  std::uint32_t PlaceAt(std::size_t position) const { return display_[position]; }
  std::int32_t CidOfPlace(std::size_t place) const { return cids_[place]; }
  // Where each place stands on display.
  std::vector<std::uint32_t> Positions() const;
  std::optional<std::uint32_t> PlaceOf(std::int32_t cid) const;

 private:
  static std::string_view TextOf(const ContactView& contact, MemberColumn column);
  void LoadSorted(const std::optional<Source>& source, MemberColumn column, bool descending);
  std::optional<std::vector<std::uint32_t>> Read(const std::optional<Source>& source,
                                                 MemberColumn column,
                                                 std::vector<std::int32_t>* cids);

  SmsDatabase& database_;
  std::optional<Source> source_;
  MemberColumn column_ = MemberColumn::kName;
  bool descending_ = false;
  std::vector<std::int32_t> cids_;      // ascending
  std::vector<std::uint32_t> display_;  // by position: places
  platform::TextOrder order_;           // by the texts of column_ of the members of source_
};

}  // namespace orvalo
