#include "platform/worker_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/fake_clock.h"

namespace orvalo::platform {
namespace {

using test::FakeClock;

constexpr std::int64_t kForever = std::numeric_limits<std::int64_t>::max();

class WorkerThreadTest : public testing::Test {
 protected:
  // Runs `body` on the worker to its end.
  void RunToEnd(std::function<void()> body) {
    ASSERT_TRUE(worker_.Start(std::move(body)));
    ASSERT_TRUE(worker_.WaitForEnd(kForever));
    EXPECT_FALSE(worker_.IsRunning());
  }

  FakeClock clock_;
  WorkerThread worker_{clock_};
};

TEST_F(WorkerThreadTest, RunsCallsInOrderOnItsOwnThreadUnlocked) {
  std::string order;
  std::thread::id here, there;
  const auto call = [&](char letter) {
    return worker_.QueueCall([&, letter] {
      order += letter;
      there = std::this_thread::get_id();
      EXPECT_TRUE(worker_.IsRunning());  // would block if the lock were held
      if (letter == 'b') {
        EXPECT_TRUE(worker_.QueueCall([&] { order += 'e'; }));
      }
    });
  };
  std::vector<WaitResult> results;
  std::promise<void> first_done;
  ASSERT_TRUE(worker_.Start([&] {
    here = std::this_thread::get_id();
    EXPECT_TRUE(call('a'));  // before the wait begins
    EXPECT_TRUE(call('b'));
    results.push_back(worker_.WaitAlertable(0));
    EXPECT_EQ(order, "abe");
    first_done.set_value();
    results.push_back(worker_.WaitAlertable(60'000));
    results.push_back(worker_.WaitAlertable(-1));
  }));
  first_done.get_future().wait();
  EXPECT_TRUE(clock_.AwaitWaiters(1));
  EXPECT_TRUE(call('c'));  // while it waits
  EXPECT_TRUE(worker_.WaitForEnd(kForever));
  EXPECT_EQ(order, "abec");
  EXPECT_EQ(here, there);
  EXPECT_NE(here, std::this_thread::get_id());
  EXPECT_EQ(results,
            (std::vector{WaitResult::kCallsRan, WaitResult::kCallsRan, WaitResult::kTimedOut}));
}

TEST_F(WorkerThreadTest, TheEventWinsOverCallsAndStays) {
  bool ran = false;
  RunToEnd([&] {
    worker_.QueueCall([&] { ran = true; });
    worker_.Signal();
    EXPECT_EQ(worker_.WaitAlertable(60'000), WaitResult::kEvent);
    EXPECT_EQ(worker_.WaitAlertable(60'000), WaitResult::kEvent);
  });
  EXPECT_FALSE(ran);
  EXPECT_FALSE(worker_.QueueCall([&] { ran = true; }));
  RunToEnd([&] { EXPECT_EQ(worker_.WaitAlertable(kForever), WaitResult::kEvent); });
}

TEST_F(WorkerThreadTest, WaitsAsLongAsTheClockSays) {
  std::promise<WaitResult> first, second, third;
  ASSERT_TRUE(worker_.Start([&] {
    first.set_value(worker_.WaitAlertable(60'000));
    second.set_value(worker_.WaitAlertable(60'000));
    third.set_value(worker_.WaitAlertable(kForever));
  }));
  EXPECT_TRUE(clock_.AwaitWaiters(1));
  clock_.Advance(59'999);
  EXPECT_TRUE(worker_.QueueCall([] {}));
  EXPECT_EQ(first.get_future().get(), WaitResult::kCallsRan);
  EXPECT_TRUE(clock_.AwaitWaiters(1));
  clock_.Advance(60'000);
  EXPECT_EQ(second.get_future().get(), WaitResult::kTimedOut);
  worker_.Signal();
  EXPECT_EQ(third.get_future().get(), WaitResult::kEvent);
  EXPECT_TRUE(worker_.WaitForEnd(kForever));
}

TEST_F(WorkerThreadTest, AnExceptionReachesTheBodyAndCostsNoOtherCall) {
  std::string ran, caught;
  RunToEnd([&] {
    worker_.QueueCall([&] { ran += 'a'; });
    worker_.QueueCall([] { throw std::runtime_error("broken call"); });
    worker_.QueueCall([&] { ran += 'b'; });
    try {
      worker_.WaitAlertable(0);
    } catch (const std::runtime_error& error) {
      caught = error.what();
    }
    EXPECT_EQ(ran, "a");
    EXPECT_EQ(worker_.WaitAlertable(0), WaitResult::kCallsRan);
  });
  EXPECT_EQ(caught, "broken call");
  EXPECT_EQ(ran, "ab");
}

TEST_F(WorkerThreadTest, EveryCallTakenRunsOrStaysQueued) {
  std::atomic<int> taken = 0;
  int ran = 0;  // on the worker only
  bool stop = false;
  const auto body = [&] {
    while (!stop && worker_.WaitAlertable(60'000) == WaitResult::kCallsRan) {
    }
  };
  ASSERT_TRUE(worker_.Start(body));
  EXPECT_FALSE(worker_.Start(body)) << "one runs already";
  std::vector<std::thread> callers;
  callers.reserve(3);
  for (int caller = 0; caller < 3; ++caller) {
    callers.emplace_back([&, caller] {
      for (int i = 0; i < 2000; ++i) {
        if (worker_.QueueCall([&] { ++ran; })) ++taken;
        if (caller == 0 && i == 1000) worker_.QueueCall([&] { stop = true; });
      }
    });
  }
  for (auto& caller : callers) caller.join();
  ASSERT_TRUE(worker_.WaitForEnd(kForever));
  EXPECT_FALSE(worker_.QueueCall([&] { ++ran; }));
  RunToEnd([&] { worker_.WaitAlertable(0); });
  EXPECT_EQ(ran, taken);
}

TEST_F(WorkerThreadTest, WaitForEndGivesUpWhenTheClockSays) {
  EXPECT_TRUE(worker_.WaitForEnd(0)) << "never begun";
  ASSERT_TRUE(worker_.Start([&] { worker_.WaitAlertable(kForever); }));
  EXPECT_FALSE(worker_.WaitForEnd(0));
  std::thread mover([&] {
    EXPECT_TRUE(clock_.AwaitWaiters(2));
    clock_.Advance(10'000);
  });
  EXPECT_FALSE(worker_.WaitForEnd(10'000));
  mover.join();
  EXPECT_TRUE(worker_.IsRunning());
  worker_.Signal();
  EXPECT_TRUE(worker_.WaitForEnd(10'000));
  EXPECT_TRUE(worker_.WaitForEnd(0));
}

TEST(WorkerThreadEndTest, DestructionEndsTheBodyAndDropsWhatItDidNotRun) {
  FakeClock clock;
  const auto held = std::make_shared<int>();
  bool ended = false;
  {
    WorkerThread worker(clock);
    ASSERT_TRUE(worker.Start([&, in_body = held] {
      EXPECT_EQ(worker.WaitAlertable(kForever), WaitResult::kEvent);
      ended = worker.QueueCall([in_call = held] { FAIL() << "behind the event"; });
    }));
  }
  EXPECT_TRUE(ended);
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace orvalo::platform
