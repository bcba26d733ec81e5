#pragma once
#include <cstdint>
#include <string>

#include "gateway/account.h"
#include "gateway/send_engine.h"

namespace orvalo {

// What the compose page needs of the gateway side. Main thread.
class ComposeServices {
 public:
  virtual ~ComposeServices() = default;
  virtual std::int32_t QueueMessage(const QueuedMessage& message) = 0;  // see SendEngine
  virtual void QueryBalance() = 0;  // asks the gateway; the answer is in the settings
  virtual std::string BalanceText() const = 0;
  virtual std::string BalanceHint() const = 0;  // about it; usually empty
};

// The process's own engine and account.
class EngineServices : public ComposeServices {
 public:
  EngineServices(SendEngine& engine, Account& account) : engine_(engine), account_(account) {}

  std::int32_t QueueMessage(const QueuedMessage& message) override {
    return engine_.QueueMessage(message);
  }
  void QueryBalance() override { account_.QueryBalanceTenths(); }
  std::string BalanceText() const override { return account_.BalanceText(); }
  std::string BalanceHint() const override { return account_.BalanceHint(); }

 private:
  SendEngine& engine_;
  Account& account_;
};

}  // namespace orvalo
