#pragma once
#include <functional>
#include <map>
#include <sstream>
#include <string>

#include "engine_bench.h"

namespace orvalo::test {

// Thrown by a scripted gateway: the process is gone. No std::exception, so that nothing of the
// program catches it.
struct ProcessDies {};

// A gateway that keeps its keys, behind the scripted component: it takes each submission once and
// answers a repetition as it answered the first. What goes wrong on the way is asked of `Fate` at
// each submission.
class KeyedGateway {
 public:
  enum class Fate {
    kAnswered,
    kNotReached,
    kReplyLost,
    kDiesBefore,  // the client, before the gateway has it
    kDiesAfter,
  };

  explicit KeyedGateway(EngineBench& bench) : bench_(bench) {
    On("SendMsg", [this](const FakeGateway::Call& call) {
      return FakeGateway::Answer{"ID: " + Accept(call.Argument(2), call.Argument(1))};
    });
    On("StartBatch", [](const FakeGateway::Call&) { return FakeGateway::Answer{"OK"}; });
    On("QuickBatchSend", [this](const FakeGateway::Call& call) {
      std::string reply, number;
      std::istringstream numbers(call.Argument(0));
      while (std::getline(numbers, number, ','))
        reply += "ID: " + Accept(number, "") + " To: " + number + "\n";
      return FakeGateway::Answer{reply};
    });
    bench_.fake.On("QuerySubmission", [this](const FakeGateway::Call& call) {
      const auto found = kept_.find(call.Argument(0));
      return found == kept_.end() ? FakeGateway::Answer{"none", 209} : found->second.answer;
    });
  }

  std::function<Fate()> fate = [] { return Fate::kAnswered; };

  // How often each number was accepted, the id of the last time, and the text of single ones.
  std::map<std::string, int> accepted;
  std::map<std::string, std::string> ids, texts;

 private:
  struct Kept {
    std::string request;
    FakeGateway::Answer answer;
  };

  std::string Accept(const std::string& number, const std::string& text) {
    ++accepted[number];
    texts[number] = text;
    return ids[number] = bench_.NextId();
  }

  void On(const std::string& member, FakeGateway::Handler work) {
    bench_.fake.On(member, [this, work = std::move(work)](const FakeGateway::Call& call) {
      const FakeGateway::Answer unreachable{"ERR: 99, gone", 99};
      const Fate what = fate();
      if (what == Fate::kDiesBefore) throw ProcessDies();
      if (what == Fate::kNotReached) return unreachable;
      const std::string key = bench_.fake.Property("smsSUBMISSION_KEY");
      std::string request = call.member;
      for (std::size_t i = 0; i < call.arguments.size(); ++i) request += '|' + call.Argument(i);
      auto found = kept_.find(key);
      if (found == kept_.end()) found = kept_.emplace(key, Kept{request, work(call)}).first;
      if (what == Fate::kDiesAfter) throw ProcessDies();
      if (what == Fate::kReplyLost) return unreachable;
      if (found->second.request != request) return FakeGateway::Answer{"ERR: 206, reused", 206};
      return found->second.answer;
    });
  }

  EngineBench& bench_;
  std::map<std::string, Kept> kept_;
};

}  // namespace orvalo::test
