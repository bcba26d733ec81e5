#pragma once
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "service/database.h"
#include "service/money.h"

namespace orvalo::service {

// What one part of a message costs: the price of the number's longest known prefix. The empty
// prefix always has a price (0.8 in a new data folder). Any thread.
class Pricing {
 public:
  explicit Pricing(Database& database) : database_(database) {}

  static bool IsPrefix(std::string_view prefix);  // at most 16 digits, not "00" first

  void Set(const std::string& prefix, Money amount);
  std::vector<std::pair<std::string, Money>> List();  // by prefix

  // For use within a write, whose prices it sees. `number` is plain.
  Money PriceOf(Connection& connection, std::string_view number);

 private:
  Database& database_;
  std::mutex mutex_;
  std::uint64_t loaded_at_ = 0;  // 0: not loaded
  std::vector<std::pair<std::string, Money>> longest_first_;
};

}  // namespace orvalo::service
