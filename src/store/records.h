#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/message_type.h"
#include "store/sms_status.h"

namespace orvalo {

// One row of the table SMS; the members are its columns. Times are seconds since 1970-01-01 UTC.
// `stat` and `type` are SmsStatus and MessageType values, kept as numbers because a file may hold
// others.
struct MessageRow {
  std::int32_t id = 0;
  std::int32_t time = 0;
  std::int32_t stat = 0;
  std::int32_t type = 0;
  std::int32_t ref_id = 0;  // the message this one was made from; its own id otherwise
  std::string
      to;  // recipient string: a comma before every item; an item is a number or "A" + contact id
  std::string to_info;          // display text made from `to`
  std::string msg;              // text, or upper-case hexadecimal of a file's bytes
  std::string api_msg_id;       // ",ID: <gateway id>", repeated; see gateway/gateway_ids.h
  std::int32_t saved_stat = 0;  // status while the row is being edited
  std::string sender_id;
  std::int32_t delay =
      0;  // scheduling value: 0, or the seconds before `time` at which to hand it over
  std::int32_t query_time = 0;   // current status query interval in seconds; 0: not followed
  std::int32_t stat_qry_tm = 0;  // when the next status query is due
  std::string charge;            // as the gateway gives it; "?" until then
  std::string number;  // where it went, as it was then: numbers joined by commas; empty until then
  std::string reason;  // why the gateway refused it, "301: Insufficient credit"; else empty
};

// A new message: what AddSms takes.
struct NewSms {
  SmsStatus status = SmsStatus::kPending;
  std::int32_t time = 0;  // 0: now
  std::int32_t type = 0;
  std::int32_t ref_id = 0;  // 0: the new row's own id
  std::string to;
  std::string msg;
  std::string sender_id;
  std::int32_t delay = 0;
  std::string charge;
  std::string number = {};
};

// Widths of a contact's texts in characters. Longer texts are cut when they are stored.
inline constexpr std::size_t kContactNameWidth = 32;
inline constexpr std::size_t kContactSurnameWidth = 32;
inline constexpr std::size_t kContactTitleWidth = 8;
inline constexpr std::size_t kContactCustomWidth = 32;
inline constexpr std::size_t kContactMobileWidth = 16;

// A contact's texts and the groups it is to belong to.
struct ContactRecord {
  std::string name;
  std::string surname;
  std::string title;
  std::string custom;
  std::string mobile;
  std::vector<std::int32_t> group_ids;
};

// One row of the table CONTACTS.
struct ContactRow {
  std::int32_t cid = 0;
  std::string name, surname, title, custom, mobile;
};

// A contact that is visited where it lies; its texts are valid during the visit only.
struct ContactView {
  std::int32_t cid = 0;
  std::string_view name, surname, title, custom, mobile;
};

// One row of the table "GROUP".
struct GroupRow {
  std::int32_t gid = 0;
  std::string name;
};

}  // namespace orvalo
