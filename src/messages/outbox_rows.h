#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/text_order.h"
#include "store/sms_database.h"

namespace orvalo {

// Columns of the outbox, in their order.
enum class OutboxColumn : std::int32_t {
  kTime = 0,
  kRecipient = 1,
  kStatus = 2,
  kCharge = 3,
  kMessage = 4
};
inline constexpr int kOutboxColumnCount = 5;

// Which message stands where in the outbox: the rows of the message table in display order. It
// holds numbers only, at most 32 bytes a row, so that a list of a million rows is sorted in
// milliseconds by a number, and by a text without keeping the texts. The rows are those of the last
// Reload; what the engine adds or deletes meanwhile comes with the next one. Main thread. A damaged
// file makes Reload and SortBy throw StoreError, and the rows and their order then stay.
class OutboxRows {
 public:
  explicit OutboxRows(SmsDatabase& database) : database_(database) {}

  std::size_t Count() const { return display_.size(); }
  std::int32_t IdAt(std::size_t position) const { return ids_[display_[position]]; }

  // The row's place in the table, in order of ids: it stays while the display order changes.
  std::uint32_t RowAt(std::size_t position) const { return display_[position]; }

  OutboxColumn SortColumn() const { return column_; }
  bool IsReversed() const { return reversed_; }  // descending, until the next sort

  void Reload();                     // reads the table and sorts it by the sort column, ascending
  void SortBy(OutboxColumn column);  // makes it the sort column, ascending
  void Reverse();

  // Reads the statuses of these messages anew; sorts again when they are what is sorted by. True
  // when it has sorted.
  bool RefreshStatus(std::span<const std::int32_t> ids);

 private:
  static SmsDatabase::KeyText TextOf(OutboxColumn column);
  std::vector<std::uint32_t> OrderByText(OutboxColumn column);
  std::vector<std::uint32_t> OrderByNumber(OutboxColumn column) const;
  std::vector<std::uint32_t> Order(OutboxColumn column);
  std::string ReadText(std::int32_t id, OutboxColumn column);

  SmsDatabase& database_;
  OutboxColumn column_ = OutboxColumn::kTime;
  bool reversed_ = false;
  // In table order.
  std::vector<std::int32_t> ids_, times_, stats_;
  std::vector<std::uint32_t> display_;  // by display position: places in table order
  platform::TextOrder text_order_;
  OutboxColumn text_column_ = OutboxColumn::kRecipient;  // which text_order_ is about
};

// The places of the numbers in ascending order; equal numbers keep theirs.
std::vector<std::uint32_t> OrderOfNumbers(std::span<const std::int32_t> numbers);

}  // namespace orvalo
