#include "gateway/send_engine.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/account.h"
#include "gateway/gateway_client.h"
#include "platform/clock.h"
#include "store/sms_database.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr std::int64_t kWake = 60'000;  // milliseconds
constexpr int kWakesToKeepAlive = 4;
constexpr std::int64_t kStartWait = 100;
constexpr std::int64_t kHandOverWait = 1;
constexpr std::int64_t kEndWait = 10'000;
constexpr std::int32_t kDay = 86'400;  // seconds
constexpr int kMostDaysAhead = 7;
constexpr int kOneUnansweredTextId = 2336;
constexpr int kUnansweredTextId = 2337;
constexpr int kNotAskedTextId = 2338;

}  // namespace

void TellStoreRefusal(const EngineParts& parts, const std::exception& problem) {
  if (const auto* refusal = dynamic_cast<const StoreError*>(&problem))
    parts.notices.StoreRefused(refusal->InWords(parts.texts));
}

SendEngine::SendEngine(const EngineParts& parts, AppSettings& settings, Account& account)
    : parts_(parts),
      settings_(settings),
      account_(account),
      send_pass_(parts_, pass_lock_),
      status_pass_(parts_, pass_lock_),
      worker_(parts.clock) {}

SendEngine::~SendEngine() { RequestStop(nullptr); }

bool SendEngine::StartEngine() {
  if (!worker_.Start([this] { WorkerLoop(); })) return false;
  parts_.clock.Sleep(kStartWait);
  if (settings_.Flag(FlagSetting::kWorkingOnLine)) Hand({RequestKind::kSendOne, kEveryMessage, {}});
  return true;
}

std::int32_t SendEngine::QueueMessage(const QueuedMessage& message) {
  NewSms sms;
  sms.status = message.status;
  sms.time = message.time;
  sms.type = message.type;
  sms.ref_id = message.ref_id;
  sms.to = message.to;
  sms.msg = message.text;
  sms.sender_id = message.sender_id ? *message.sender_id : settings_.Text(TextSetting::kSenderId);
  sms.delay = message.delay;
  sms.charge = "?";
  const std::int32_t id = parts_.database.AddSms(sms);
  if (settings_.Flag(FlagSetting::kWorkingOnLine) && message.status == SmsStatus::kPending) {
    Hand({RequestKind::kSendOne, id, {}});
  }
  return id;
}

void SendEngine::RequestSend(IdList list) {
  if (settings_.Flag(FlagSetting::kWorkingOnLine))
    Hand({RequestKind::kSendList, kEveryMessage, std::move(list)});
}

void SendEngine::RequestQuery(IdList list) {
  if (settings_.Flag(FlagSetting::kWorkingOnLine))
    Hand({RequestKind::kQueryList, kEveryMessage, std::move(list)});
}

void SendEngine::RequestStop(platform::Mailbox* notify) {
  notify_ = notify;
  parts_.notices.RequestStop();
  worker_.Signal();
}

bool SendEngine::WaitForEnd() {
  worker_.Signal();
  return worker_.WaitForEnd(kEndWait);
}

// A request that finds no worker is dropped: its rows are Pending in the store, and the next run's
// worker takes them.
void SendEngine::Hand(EngineRequest request) {
  worker_.QueueCall(
      [this, request = std::move(request)]() mutable { requests_.push_back(std::move(request)); });
  parts_.clock.Sleep(kHandOverWait);
}

void SendEngine::WorkerLoop() {
  // The wall clock may be set back or forth meanwhile; the minute is not.
  std::int64_t deadline = parts_.clock.Tick() + kWake;
  for (;;) {
    const std::int64_t wait = std::max<std::int64_t>(deadline - parts_.clock.Tick(), 0);
    const platform::WaitResult woken = worker_.WaitAlertable(wait);
    if (woken == platform::WaitResult::kEvent) break;
    if (woken == platform::WaitResult::kTimedOut) {
      RunTimedWork();
      deadline = parts_.clock.Tick() + kWake;
    } else {
      RunRequests();
    }
    if (parts_.notices.Stopping()) break;
  }
  send_pass_.Finish();
  platform::Mailbox* notify = notify_;
  if (parts_.notices.Stopping() && notify != nullptr) notify->Post(platform::kWmQuit, 0, 0);
}

