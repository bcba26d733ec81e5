#pragma once
#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "cli/command.h"
#include "cli/json_output.h"
#include "gateway/books_check.h"

namespace orvalo::cli {

// The differences between the outbox and the gateway as they are found, a line each or elements of
// a JSON array, and in the end their counts.
class BooksReport {
 public:
  explicit BooksReport(Context& context);
  void Add(const BooksDifference& difference, bool mended);
  // `funds` as the gateway tells them, empty when it does not; `checked`: against the charges.
  void End(const BooksTotals& totals, std::int64_t since, const Funds& funds, bool checked);
  void BreakOff();  // instead of End: what has been found is not all

  std::size_t left() const { return found_ - mended_; }  // differences that are not mended
  std::string Summary() const;                           // "2 missing here, 1 other charge"

 private:
  static constexpr std::size_t kKinds = 7;

  Context& context_;
  std::optional<JsonArray> list_;
  std::array<std::size_t, kKinds> counts_{};
  std::size_t found_ = 0, mended_ = 0;
};

}  // namespace orvalo::cli
