// Full disks, killed processes, several threads.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <barrier>
#include <filesystem>
#include <latch>
#include <thread>

#include "store/storage.h"
#include "store/store_error.h"
#include "store_fixture.h"
#include "support/small_disk.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;

NewSms Message(std::size_t length) {
  NewSms sms;
  sms.to = "+1";
  sms.msg.assign(length, 'x');
  return sms;
}

class DurabilityTest : public StoreTest {
 protected:
  std::vector<std::int32_t> Ids() {
    std::vector<std::int32_t> ids;
    for (const MessageRow& row : db().AllSms()) ids.push_back(row.id);
    return ids;
  }
};

TEST_F(DurabilityTest, WhatAKilledProcessReportedIsThere) {
  database_.reset();
  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    SmsDatabase database(folder_.path(), texts_, clock_);
    for (std::int32_t i = 0; i < 300; ++i) {
      const std::int32_t id = database.AddSms(Message(500));
      if (i == 100) database.Commit();
      if (write(pipe_ends[1], &id, sizeof id) != sizeof id) break;
    }
    SmsDatabase::Transaction open_when_killed(database);
    database.AddSms(Message(1));
    kill(getpid(), SIGKILL);
  }
  close(pipe_ends[1]);
  std::int32_t reported = 0;
  for (std::int32_t id = 0; read(pipe_ends[0], &id, sizeof id) == sizeof id;) reported = id;
  close(pipe_ends[0]);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  ASSERT_EQ(reported, 300);
  Reopen();
  EXPECT_EQ(db().CountSms(), 300);
  EXPECT_EQ(Add("+1"), 301);
}

TEST_F(DurabilityTest, CommitFoldsTheJournalEvenBesideAReader) {
  Add("+1");
  db().ForEachSms([this](const MessageRow&) {
    std::thread([this] {
      Add("+2");
      db().Commit();
    }).join();
    return true;
  });
  Add("+3");
  db().Commit();
  EXPECT_EQ(std::filesystem::file_size(Path() + "-wal"), 0U);
  // The file by itself, without its journal, holds everything.
  std::filesystem::copy_file(Path(), folder_.File("copy"));
  database_.reset();
  std::filesystem::rename(folder_.File("copy"), Path());
  Reopen();
  EXPECT_THAT(Ids(), ElementsAre(1, 2, 3));
}

TEST_F(DurabilityTest, AFullDatabaseThrowsAndStaysWhole) {
  Add("+1");
  db().storage()->Here().Execute("PRAGMA max_page_count=30");
  const std::vector<SmsDatabase::ChildSms> children(5000, {"+3", {SmsStatus::kPending}});
  try {
    db().AddChildren(1, children);
    ADD_FAILURE() << "it has found room";
  } catch (const StoreError& full) {
    EXPECT_EQ(full.InWords(texts_), "The disk is full: \"" + Path() + "\" could not be written. " +
                                        "Make room on it and try again.");
  }
  EXPECT_THAT(Ids(), ElementsAre(1));
  {
    SmsDatabase::Transaction transaction(db());
    EXPECT_TRUE(db().SetSmsStatus(1, SmsStatus::kSent));
    EXPECT_THROW(db().AddChildren(1, children), StoreError);
    EXPECT_THROW(db().SetSmsStatus(1, SmsStatus::kFailed), StoreError);
    EXPECT_THROW(transaction.Commit(), StoreError);
  }
  EXPECT_EQ(StatusOf(1), SmsStatus::kPending);
  db().storage()->Here().Execute("PRAGMA max_page_count=1000000");
  ASSERT_TRUE(db().AddChildren(1, children));
  EXPECT_EQ(db().CountSms(), 5001);
  EXPECT_EQ(Add("+1"), 5002);  // ids taken in vain were given back
}

TEST_F(DurabilityTest, AFullDiskThrowsAndLosesNothingReported) {
  database_.reset();
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{400'000, 400'000};  // bytes of any file
    setrlimit(RLIMIT_FSIZE, &limit);
    SmsDatabase database(folder_.path(), texts_, clock_);
    std::int32_t added = 0;
    try {
      while (added < 10'000) {
        database.AddSms(Message(1000));
        ++added;
      }
    } catch (const StoreError&) {
    }
    const bool consistent = added > 10 && added < 10'000 && database.CountSms() == added;
    _exit(consistent ? added : 255);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  const int added = WEXITSTATUS(status);
  ASSERT_NE(added, 255);
  Reopen();
  EXPECT_EQ(db().CountSms(), added);
  EXPECT_EQ(Add("+1"), added + 1);
}

