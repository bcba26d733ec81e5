#pragma once
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/log_file.h"
#include "app/texts.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

class RecordingLog : public Log {
 public:
  bool Enabled() const override { return enabled; }
  std::vector<std::string> lines;
  bool enabled = true;

 protected:
  void WriteLine(const char* message, std::size_t length) override {
    lines.emplace_back(message, length);
  }
};

// All columns of a row, in their order; the last two only where they say something.
inline std::string Line(const MessageRow& row) {
  std::string line;
  for (const auto number : {row.id, row.time, row.stat, row.type, row.ref_id}) {
    line += std::to_string(number) + "|";
  }
  line += row.to + "|" + row.to_info + "|" + row.msg + "|" + row.api_msg_id + "|" +
          std::to_string(row.saved_stat) + "|" + row.sender_id + "|";
  for (const auto number : {row.delay, row.query_time, row.stat_qry_tm}) {
    line += std::to_string(number) + "|";
  }
  line += row.charge;
  for (const std::string& text : {row.number, row.reason}) line += text.empty() ? "" : "|" + text;
  return line;
}

// A database in a folder of its own, which can be closed and opened again.
class StoreTest : public testing::Test {
 protected:
  StoreTest() { Reopen(); }

  void Reopen(bool read_only = false) {
    database_.reset();
    database_ = std::make_unique<SmsDatabase>(folder_.path(), texts_, clock_, read_only);
  }
  SmsDatabase& db() { return *database_; }
  std::string Path() const { return folder_.File("SMS.db"); }

  std::int32_t Add(std::string to, SmsStatus status = SmsStatus::kPending) {
    NewSms sms;
    sms.to = std::move(to);
    sms.msg = "Hello";
    sms.status = status;
    return database_->AddSms(sms);
  }
  std::string LineOf(std::int32_t id) { return Line(database_->GetSms(id).value()); }
  SmsStatus StatusOf(std::int32_t id) {
    const auto row = database_->GetSms(id);
    return static_cast<SmsStatus>(row ? row->stat : -1);
  }
  std::int32_t AddPerson(std::string name, std::vector<std::int32_t> groups = {}) {
    ContactRecord contact;
    contact.name = std::move(name);
    contact.surname = "Doe";
    contact.group_ids = std::move(groups);
    return database_->AddContact(contact);
  }

  TemporaryFolder folder_;
  FakeClock clock_;
  Texts texts_;
  std::unique_ptr<SmsDatabase> database_;
};

}  // namespace orvalo::test
