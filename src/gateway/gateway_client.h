#pragma once
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "gateway/gateway_failure.h"
#include "gateway/member_table.h"
#include "platform/automation.h"

namespace orvalo {

// The program's only road to the gateway component "SMS_COMAPI.SMS": one operation for each of its
// members, called by name. It knows nothing of messages or settings; whoever calls it reads
// ErrorCode afterwards and interprets it.
//
// What goes beyond the component's usual members is found by name as well; where a component lacks
// it, the client does without.
//
// One instance for the process, owned by start-up, called from the main thread and from the worker
// without a lock of its own: the component copes with both, and keeps the error code of each
// calling thread apart.
//
// Results are the component's 32-bit call results; negative means that the call was not made or
// failed, and the output is then untouched. Every operation on a client that is not connected, or
// with a null output, gives platform::kFail.
class GatewayClient {
 public:
  using Text = std::u16string_view;

  // Creates the component and resolves its members. Not connected when the component cannot be
  // created.
  explicit GatewayClient(const platform::ClassRegistry& registry);
  GatewayClient(const GatewayClient&) = delete;
  GatewayClient& operator=(const GatewayClient&) = delete;

  bool IsConnected() const { return connected_; }

  // `flag` travels unchanged; the program passes 1.
  platform::HResult Send(std::int16_t flag, Text text, Text number, std::u16string* reply);
  platform::HResult Authenticate(Text client_id, Text user, Text password, std::u16string* reply);
  platform::HResult Ping(std::u16string* reply);
  platform::HResult QueryBalance(std::u16string* balance);
  platform::HResult RecoverPassword(Text user, Text email, std::u16string* reply);
  platform::HResult EncodeUnicode(Text text, std::u16string* encoded);
  platform::HResult PayToken(Text voucher, std::u16string* reply);
  platform::HResult StartBatch(Text text, std::u16string* reply);
  platform::HResult BatchSend(Text numbers, std::u16string* reply);  // numbers joined by ","
  platform::HResult EndBatch(std::u16string* reply);
  platform::HResult ConfigureProxy(bool test, std::int32_t type, Text host, Text port, Text user,
                                   Text password, std::u16string* reply);
  platform::HResult SetBaseUrl(Text url, std::u16string* reply);
  platform::HResult Version(std::u16string* version);
  platform::HResult MessageCharge(std::int16_t flag, Text gateway_id, std::u16string* reply);

  platform::HResult ErrorCode(std::int32_t* code);  // of this thread's last call
  platform::HResult LoginToken(std::u16string* token);

  platform::HResult SetMessageType(std::int32_t type);
  platform::HResult SetConcatenation(std::int32_t parts);
  platform::HResult SetDeliveryTime(std::int32_t minutes);
  platform::HResult SetSender(Text sender);
  platform::HResult SetUnicode(bool on);
  platform::HResult SetDeliveryAcknowledgement(bool on);

  // Whether the component lets its caller choose the keys of submissions and tells what became of
  // them: then the next two work.
  bool KeepsKeys() const;

  // The idempotency key of this thread's next Send, StartBatch, BatchSend or EndBatch, which uses
  // it up whatever comes of it: 32 hexadecimal digits, anything else fails and changes nothing. The
  // same call with the same key is carried out once and answered alike each time; another call with
  // the key is refused with kKeyReused.
  platform::HResult SetSubmissionKey(Text key);

  // What the submission with this key was answered, in `reply` and as the error code, whoever made
  // it and however long ago (a service keeps it for 31 days at least). When it opened a batch, that
  // becomes the current one; of a call whose recipients took several requests, as much as came to
  // the gateway. kNoSuchSubmission: the gateway knows nothing of the key, so nothing was accepted
  // with it, unless a request with it is still on its way. 102: the gateway cannot tell.
  platform::HResult QuerySubmission(Text key, std::u16string* reply);

  // Whether the component lists messages: then the next works.
  bool ListsMessages() const;

  // A page of all messages that the gateway has accepted from the account, oldest first, at most
  // 1,000, as JSON:
  //   {"messages": [{"id": 32 hexadecimal digits, "key": that of its submission, "to": the number
  //    without "+" or "00", "parts": 1, "charge": "0.8", "status": 4, "accepted": seconds since
  //    1970 UTC}…], "next": "CURSOR"}
  // `cursor` is the "next" of the page before, "" for the first page, which begins with what was
  // accepted at or after `since` (seconds since 1970 UTC as a decimal text; "" for everything).
  // Without "next" the page is the last. Messages that are accepted meanwhile come at the end: none
  // is missed and none comes twice. 102: the gateway does not list messages.
  platform::HResult ListMessages(Text cursor, Text since, std::u16string* page);

  // What is left and all that was ever put in, as JSON: {"balance": "87.2", "credits": "100.0"}.
  // The difference is what all messages together have cost. kFail with a component that lacks it,
  // 102 when the gateway does not tell.
  platform::HResult QueryFunds(std::u16string* funds);

  // The error code as a number: what ErrorCode gives, or kGatewayUnreachable when it cannot be
  // read.
  std::int32_t LastError();

  // Why this thread's last call failed; `reply` is what it answered. A component that does not tell
  // the reason apart has it in its reply, behind "ERR: " and the code.
  GatewayFailure LastFailure(Text reply);

  // Any member by name, arguments in the order of the call: what every operation above is made of.
  platform::HResult CallMethod(Text name, std::initializer_list<platform::Variant> arguments,
                               std::u16string* result);

 private:
  platform::HResult Get(Text name, platform::Variant* value);
  platform::HResult CallMember(platform::MemberId id,
                               std::initializer_list<platform::Variant> arguments,
                               std::u16string* result);
  platform::HResult CallFurther(Text name, std::initializer_list<platform::Variant> arguments,
                                std::u16string* result);
  platform::MemberId FurtherId(const MemberTable& table, Text name) const;
  template <typename Value>
  std::optional<Value> FurtherProperty(Text name);
  platform::HResult Put(Text name, platform::Variant value);

  bool connected_ = false;
  std::size_t methods_resolved_ = 0;
  std::size_t properties_resolved_ = 0;
  std::unique_ptr<platform::Dispatch> component_;
  MemberTable methods_ = MemberTable::Methods();
  MemberTable properties_ = MemberTable::Properties();
  MemberTable further_methods_ = MemberTable::FurtherMethods();
  MemberTable further_ = MemberTable::FurtherProperties();
};

}  // namespace orvalo
