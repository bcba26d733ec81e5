#include "service/pricing.h"

namespace orvalo::service {

bool Pricing::IsPrefix(std::string_view prefix) {
  return prefix.size() <= 16 && !prefix.starts_with("00") &&
         prefix.find_first_not_of("0123456789") == std::string_view::npos;
}

void Pricing::Set(const std::string& prefix, Money amount) {
  database_.Write([&](Connection& connection) {
    Query(connection, "INSERT OR REPLACE INTO price VALUES(?,?)", prefix, amount).Run();
  });
  std::lock_guard guard(mutex_);
  loaded_at_ = 0;
}

std::vector<std::pair<std::string, Money>> Pricing::List() {
  return database_.Read([](Connection& connection) {
    std::vector<std::pair<std::string, Money>> prices;
    Query rows(connection, "SELECT prefix,amount FROM price ORDER BY prefix");
    while (rows.Step()) prices.emplace_back(rows.Text(0), rows.Int(1));
    return prices;
  });
}

Money Pricing::PriceOf(Connection& connection, std::string_view number) {
  std::lock_guard guard(mutex_);
  if (const auto changes = database_.ForeignChanges(); loaded_at_ != changes) {
    longest_first_.clear();
    Query rows(connection, "SELECT prefix,amount FROM price ORDER BY length(prefix) DESC");
    while (rows.Step()) longest_first_.emplace_back(rows.Text(0), rows.Int(1));
    loaded_at_ = changes;
  }
  for (const auto& [prefix, amount] : longest_first_) {
    if (number.starts_with(prefix)) return amount;
  }
  return 0;
}

}  // namespace orvalo::service
