#pragma once
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "component/account_calls.h"
#include "component/gateway_protocol.h"
#include "component/message_calls.h"
#include "component/session.h"
#include "component/thread_memory.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/http.h"

namespace orvalo::component {

// The properties that are put and stay until they are put again.
struct Properties {
  std::u16string user, password, text, from, to;
  std::int32_t type = 0;
  std::int32_t concat = 0;
  std::int32_t delivery_minutes = 0;
  platform::VariantFlag unicode;
  platform::VariantFlag acknowledge;
};

// The automation object behind "SMS_COMAPI.SMS": it resolves names, checks arguments and hands the
// calls on. component.cpp holds the table of its members.
//
// Created and owned by whoever creates the class. Any thread may call it, several at a time; no
// lock is held while the service is asked. smsERROR tells a thread the error of the last method
// that this thread called, smsERROR_TEXT the reason in words (empty after a success), and
// smsERROR_CAUSE what stood in the way of a connection: a platform::HttpObstacle by number.
//
// Failure: kMemberNotFound for an id that is none or a call of another kind than the member is,
// kBadParameterCount and kTypeMismatch for other arguments than it takes (a method then also
// leaves error 102 or 101, so that nobody takes the missing reply for a success). A refusal by the
// service is a success of Invoke with the text "ERR: …".
//
// smsSUBMISSION_KEY can only be put: the idempotency key of the calling thread's next submission
// (SendMsg, SendSimpleSMS, StartBatch, QuickBatchSend, EndBatch), a text of 32 hexadecimal digits;
// putting anything else is kTypeMismatch and changes nothing. That call uses it up, whatever comes
// of it; without one a key is drawn. Who has written a key down before it was used can repeat the
// call with it after any crash and gets the same answer again, or ask QuerySubmission what became
// of it.
class Component : public platform::Dispatch {
 public:
  explicit Component(platform::Clock& clock);  // must outlive this object

  platform::HResult GetIdOfName(std::u16string_view name, platform::LocaleId locale,
                                platform::MemberId* id) override;
  platform::HResult Invoke(platform::MemberId id, platform::LocaleId locale,
                           platform::InvokeKind kind, std::span<const platform::Variant> arguments,
                           platform::Variant* result) override;

 private:
  class Arguments;
  struct Method;
  struct Property;
  static std::span<const Method> Methods();
  static std::vector<Method> MessageMethods();
  static std::vector<Method> AccountMethods();
  static std::span<const Property> PropertyList();

  platform::HResult CallMethod(const Method& method, std::span<const platform::Variant> arguments,
                               platform::Variant* result);
  platform::HResult GetProperty(const Property& property, platform::Variant* result);
  platform::HResult PutProperty(const Property& property, const platform::Variant& value);

  // The options of a message whose text is `text`, from the properties as they are now.
  MessageOptions OptionsFor(const std::u16string& text);
  Properties properties() const;

  Answer Authenticate();
  Answer SendSimple(const std::string& key, const std::u16string& text,
                    const std::u16string& number);
  platform::HResult PutSubmissionKey(const platform::Variant& value);
  Answer EncodeToUnicode(const std::u16string& text);
  Answer ResetMessage();

  platform::HttpClient http_;
  Session session_;
  GatewayProtocol protocol_;
  AccountCalls account_;
  MessageCalls messages_;
  ThreadMemories threads_;

  mutable std::mutex mutex_;
  Properties properties_;
};

}  // namespace orvalo::component
