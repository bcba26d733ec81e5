#pragma once
#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/automation.h"
#include "platform/code_page.h"

namespace orvalo::test {

// A gateway component that a test scripts: it records every call and put property, and answers from
// handlers. Any thread.
class FakeGateway {
 public:
  struct Call {
    std::string member;
    std::vector<platform::Variant> arguments;  // in the order of the call
    // The argument as text: "" for nothing, flags and integers in decimal.
    std::string Argument(std::size_t i) const {
      const platform::Variant& value = arguments.at(i);
      if (const auto* text = std::get_if<std::u16string>(&value)) return platform::FromWide(*text);
      if (const auto* flag = std::get_if<platform::VariantFlag>(&value))
        return std::to_string(flag->value);
      if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
      return {};
    }
  };
  struct Answer {
    std::string reply;
    std::int32_t error = 0;
    std::string reason = "";  // for smsERROR_TEXT and smsERROR_CAUSE
    std::int32_t cause = 0;
  };
  using Handler = std::function<Answer(const Call&)>;

  // What the member answers from now on; members without a handler answer the empty text and error
  // 0.
  void On(const std::string& member, Handler handler) {
    std::lock_guard guard(mutex_);
    handlers_[member] = std::move(handler);
  }
  void On(const std::string& member, const std::string& reply, std::int32_t error = 0) {
    On(member, [=](const Call&) { return Answer{reply, error}; });
  }
  void Forget(const std::string& member) {
    unknown_.insert(member);
  }  // before the client is created

  // Before the client is created: the component has the members that tell reasons, too.
  void TellReasons() { Learn({"smsERROR_TEXT", "smsERROR_CAUSE"}); }

  // The same: it has the members about the keys of submissions, too.
  void KeepKeys() { Learn({"smsSUBMISSION_KEY", "QuerySubmission"}); }
  void TellMessages() { Learn({"ListMessages", "QueryFunds"}); }

  std::vector<Call> Calls(const std::string& member = "") const {
    std::lock_guard guard(mutex_);
    std::vector<Call> found;
    std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(found),
                 [&](const Call& call) { return member.empty() || call.member == member; });
    return found;
  }
  // The value last put into a property.
  std::string Property(const std::string& name) const {
    const auto puts = Calls(name);
    return puts.empty() ? std::string() : puts.back().Argument(0);
  }
  void ClearCalls() {
    std::lock_guard guard(mutex_);
    calls_.clear();
  }

  // Makes this fake the class that the gateway client creates. The fake must outlive the client.
  void Register(platform::ClassRegistry& registry) {
    registry.Register("SMS_COMAPI.SMS", [this] { return std::make_unique<Object>(*this); });
  }

 private:
  class Object : public platform::Dispatch {
   public:
    explicit Object(FakeGateway& gateway) : gateway_(gateway) {}
    platform::HResult GetIdOfName(std::u16string_view name, platform::LocaleId,
                                  platform::MemberId* id) override {
      const std::string text = platform::FromWide(name);
      if (gateway_.unknown_.count(text) != 0) return platform::kUnknownName;
      names_.push_back(text);
      *id = static_cast<platform::MemberId>(names_.size());
      return 0;
    }
    platform::HResult Invoke(platform::MemberId id, platform::LocaleId, platform::InvokeKind kind,
                             std::span<const platform::Variant> arguments,
                             platform::Variant* result) override {
      if (id < 1 || id > static_cast<platform::MemberId>(names_.size()))
        return platform::kMemberNotFound;
      const std::string& name = names_[static_cast<std::size_t>(id) - 1];
      if (kind == platform::InvokeKind::kPropertyGet) {
        *result = gateway_.Read(name);
        return 0;
      }
      const std::string reply = gateway_.Take({name, {arguments.rbegin(), arguments.rend()}}, kind);
      if (result != nullptr) *result = platform::ToWide(reply);
      return 0;
    }

   private:
    FakeGateway& gateway_;
    std::vector<std::string> names_;
  };

  void Learn(const std::set<std::string>& members) {
    for (const auto& member : members) unknown_.erase(member);
  }

  std::string Take(const Call& call, platform::InvokeKind kind) {
    Handler handler;
    {
      std::lock_guard guard(mutex_);
      calls_.push_back(call);
      if (kind == platform::InvokeKind::kPropertyPut) return {};
      if (const auto found = handlers_.find(call.member); found != handlers_.end())
        handler = found->second;
    }
    const Answer answer = handler ? handler(call) : Answer{};
    Last() = answer;
    return answer.reply;
  }
  static Answer& Last() {  // to the calling thread
    static thread_local Answer last;
    return last;
  }
  static platform::Variant Read(const std::string& property) {
    if (property == "smsERROR") return Last().error;
    if (property == "smsERROR_TEXT") return platform::ToWide(Last().reason);
    if (property == "smsERROR_CAUSE") return Last().cause;
    return u"token";
  }

  mutable std::mutex mutex_;
  std::vector<Call> calls_;
  std::map<std::string, Handler> handlers_;
  std::set<std::string> unknown_ = {"smsERROR_TEXT",   "smsERROR_CAUSE", "smsSUBMISSION_KEY",
                                    "QuerySubmission", "ListMessages",   "QueryFunds"};
};

}  // namespace orvalo::test