// On a small disk of its own, which is full a page later each time.
TEST_F(DurabilityTest, AFullDiskIsCalledThatWhereverItIsMet) {
  database_.reset();
  const std::string disk = folder_.File("disk");
  const auto met = test::OnSmallDisk(disk, 512 << 10, [&] {
    int told = 0;
    bool opened = false;
    for (std::size_t pages = 0; pages < 100 && !opened; ++pages) {
      Spill(disk + "/filler", std::string((127 - pages) * 4096, 'x'));
      const SmsDatabase database(disk, texts_, clock_);
      opened = database.IsUsable();
      if (opened) break;
      ASSERT_NE(database.Problem().find("The disk is full"), std::string::npos)
          << pages << " pages: " << database.Problem();
      ++told;
    }
    EXPECT_TRUE(opened && told > 3) << told;
  });
  if (!met) GTEST_SKIP() << "no disk can be made here";
  EXPECT_TRUE(*met);
}

TEST_F(DurabilityTest, TransactionsNestAndTheOutermostDecides) {
  {
    SmsDatabase::Transaction given_up(db());
    Add("+1");
    {
      SmsDatabase::Transaction inner(db());
      Add("+1");
      inner.Commit();
    }
    EXPECT_EQ(db().CountSms(), 2);
  }
  EXPECT_EQ(db().CountSms(), 0);
  {
    SmsDatabase::Transaction outer(db());
    Add("+1");
    { SmsDatabase::Transaction inner_given_up(db()); }
    EXPECT_THROW(Add("+1"), StoreError);
    EXPECT_THROW(outer.Commit(), StoreError);
  }
  EXPECT_EQ(db().CountSms(), 0);
  {
    SmsDatabase::Transaction outer(db());
    EXPECT_EQ(Add("+1"), 1);
    db().Commit();  // nothing yet
    outer.Commit();
    Add("+1");
  }
  EXPECT_THAT(Ids(), ElementsAre(1, 2));
}

TEST_F(DurabilityTest, ThreadsWriteAndReadAtOnce) {
  constexpr int kThreads = 4;
  constexpr int kEach = 60;
  std::barrier start(kThreads);
  const auto work = [&](int number) {
    start.arrive_and_wait();
    for (int i = 0; i < kEach; ++i) {
      const auto id = Add("+" + std::to_string(number));
      EXPECT_TRUE(db().SetSmsStatus(id, SmsStatus::kProcessing));
      EXPECT_EQ(StatusOf(id), SmsStatus::kProcessing);
      if (i % 20 == 0) {
        SmsDatabase::Transaction group(db());
        AddPerson("X", {1});
        db().SetSmsStatus(id, SmsStatus::kSent);
        group.Commit();
      }
      if (number == 0 && i % 10 == 0) db().Commit();
    }
  };
  for (int round = 0; round < 2; ++round) {  // the second takes over the connections of the first
    std::vector<std::thread> threads;
    for (int number = 1; number < kThreads; ++number) threads.emplace_back(work, number);
    work(0);
    for (auto& thread : threads) thread.join();
  }
  EXPECT_EQ(db().CountSms(), 2 * kThreads * kEach);
  EXPECT_EQ(db().MemberCount(1), 2 * kThreads * kEach / 20);
  Reopen();
  EXPECT_EQ(db().CountSms(), 2 * kThreads * kEach);
}

TEST_F(DurabilityTest, AThreadMayOutliveADatabase) {
  std::latch used(1);
  std::latch closed(1);
  std::thread thread([&] {
    Add("+1");
    used.count_down();
    closed.wait();
    EXPECT_EQ(Add("+2"), 2);  // at the same place, a database opened anew
  });
  used.wait();
  Reopen();
  closed.count_down();
  thread.join();
  EXPECT_EQ(db().CountSms(), 2);
}

TEST_F(DurabilityTest, AReadSeesOneMomentAndMayNest) {
  for (int i = 0; i < 3; ++i) Add("+1");
  int inner = 0;
  db().ForEachSms([&](const MessageRow& row) {
    if (row.id == 1) std::thread([this] { Add("+2"); }).join();
    inner += static_cast<int>(db().AllSms().size());  // the same statement twice at once
    return row.id < 2;
  });
  EXPECT_EQ(inner, 6);
  EXPECT_EQ(db().CountSms(), 4);
}

}  // namespace
}  // namespace orvalo::test
