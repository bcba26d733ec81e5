#include "client_stack.h"

#include <cstdio>
#include <stdexcept>

#include "component/register_component.h"
#include "platform/code_page.h"

namespace orvalo::bench {

void ClientStack::BurstCounter::Post(std::uint32_t message, std::int32_t, std::int32_t) {
  if (message != kWmIdle) return;
  std::lock_guard guard(mutex_);
  ++ended_;
  changed_.notify_all();
}

int ClientStack::BurstCounter::Count() {
  std::lock_guard guard(mutex_);
  return ended_;
}

void ClientStack::BurstCounter::AwaitMoreThan(int count) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return ended_ > count; });
}

platform::BoxAnswer ClientStack::NoBoxes::Show(const std::string& text, const std::string&,
                                               platform::BoxIcon, platform::BoxButtons) {
  std::fprintf(stderr, "%s\n", text.c_str());
  return platform::BoxAnswer::kAccepted;
}

platform::BoxAnswer ClientStack::NoBoxes::ShowLink(const std::string& text, const std::string&,
                                                   const std::string&) {
  std::fprintf(stderr, "%s\n", text.c_str());
  return platform::BoxAnswer::kAccepted;
}

ClientStack::ClientStack(const std::string& folder, const std::string& gateway_url)
    : database_(folder, texts_, clock_), log_(folder + "/SMS.log", settings_, clock_) {
  component::RegisterComponent(registry_);
  database_.AttachLog(&log_);
  gateway_ = std::make_unique<GatewayClient>(registry_);
  std::u16string reply;
  gateway_->SetBaseUrl(platform::ToWide(gateway_url), &reply);
  account_ = std::make_unique<Account>(settings_, *gateway_, texts_, boxes_);
  if (!account_->LoginToGateway("bench", "bench"))
    throw std::runtime_error("the client could not log in");
  notices_.SetMainWindow(&bursts_);
  engine_ = std::make_unique<SendEngine>(
      EngineParts{settings_, database_, log_, texts_, *gateway_, boxes_, clock_, notices_},
      settings_, *account_);
  const int before = bursts_.Count();
  if (!engine_->StartEngine()) throw std::runtime_error("the worker did not start");
  bursts_.AwaitMoreThan(before);
}

ClientStack::~ClientStack() {
  engine_->RequestStop(nullptr);
  engine_->WaitForEnd();
}

std::int32_t ClientStack::SendAndWait(const QueuedMessage& message) {
  const int before = bursts_.Count();
  const std::int32_t id = engine_->QueueMessage(message);
  bursts_.AwaitMoreThan(before);
  return id;
}

void ClientStack::QueryAndWait() {
  const int before = bursts_.Count();
  engine_->RequestQuery({false, {kEveryMessage}});
  bursts_.AwaitMoreThan(before);
}

}  // namespace orvalo::bench
