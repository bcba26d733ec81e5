#include "service/vouchers.h"

namespace orvalo::service {

bool Vouchers::IsNumber(std::string_view number) {
  return number.size() == 16 && number.find_first_not_of("0123456789") == std::string_view::npos;
}

bool Vouchers::Add(const std::string& number, Money amount) {
  bool added = false;
  database_.Write([&](Connection& connection) {
    added = Query(connection, "INSERT OR IGNORE INTO voucher(number,amount) VALUES(?,?)", number,
                  amount)
                .Run() == 1;
  });
  return added;
}

std::vector<Vouchers::Voucher> Vouchers::List() {
  return database_.Read([](Connection& connection) {
    std::vector<Voucher> vouchers;
    Query rows(connection,
               "SELECT number,amount,COALESCE(user,'') FROM voucher "
               "LEFT JOIN account ON account.id=redeemed_by ORDER BY number");
    while (rows.Step()) vouchers.push_back({rows.Text(0), rows.Int(1), rows.Text(2)});
    return vouchers;
  });
}

std::variant<Vouchers::Redeemed, Refusal> Vouchers::Redeem(Connection& connection,
                                                           std::int64_t account,
                                                           const std::string& number) {
  Redeemed redeemed;
  {
    Query row(connection, "SELECT amount,redeemed_by FROM voucher WHERE number=?", number);
    if (!row.Step()) return Refuse(ErrorCode::kNoSuchVoucher);
    if (!row.IsNull(1)) return Refuse(ErrorCode::kVoucherUsed);
    redeemed.amount = row.Int(0);
  }
  Query(connection, "UPDATE voucher SET redeemed_by=?,redeemed_at=? WHERE number=?", account,
        clock_.Now(), number)
      .Run();
  Query credit(connection,
               "UPDATE account SET balance=balance+?1,credits=credits+?1 WHERE id=?2 "
               "RETURNING balance",
               redeemed.amount, account);
  if (credit.Step()) redeemed.balance = credit.Int(0);
  return redeemed;
}

}  // namespace orvalo::service
