#include "messages/outbox_rows.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace orvalo {

using KeyText = SmsDatabase::KeyText;

std::vector<std::uint32_t> OrderOfNumbers(std::span<const std::int32_t> numbers) {
  constexpr int kBits = 11;
  constexpr std::uint32_t kBuckets = 1u << kBits;
  constexpr int kPasses = 3;
  // Each number above its place, the sign turned so that bytes compare as numbers do.
  std::vector<std::uint64_t> items(numbers.size());
  std::array<std::array<std::uint32_t, kBuckets>, kPasses> counts{};
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::uint32_t key = static_cast<std::uint32_t>(numbers[i]) ^ 0x8000'0000u;
    items[i] = std::uint64_t{key} << 32 | i;
    for (int pass = 0; pass < kPasses; ++pass) {
      ++counts[static_cast<std::size_t>(pass)][key >> (pass * kBits) & (kBuckets - 1)];
    }
  }
  std::vector<std::uint64_t> sorted(items.size());
  for (int pass = 0; pass < kPasses; ++pass) {
    auto& count = counts[static_cast<std::size_t>(pass)];
    if (std::any_of(count.begin(), count.end(),
                    [&](std::uint32_t rows) { return rows == items.size(); }))
      continue;  // all agree in these bits
    std::uint32_t start = 0;
    for (std::uint32_t& bucket : count) start += std::exchange(bucket, start);
    for (const std::uint64_t item : items) {
      sorted[count[item >> (32 + pass * kBits) & (kBuckets - 1)]++] = item;
    }
    items.swap(sorted);
  }
  std::vector<std::uint32_t> order(items.size());
  std::transform(items.begin(), items.end(), order.begin(),
                 [](std::uint64_t item) { return static_cast<std::uint32_t>(item); });
  return order;
}

KeyText OutboxRows::TextOf(OutboxColumn column) {
  switch (column) {
    case OutboxColumn::kRecipient:
      return KeyText::kToInfo;
    case OutboxColumn::kCharge:
      return KeyText::kCharge;
    case OutboxColumn::kMessage:
      return KeyText::kMsg;
    default:
      return KeyText::kNone;
  }
}

void OutboxRows::Reload() {
  std::vector<std::int32_t> ids;
  std::vector<std::int32_t> times;
  std::vector<std::int32_t> stats;
  for (auto* numbers : {&ids, &times, &stats}) numbers->reserve(ids_.size());
  database_.ForEachSmsKey(KeyText::kNone, [&](const SmsDatabase::SmsKey& key) {
    ids.push_back(key.id);
    times.push_back(key.time);
    stats.push_back(key.stat);
  });
  ids_.swap(ids);
  times_.swap(times);
  stats_.swap(stats);
  try {
    display_ = Order(column_);
    reversed_ = false;
  } catch (...) {
    ids_.swap(ids);
    times_.swap(times);
    stats_.swap(stats);
    throw;
  }
}

void OutboxRows::SortBy(OutboxColumn column) {
  display_ = Order(column);
  column_ = column;
  reversed_ = false;
}

void OutboxRows::Reverse() {
  std::reverse(display_.begin(), display_.end());
  reversed_ = !reversed_;
}

bool OutboxRows::RefreshStatus(std::span<const std::int32_t> ids) {
  for (const std::int32_t id : ids) {
    const auto place = std::lower_bound(ids_.begin(), ids_.end(), id);
    if (place == ids_.end() || *place != id) continue;
    const auto row = database_.GetSms(id);
    if (row) stats_[static_cast<std::size_t>(place - ids_.begin())] = row->stat;
  }
  if (column_ != OutboxColumn::kStatus) return false;
  display_ = OrderByNumber(column_);
  reversed_ = false;
  return true;
}

std::vector<std::uint32_t> OutboxRows::Order(OutboxColumn column) {
  return TextOf(column) == KeyText::kNone ? OrderByNumber(column) : OrderByText(column);
}

std::vector<std::uint32_t> OutboxRows::OrderByNumber(OutboxColumn column) const {
  return OrderOfNumbers(column == OutboxColumn::kStatus ? stats_ : times_);
}

// The texts come in a second walk of the table: rows that it does not have any more count as empty
// and new ones are passed over.
std::vector<std::uint32_t> OutboxRows::OrderByText(OutboxColumn column) {
  if (column != text_column_) text_order_.Forget();
  text_column_ = column;
  for (;;) {
    text_order_.BeginRows();
    std::size_t next = 0;
    database_.ForEachSmsKey(TextOf(column), [&](const SmsDatabase::SmsKey& key) {
      for (; next < ids_.size() && ids_[next] < key.id; ++next) text_order_.AddRow(ids_[next], "");
      if (next < ids_.size() && ids_[next] == key.id) text_order_.AddRow(ids_[next++], key.text);
    });
    for (; next < ids_.size(); ++next) text_order_.AddRow(ids_[next], "");
    auto order = text_order_.EndRows([&](std::int32_t id) { return ReadText(id, column); });
    if (order) return *std::move(order);
    text_order_.Forget();
  }
}

std::string OutboxRows::ReadText(std::int32_t id, OutboxColumn column) {
  auto row = database_.GetSms(id);
  if (!row) return {};
  if (column == OutboxColumn::kRecipient) return std::move(row->to_info);
  return column == OutboxColumn::kCharge ? std::move(row->charge) : std::move(row->msg);
}

}  // namespace orvalo
