#pragma once
#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include "gateway/engine_notices.h"
#include "gateway/engine_parts.h"
#include "gateway/engine_requests.h"
#include "gateway/send_pass.h"
#include "gateway/status_pass.h"
#include "platform/worker_thread.h"
#include "store/sms_status.h"

namespace orvalo {

class Account;
class AppSettings;

// A message as the compose side hands it over. The charge "?" is added by the engine.
struct QueuedMessage {
  SmsStatus status = SmsStatus::kPending;
  std::int32_t time = 0;  // 0: now
  std::int32_t type = 0;
  std::int32_t ref_id = 0;  // 0: its own
  std::string to;
  std::string text;
  std::int32_t delay = 0;
  std::optional<std::string> sender_id = {};  // none: as the settings say now
};

// The worker that moves messages between the store and the gateway: every 60 seconds, and at once
// on request, it makes due scheduled messages Pending, sends the Pending ones, follows the sent
// ones, and every fourth minute sees to it that the login still holds.
//
// One object for the process, owned by start-up. The entry points belong to the main thread. Work
// reaches the worker only as queued procedure calls; the worker answers only through EngineNotices.
// Everything in EngineParts, the account included, must outlive this object; its destructor waits
// for the message in hand.
class SendEngine : public EngineCommands {
 public:
  SendEngine(const EngineParts& parts, AppSettings& settings, Account& account);
  ~SendEngine() override;
  SendEngine(const SendEngine&) = delete;
  SendEngine& operator=(const SendEngine&) = delete;

  // Starts the worker and, online, asks it for every Pending message: after the login, without
  // which the gateway refuses them all. False when no thread could be made.
  bool StartEngine();

  // Adds the message's row and, online and Pending, asks the worker to send it at once. The new id.
  // Throws StoreError when the row cannot be written: nothing is then queued.
  std::int32_t QueueMessage(const QueuedMessage& message);

  void RequestSend(IdList list) override;
  void RequestQuery(IdList list) override;

  // Asks the worker to end after the row in hand; `notify` (may be null) gets kWmQuit as the
  // worker's last act.
  void RequestStop(platform::Mailbox* notify);

  // Wakes the worker and waits for its end, at most 10 seconds. True when it has ended (or was
  // never started).
  bool WaitForEnd();

  bool IsRunning() const { return worker_.IsRunning(); }

 private:
  void Hand(EngineRequest request);
  void WorkerLoop();
  void RunTimedWork();
  void RunRequests();
  void RunRequest(const EngineRequest& request);
  void QueryList(const std::vector<std::int32_t>& ids);
  void PromoteDueMessages();
  void Promote(SmsStatus status, std::int32_t delay, std::int64_t until);
  void KeepAlive();

  EngineParts parts_;
  AppSettings& settings_;
  Account& account_;
  std::mutex pass_lock_;  // a send pass and a status pass never overlap
  SendPass send_pass_;
  StatusPass status_pass_;
  std::deque<EngineRequest> requests_;  // touched on the worker only
  int timed_wakes_ = 0;                 // since the last keep-alive
  std::atomic<platform::Mailbox*> notify_ = nullptr;
  platform::WorkerThread worker_;  // last: ends before what it uses
};

}  // namespace orvalo
