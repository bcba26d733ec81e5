#pragma once
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/account.h"
#include "gateway/gateway_client.h"
#include "gateway/send_engine.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/message_box.h"
#include "store/sms_database.h"

namespace orvalo::bench {

// The system's clock, which a benchmark may set forward so that status queries fall due.
class ForwardClock : public platform::Clock {
 public:
  std::int64_t Now() const override { return platform::SystemClock().Now() + ahead_; }
  std::int64_t Tick() const override { return platform::SystemClock().Tick(); }
  platform::LocalTime ToLocal(std::int64_t seconds) const override {
    return platform::SystemClock().ToLocal(seconds);
  }
  void Sleep(std::int64_t milliseconds) override { platform::SystemClock().Sleep(milliseconds); }
  bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                 std::int64_t tick, const std::function<bool()>& ready) override {
    return platform::SystemClock().WaitUntil(lock, condition, tick, ready);
  }
  void Forward(std::int64_t seconds) { ahead_ += seconds; }

 private:
  std::atomic<std::int64_t> ahead_ = 0;
};

// The client as it is shipped, without a face: real store, real worker, real component, logged in
// at a gateway service.
class ClientStack {
 public:
  ClientStack(const std::string& folder,
              const std::string& gateway_url);  // throws when it cannot log in
  ~ClientStack();
  ClientStack(const ClientStack&) = delete;
  ClientStack& operator=(const ClientStack&) = delete;

  SmsDatabase& database() { return database_; }
  ForwardClock& clock() { return clock_; }

  // Queues the message and returns when the worker is done with it. Its id.
  std::int32_t SendAndWait(const QueuedMessage& message);
  // One status pass over all rows that are due.
  void QueryAndWait();

 private:
  class BurstCounter : public platform::Mailbox {
   public:
    void Post(std::uint32_t message, std::int32_t, std::int32_t) override;
    int Count();
    void AwaitMoreThan(int count);

   private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int ended_ = 0;
  };
  class NoBoxes : public platform::MessageBoxes {
   public:
    platform::BoxAnswer Show(const std::string& text, const std::string&, platform::BoxIcon,
                             platform::BoxButtons) override;
    platform::BoxAnswer ShowLink(const std::string& text, const std::string&,
                                 const std::string&) override;
  };

  ForwardClock clock_;
  AppSettings settings_;
  Texts texts_;
  NoBoxes boxes_;
  platform::ClassRegistry registry_;
  SmsDatabase database_;
  LogFile log_;
  EngineNotices notices_;
  BurstCounter bursts_;
  std::unique_ptr<GatewayClient> gateway_;
  std::unique_ptr<Account> account_;
  std::unique_ptr<SendEngine> engine_;
};

}  // namespace orvalo::bench
