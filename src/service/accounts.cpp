#include "service/accounts.h"

#include <algorithm>

#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::int64_t kTemporarySeconds = 24 * 3600;
constexpr std::size_t kLongestName = 64, kLongestEmail = 254, kLongestPassword = 256;

bool IsPrintable(const std::string& text) {
  return std::none_of(text.begin(), text.end(), [](char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
  });
}

bool IsEmail(const std::string& text) {
  const auto at = text.find('@');
  return text.size() <= kLongestEmail && IsPrintable(text) && at != 0 && at != std::string::npos &&
         at + 1 < text.size() && text.find_first_of(" <>,;\"", 0) == std::string::npos;
}

}  // namespace

Accounts::Accounts(Database& database, const platform::Clock& clock)
    : database_(database), clock_(clock), nobodys_hash_(HashPassword(RandomBytes(16))) {}

std::string Accounts::Problem(const std::string& user, const std::string& email,
                              const std::string& password) {
  if (user.empty() || user.size() > kLongestName || !IsPrintable(user)) {
    return "a user name has 1 to 64 printable characters";
  }
  if (!email.empty() && !IsEmail(email)) return "that is no e-mail address";
  if (password.empty() || password.size() > kLongestPassword) {
    return "a password has 1 to 256 characters";
  }
  return {};
}

bool Accounts::Add(const std::string& user, const std::string& email, const std::string& password,
                   Money credit) {
  const auto hash = HashPassword(password);
  bool added = false;
  database_.Write([&](Connection& connection) {
    added = Query(connection,
                  "INSERT OR IGNORE INTO account(user,email,password,balance,credits) "
                  "VALUES(?1,?2,?3,?4,?4)",
                  user, email, hash, credit)
                .Run() == 1;
  });
  return added;
}

bool Accounts::SetPassword(const std::string& user, const std::string& password) {
  const auto hash = HashPassword(password);
  bool changed = false;
  database_.Write([&](Connection& connection) {
    changed = Query(connection,
                    "UPDATE account SET password=?,temporary='',temporary_until=0 WHERE user=?",
                    hash, user)
                  .Run() == 1;
    Query(connection, "DELETE FROM session WHERE account=(SELECT id FROM account WHERE user=?)",
          user)
        .Run();
  });
  return changed;
}

bool Accounts::AddCredit(const std::string& user, Money amount) {
  bool changed = false;
  database_.Write([&](Connection& connection) {
    changed =
        Query(connection, "UPDATE account SET balance=balance+?1,credits=credits+?1 WHERE user=?2",
              amount, user)
            .Run() == 1;
  });
  return changed;
}

std::vector<Account> Accounts::List() {
  return database_.Read([](Connection& connection) {
    std::vector<Account> accounts;
    Query rows(connection, "SELECT id,user,email,balance,credits FROM account ORDER BY user");
    while (rows.Step()) {
      accounts.push_back({rows.Int(0), rows.Text(1), rows.Text(2), rows.Int(3), rows.Int(4)});
    }
    return accounts;
  });
}

std::optional<std::int64_t> Accounts::Verify(const std::string& user, const std::string& password) {
  std::int64_t id = 0;
  std::string hash = nobodys_hash_, temporary;
  const bool known = database_.Read([&](Connection& connection) {
    Query row(connection,
              "SELECT id,password,CASE WHEN temporary_until>? THEN temporary ELSE '' END "
              "FROM account WHERE user=?",
              clock_.Now(), user);
    if (!row.Step()) return false;
    id = row.Int(0);
    hash = row.Text(1);
    temporary = row.Text(2);
    return true;
  });
  const bool matches = PasswordMatches(hash, password) ||
                       (!temporary.empty() && PasswordMatches(temporary, password));
  if (!known || !matches) return std::nullopt;
  return id;
}

std::optional<Accounts::Funds> Accounts::FundsOf(std::int64_t account) {
  return database_.Read([&](Connection& connection) -> std::optional<Funds> {
    Query row(connection, "SELECT balance,credits FROM account WHERE id=?", account);
    if (!row.Step()) return std::nullopt;
    return Funds{row.Int(0), row.Int(1)};
  });
}

std::optional<std::string> Accounts::GiveTemporaryPassword(const std::string& user,
                                                           const std::string& email) {
  const auto password = TemporaryPassword();
  const auto hash = HashPassword(password);
  bool given = false;
  database_.Write([&](Connection& connection) {
    given = Query(connection,
                  "UPDATE account SET temporary=?,temporary_until=? "
                  "WHERE user=? AND email<>'' AND lower(email)=lower(?)",
                  hash, clock_.Now() + kTemporarySeconds, user, email)
                .Run() == 1;
  });
  if (!given) return std::nullopt;
  return password;
}

}  // namespace orvalo::service
