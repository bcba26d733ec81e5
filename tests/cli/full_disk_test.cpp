#include <filesystem>
#include <optional>
#include <thread>

#include "orvaloctl_fixture.h"
#include "store/store_error.h"
#include "support/fake_component.h"
#include "support/small_disk.h"

namespace orvalo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class FullDiskTest : public OrvaloctlTest {
 protected:
  FullDiskTest() { fake_.Register(registry_); }

  Outcome LogIn() { return RunWith("secret\n", {"login", "demo"}, clock_); }
  // A run that ends when its engine has done what there is to do.
  Outcome RunOnce() {
    std::thread other([this] {
      if (clock_.AwaitWaiters(2)) clock_.Advance(20'000);
    });
    Outcome outcome = Run({"run", "--for", "20"});
    other.join();
    return outcome;
  }
  std::string Setting(const std::string& key) { return Run({"settings", key}).out; }

  FakeGateway fake_;
};

// While the gateway answers a login, the disk becomes full.
TEST_F(FullDiskTest, EndsACommandInWordsAndCostsNothing) {
  const auto met = OnSmallDisk(folder(), 1 << 20, [this] {
    const std::string filler = folder() + "/filler";
    Init();
    ASSERT_THAT(LogIn(), EndsWith(0));
    ASSERT_THAT(Run({"settings", "WorkingOnLine", "0"}), EndsWith(0));
    ASSERT_THAT(Run({"send", "--to", "27820000001", "--text", "x"}), EndsWith(0));
    std::optional<SmsDatabase> looking;  // keeps the room that a closed database leaves
    const auto fill_for_good = [&](const FakeGateway::Call&) {
      looking.emplace(folder(), texts_, clock_, true);
      FillDisk(filler);
      return FakeGateway::Answer{};
    };
    fake_.On("AuthenticateClient", fill_for_good);
    const Outcome login = LogIn();
    EXPECT_THAT(login, FailsWith(1, "The settings could not be saved in \"" + folder()));
    EXPECT_THAT(login, FailsWith(1, "The disk is full, or your share of it. Make room on it."));
    looking.reset();
    std::filesystem::remove(filler);
    EXPECT_EQ(Setting("WorkingOnLine"), "0\n");

    fake_.On("AuthenticateClient", [&](const FakeGateway::Call&) {
      FillDisk(filler);
      return FakeGateway::Answer{};
    });
    EXPECT_THAT(LogIn(), EndsWith(0)) << "the closed database has left room";
    std::filesystem::remove(filler);
    EXPECT_EQ(Setting("WorkingOnLine"), "1\n");
    fake_.On("AuthenticateClient", fill_for_good);
    const Outcome run = RunOnce();
    EXPECT_THAT(run, FailsWith(1, "The disk is full: \"" + folder()));
    EXPECT_THAT(run, FailsWith(1, "Not all that became of messages could be stored"));
    EXPECT_TRUE(fake_.Calls("SendMsg").empty()) << "what cannot be marked is not sent";
    looking.reset();
    std::filesystem::remove(filler);
    EXPECT_EQ(StoredMessages().at(0).stat, static_cast<int>(SmsStatus::kPending));
  });
  if (!met) GTEST_SKIP() << "no disk can be made here";
  EXPECT_TRUE(*met);
}

// A setting that cannot be saved, and a login in whose middle the command ends.
TEST_F(FullDiskTest, NeitherSavesNorGoesOnlineInSilence) {
  Init();
  ASSERT_THAT(LogIn(), EndsWith(0));
  ASSERT_THAT(Run({"settings", "WorkingOnLine", "0"}), EndsWith(0));
  fake_.On("AuthenticateClient",
           [](const FakeGateway::Call&) -> FakeGateway::Answer { throw StoreError("broken off"); });
  EXPECT_THAT(LogIn(), FailsWith(1, "broken off"));
  EXPECT_EQ(Setting("WorkingOnLine"), "0\n");

  const std::string settings = folder() + "/SMS.dat";
  fake_.On("AuthenticateClient", [&](const FakeGateway::Call&) {
    std::filesystem::remove(settings);
    std::filesystem::create_directories(settings + "/in the way");
    return FakeGateway::Answer{};
  });
  const Outcome login = LogIn();
  EXPECT_THAT(login, FailsWith(1, "The settings could not be saved in"));
  EXPECT_THAT(login, FailsWith(1, "The system says: "));
}

}  // namespace
}  // namespace orvalo::test
