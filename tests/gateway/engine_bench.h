#pragma once
#include <cstdarg>
#include <string>
#include <vector>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/account.h"
#include "gateway/engine_notices.h"
#include "gateway/engine_parts.h"
#include "gateway/gateway_client.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"
#include "support/fake_component.h"
#include "support/recording_mailbox.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// Log lines kept in memory.
class RecordingLog : public Log {
 public:
  bool Enabled() const override { return true; }
  std::vector<std::string> Lines() const {
    std::lock_guard guard(mutex_);
    return lines_;
  }

 protected:
  void WriteLine(const char* message, std::size_t length) override {
    std::lock_guard guard(mutex_);
    lines_.emplace_back(message, length);
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

class RecordingOutbox : public OutboxView {
 public:
  void MessageInHand(std::int32_t id) override {
    std::lock_guard guard(mutex_);
    ids_.push_back(id);
  }
  std::vector<std::int32_t> ids() const {
    std::lock_guard guard(mutex_);
    return ids_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::int32_t> ids_;
};

// Everything an engine or one of its passes needs: a real store in a temporary folder, a scripted
// gateway, a clock that stands still.
struct EngineBench {
  TemporaryFolder folder;
  FakeClock clock;
  AppSettings settings;
  Texts texts;
  RecordingLog log;
  ScriptedMessageBoxes boxes;
  FakeGateway fake;
  platform::ClassRegistry registry;
  SmsDatabase database{folder.path(), texts, clock};
  RecordingMailbox window, options;
  RecordingOutbox outbox;
  EngineNotices notices;
  std::unique_ptr<GatewayClient> gateway;
  std::unique_ptr<Account> account;

  // `reasons`: the component tells them apart from its replies; `keys`: it keeps them.
  explicit EngineBench(bool reasons = false, bool keys = false) {
    if (reasons) fake.TellReasons();
    if (keys) fake.KeepKeys();
    fake.Register(registry);
    gateway = std::make_unique<GatewayClient>(registry);
    account = std::make_unique<Account>(settings, *gateway, texts, boxes, &log);
    notices.SetMainWindow(&window);
    notices.SetOptionsPage(&options);
    notices.SetOutboxView(&outbox);
    fake.On("SendMsg",
            [this](const FakeGateway::Call&) { return FakeGateway::Answer{"ID: " + NextId()}; });
  }

  EngineParts parts() { return {settings, database, log, texts, *gateway, boxes, clock, notices}; }

  std::string NextId() {
    std::string id = std::to_string(++last_id_);
    return std::string(32 - id.size(), '0') + id;
  }

  std::int32_t Add(const std::string& to, const std::string& msg = "Hello",
                   MessageType type = MessageType::kText, SmsStatus status = SmsStatus::kPending) {
    NewSms sms;
    sms.status = status;
    sms.type = static_cast<std::int32_t>(type);
    sms.to = to;
    sms.msg = msg;
    sms.sender_id = "Orvalo";
    sms.charge = "?";
    return database.AddSms(sms);
  }
  std::int32_t AddContact(const std::string& name, const std::string& mobile) {
    return database.AddContact({name, "S" + name, "Dr", "blue", mobile, {1}});
  }
  SmsStatus StatusOf(std::int32_t id) {
    return static_cast<SmsStatus>(database.GetSms(id).value().stat);
  }
  // The rows made from a message, in order of id, the message itself left out.
  std::vector<MessageRow> ChildrenOf(std::int32_t id) {
    std::vector<MessageRow> children;
    for (const MessageRow& row : database.AllSms()) {
      if (row.ref_id == id && row.id != id) children.push_back(row);
    }
    return children;
  }

 private:
  int last_id_ = 0;
};

}  // namespace orvalo::test
