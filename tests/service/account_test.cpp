#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <vector>

#include "service/hashing_pace.h"
#include "service/running_service.h"

namespace orvalo::test {
namespace {

constexpr std::int64_t kSecond = 1000, kHour = 3600 * kSecond;

TEST(Sessions, EndByAgeByNumberAndByANewPassword) {
  RunningService running;
  auto first = running.Caller();
  std::vector<std::string> tokens;
  for (int i = 0; i < 16; ++i) {
    auto next = running.Caller();
    tokens.push_back(next.token);
  }
  EXPECT_EQ(first.Get("/v1/ping").code(), 111) << "the seventeenth ends the oldest";
  auto ann = running.Caller("");
  for (const auto& token : tokens) {
    ann.token = token;
    EXPECT_EQ(ann.Get("/v1/ping").status, 200);
  }
  running.Restart();
  auto bob = running.Caller("bob");
  auto again = running.Caller("");
  again.token = ann.token;
  EXPECT_EQ(again.Get("/v1/ping").status, 200) << "sessions survive a restart";

  running.clock.Advance(23 * kHour);
  EXPECT_EQ(again.Get("/v1/ping").status, 200);
  running.clock.Advance(2 * kHour);
  EXPECT_EQ(again.Get("/v1/ping").status, 200) << "a call prolongs a session's life";
  EXPECT_EQ(bob.Get("/v1/ping").code(), 111) << "25 hours without a call";

  {
    // As the administrator's command does it, from outside.
    service::Database outside(running.options.folder);
    service::Accounts(outside, running.clock).SetPassword("ann", "new");
  }
  running.clock.Advance(kSecond);
  EXPECT_EQ(again.Get("/v1/ping").code(), 111);
  EXPECT_FALSE(again.LogIn("ann", "ann"));
  EXPECT_TRUE(again.LogIn("ann", "new"));
  const auto file = Slurp(running.options.folder + "/gateway.db") +
                    Slurp(running.options.folder + "/gateway.db-wal");
  EXPECT_THAT(file, Not(testing::HasSubstr(again.token)));
}

TEST(Passwords, CannotBeTriedForLong) {
  RunningService running;
  auto caller = running.Caller("");
  int refused = 0;
  for (int i = 0; i < 12; ++i) {
    const auto reply = caller.Post(
        "/v1/session", {{"client_id", ""}, {"user", "ann"}, {"password", std::to_string(i)}});
    if (reply.code() == 112) ++refused;
    EXPECT_TRUE(reply.status == 401 || reply.status == 429);
  }
  EXPECT_EQ(refused, 2);
  EXPECT_FALSE(caller.LogIn("ann", "ann")) << "not even the right one is told";
  EXPECT_TRUE(caller.LogIn("bob", "bob"));
  running.clock.Advance(60 * kSecond);
  EXPECT_TRUE(caller.LogIn("ann", "ann"));
}

TEST(Passwords, CanBeRecoveredByMail) {
  RunningService running;
  auto caller = running.Caller("");
  const auto recover = [&](const std::string& user, const std::string& email) {
    return caller.Post("/v1/password-recovery", {{"user", user}, {"email", email}}).code();
  };
  EXPECT_EQ(recover("ann", "bob@example.org"), 601);
  EXPECT_EQ(recover("bob", ""), 601) << "no address is not an address";
  EXPECT_EQ(recover("eve", "ann@example.org"), 601);
  ASSERT_EQ(recover("ann", "Ann@Example.org"), 0);

  const auto mails = running.options.folder + "/mail";
  std::string mail;
  for (const auto& entry : std::filesystem::directory_iterator(mails)) {
    EXPECT_TRUE(mail.empty());
    EXPECT_EQ(entry.path().extension(), ".eml");
    mail = Slurp(entry.path().string());
  }
  const std::string label = "Temporary password: ";
  ASSERT_NE(mail.find(label), std::string::npos);
  const auto password = mail.substr(mail.find(label) + label.size(), 12);
  EXPECT_TRUE(caller.LogIn("ann", password));
  EXPECT_TRUE(caller.LogIn("ann", "ann")) << "the old password stays valid";
  running.clock.Advance(24 * kHour);
  EXPECT_FALSE(caller.LogIn("ann", password));

  for (int i = 0; i < 5; ++i) recover("bob", "bob@example.org");
  EXPECT_EQ(recover("bob", "bob@example.org"), 113);
  for (int i = 6; i < 15; ++i) EXPECT_EQ(recover(std::to_string(i), "a@b"), 601);
  EXPECT_EQ(recover("eve", "a@b"), 113) << "the sixteenth from one address, whatever the names";
}

TEST(Passwords, LeaveTheProcessorToOthersWhenStrangersGuess) {
  FakeClock clock;
  service::HashingPace pace(clock);
  std::atomic<int> ran = 0, turned_away = 0;
  const auto guess = [&](bool right) {
    const bool tried = pace.Run([&] {
      ++ran;
      clock.Advance(100);
      return right;
    });
    if (!tried) ++turned_away;
  };
  for (int i = 0; i < 20; ++i) guess(true);
  for (int i = 0; i < 3; ++i) guess(false);
  EXPECT_THROW(pace.Run([]() -> bool { throw std::runtime_error("no memory"); }),
               std::runtime_error);
  guess(false);
  EXPECT_EQ(ran, 24) << "right ones, and a few wrong ones, wait for nothing";
  std::vector<std::thread> others;
  for (int i = 0; i < 17; ++i) others.emplace_back([&] { guess(true); });
  while (turned_away == 0 && ran < 40) std::this_thread::yield();
  EXPECT_EQ(ran, 24);
  clock.Advance(199);
  EXPECT_EQ(ran, 24) << "the fourth wrong one is paid for by 600 ms";
  clock.Advance(1);
  for (auto& other : others) other.join();
  EXPECT_EQ(ran, 40);
  EXPECT_EQ(turned_away, 1);
}

TEST(Requests, AreLimitedPerAccountAndSecond) {
  RunningService running;
  running.options.rate_limit = 3;
  running.Restart();
  auto ann = running.Caller(), bob = running.Caller("bob");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ann.Get("/v1/ping").status, 200);
  EXPECT_EQ(ann.Get("/v1/ping").code(), 113);
  EXPECT_EQ(ann.Message("27821110001").status, 429);
  EXPECT_EQ(bob.Get("/v1/ping").status, 200);
  running.clock.Advance(kSecond);
  EXPECT_EQ(ann.Message("27821110001").status, 200);
}

TEST(Vouchers, AreRedeemedOnce) {
  RunningService running;
  running.service().vouchers().Add("1234567890123456", 50'000);
  running.service().vouchers().Add("6543210987654321", 1);
  auto ann = running.Caller(), bob = running.Caller("bob");
  const nlohmann::json voucher{{"number", "1234567890123456"}};
  const auto key = NewKey();
  const auto reply = ann.Post("/v1/vouchers", voucher, key);
  EXPECT_EQ(reply.body, (nlohmann::json{{"amount", "50.0"}, {"balance", "150.0"}}));
  EXPECT_EQ(ann.Post("/v1/vouchers", voucher, key).body, reply.body) << "a replay";
  EXPECT_EQ(ann.Post("/v1/vouchers", voucher).code(), 607);
  EXPECT_EQ(bob.Post("/v1/vouchers", voucher).code(), 607);
  EXPECT_EQ(bob.Post("/v1/vouchers", {{"number", "6543210987654321"}}).body.value("balance", ""),
            "2.001");
  EXPECT_EQ(bob.Post("/v1/vouchers", {{"number", "1111111111111111"}}).code(), 606);
  EXPECT_EQ(ann.Balance(), "150.0");
  EXPECT_TRUE(running.LedgerAddsUp());
  for (int i = 0; i < 18; ++i) bob.Post("/v1/vouchers", {{"number", "1111111111111111"}});
  EXPECT_EQ(bob.Post("/v1/vouchers", voucher).code(), 112) << "the 21st wrong one of a minute";
  EXPECT_EQ(ann.Post("/v1/vouchers", voucher, key).body, reply.body) << "a replay is no guess";
  running.clock.Advance(60 * kSecond);
  EXPECT_EQ(bob.Post("/v1/vouchers", voucher).code(), 607);
}

}  // namespace
}  // namespace orvalo::test
