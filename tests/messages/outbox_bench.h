#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "app/settings.h"
#include "app/texts.h"
#include "messages/message_texts.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// A store in a temporary folder and what the outbox's parts need beside it.
struct OutboxBench {
  TemporaryFolder folder;
  FakeClock clock;
  AppSettings settings;
  Texts texts;
  SmsStatusNames status_names;
  MessageTypeNames type_names;
  ScriptedMessageBoxes boxes;
  SmsDatabase database{folder.path(), texts, clock};
  MessageTexts fields{database, settings, texts, status_names, type_names, clock};

  std::int32_t Add(std::int32_t time, const std::string& to, const std::string& msg,
                   SmsStatus status = SmsStatus::kPending, MessageType type = MessageType::kText) {
    NewSms sms;
    sms.time = time;
    sms.to = to;
    sms.msg = msg;
    sms.status = status;
    sms.type = static_cast<std::int32_t>(type);
    sms.charge = "?";
    return database.AddSms(sms);
  }
};

}  // namespace orvalo::test
