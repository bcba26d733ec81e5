#include "contacts/member_rows.h"

#include <algorithm>
#include <span>
#include <utility>

#include "store/sms_database.h"

namespace orvalo {

std::string_view MemberRows::TextOf(const ContactView& contact, MemberColumn column) {
  switch (column) {
    case MemberColumn::kSurname:
      return contact.surname;
    case MemberColumn::kMobile:
      return contact.mobile;
    default:
      return contact.name;
  }
}

void MemberRows::Load(const std::optional<Source>& source) {
  LoadSorted(source, column_, descending_);
}

void MemberRows::SortBy(MemberColumn column) { LoadSorted(source_, column, false); }

void MemberRows::Reverse() {
  std::reverse(display_.begin(), display_.end());
  descending_ = !descending_;
}

void MemberRows::LoadSorted(const std::optional<Source>& source, MemberColumn column,
                            bool descending) {
  const bool same_list = source && source_ && source->gid == source_->gid;
  if (!same_list || column != column_) order_.Forget();
  std::vector<std::int32_t> cids;
  std::optional<std::vector<std::uint32_t>> order;
  try {
    order = Read(source, column, &cids);
    if (!order) {
      order_.Forget();
      order = Read(source, column, &cids);
    }
  } catch (...) {
    order_.Forget();
    throw;
  }
  cids_ = std::move(cids);
  display_ = *std::move(order);
  if (descending) std::reverse(display_.begin(), display_.end());
  source_ = source;
  column_ = column;
  descending_ = descending;
}

// One walk through the members gives their ids and the texts to sort by.
std::optional<std::vector<std::uint32_t>> MemberRows::Read(const std::optional<Source>& source,
                                                           MemberColumn column,
                                                           std::vector<std::int32_t>* cids) {
  cids->clear();
  cids->reserve(cids_.size());
  order_.BeginRows();
  const auto take = [&](const ContactView& contact) {
    cids->push_back(contact.cid);
    order_.AddRow(contact.cid, TextOf(contact, column));
    return true;
  };
  if (source && source->every_contact) database_.ForEachContact(0, take);
  if (source && !source->every_contact) database_.ForEachMember(source->gid, take);
  return order_.EndRows([&](std::int32_t cid) {
    std::string text;
    database_.ForEachContactOf(std::span(&cid, 1),
                               [&](const ContactView& contact) { text = TextOf(contact, column); });
    return text;
  });
}

std::vector<std::uint32_t> MemberRows::Positions() const {
  std::vector<std::uint32_t> positions(display_.size());
  for (std::size_t position = 0; position < display_.size(); ++position)
    positions[display_[position]] = static_cast<std::uint32_t>(position);
  return positions;
}

std::optional<std::uint32_t> MemberRows::PlaceOf(std::int32_t cid) const {
  const auto place = std::lower_bound(cids_.begin(), cids_.end(), cid);
  if (place == cids_.end() || *place != cid) return std::nullopt;
  return static_cast<std::uint32_t>(place - cids_.begin());
}

}  // namespace orvalo