void SendEngine::RunTimedWork() {
  parts_.notices.ToMainWindow(kWmBusy);
  PromoteDueMessages();
  send_pass_.SendQueuedSMSs(kEveryMessage);
  status_pass_.QueryMessageStatus(kEveryMessage);
  if (++timed_wakes_ == kWakesToKeepAlive) {
    KeepAlive();
    timed_wakes_ = 0;
  }
  parts_.notices.StoreRoundEnds();
  parts_.notices.ToMainWindow(kWmIdle);
}

void SendEngine::RunRequests() {
  parts_.notices.ToMainWindow(kWmBusy);
  while (!requests_.empty()) {
    const EngineRequest request = std::move(requests_.front());
    requests_.pop_front();
    RunRequest(request);
  }
  parts_.notices.ToMainWindow(kWmIdle);
}

void SendEngine::RunRequest(const EngineRequest& request) {
  switch (request.kind) {
    case RequestKind::kSendOne:
      if (request.id == kEveryMessage) send_pass_.TryAgain();
      send_pass_.SendQueuedSMSs(request.id);
      break;
    case RequestKind::kSendList:
      send_pass_.TryAgain();
      for (const std::int32_t id : request.list.ids) send_pass_.SendQueuedSMSs(id);
      if (request.list.go_offline) parts_.notices.GoOffline();
      break;
    case RequestKind::kQueryOne:
      status_pass_.QueryMessageStatus(request.id);
      break;
    case RequestKind::kQueryList:
      QueryList(request.list.ids);
      break;
  }
}

// The operator has asked, and is told what the gateway did not. Where one failure is that of every
// further question, none is put.
void SendEngine::QueryList(const std::vector<std::int32_t>& ids) {
  status_pass_.ForgetUnanswered();
  const StatusPass::Unanswered& unanswered = status_pass_.unanswered();
  std::int32_t messages = 0;
  for (const std::int32_t id : ids) {
    const std::int32_t before = unanswered.count;
    status_pass_.QueryMessageStatus(id);
    if (unanswered.count > before) ++messages;
    if (ConcernsEveryCall(unanswered.last.code)) break;
  }
  if (messages == 0) return;
  const Texts& texts = parts_.texts;
  const std::string why =
      FailureText(unanswered.last, texts, settings_.Text(TextSetting::kComBaseUrl));
  const auto text = ConcernsEveryCall(unanswered.last.code) ? texts.Format(kNotAskedTextId, {why})
                    : messages == 1 ? texts.Format(kOneUnansweredTextId, {why})
                                    : texts.Format(kUnansweredTextId, {messages, why});
  parts_.notices.QueryFailed(text.value_or(why));
}

void SendEngine::PromoteDueMessages() {
  parts_.notices.ToMainWindow(kWmPromoting);
  try {
    const std::int64_t now = parts_.clock.Now();
    Promote(SmsStatus::kScheduled, 0, now);
    for (int days = 1; days <= kMostDaysAhead; ++days) {
      Promote(SmsStatus::kDelayScheduled, days * kDay, now + days * kDay);
    }
  } catch (const std::exception& problem) {  // the rows stay scheduled; the next wake tries again
    TellStoreRefusal(parts_, problem);
    if (parts_.log.Enabled())
      parts_.log.Write("Promotion of scheduled messages failed: %s", problem.what());
  }
}

void SendEngine::Promote(SmsStatus status, std::int32_t delay, std::int64_t until) {
  const auto due = parts_.database.DueSms(status, delay, until);
  if (due.empty()) return;
  SmsDatabase::Transaction transaction(parts_.database);
  for (auto id = due.rbegin(); id != due.rend(); ++id)  // one may be open for editing by now
    parts_.database.ChangeStatus(*id, status, SmsStatus::kPending);
  transaction.Commit();
}

void SendEngine::KeepAlive() {
  if (!settings_.Flag(FlagSetting::kWorkingOnLine)) return;
  std::u16string reply;
  parts_.gateway.Ping(&reply);
  // Nobody answers: that is no reason to go offline. What waits is tried again by and by.
  const auto unanswered = [](std::int32_t code) {
    return code != kNoSession && IsUnanswered(code);
  };
  const std::int32_t code = parts_.gateway.LastError();
  if (code == kGatewayOk || unanswered(code)) return;
  if (account_.LoginToGateway(settings_.Text(TextSetting::kLogin),
                              settings_.Text(TextSetting::kPassword)) ||
      unanswered(parts_.gateway.LastError()))
    return;
  if (!parts_.notices.Stopping()) parts_.notices.GoOffline();
  settings_.SetFlag(FlagSetting::kWorkingOnLine, false);
  parts_.notices.Offline();
}

}  // namespace orvalo
