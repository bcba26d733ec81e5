#include "service/kannel_request.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "service/message_parts.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

using platform::HttpFailure;

constexpr int kReportMask = 31;  // all types that a person or a phone can bring about

// Orders parts by what must be equal for two of them to share a request.
struct ByContent {
  bool operator()(const outbox::Waiting& one, const outbox::Waiting& other) const {
    const auto content = [](const outbox::Waiting& part) {
      return std::tie(part.type, part.unicode, part.parts, part.id.part, part.reference,
                      part.sender, *part.text);
    };
    return content(one) < content(other);
  }
};

// The minutes left to the part that was due first, at least one.
std::int64_t ValidityOf(const Handover& handover, const KannelOptions& options, std::int64_t now) {
  const auto first =
      std::min_element(handover.to.begin(), handover.to.end(),
                       [](const auto& one, const auto& other) { return one.due < other.due; });
  const auto gone = std::max<std::int64_t>(now - first->due, 0) / 60;
  return std::max<std::int64_t>(options.validity_minutes - gone, 1);
}

bool Begins(const std::string& text, std::string_view opening) { return text.starts_with(opening); }

EngineAnswer ReadRefusal(const platform::HttpReply& reply) {
  const auto& body = reply.body;
  if (reply.status == 400) {
    return Begins(body, "Number(s)") ? EngineAnswer::kDenied : EngineAnswer::kBadMessage;
  }
  if (reply.status == 403) {
    return Begins(body, "Not routable") ? EngineAnswer::kUnroutable : EngineAnswer::kWrongLogin;
  }
  if (reply.status == 404) return EngineAnswer::kNotAsked;  // something else answers there
  if (reply.status == 503 && Begins(body, "Temporal failure")) return EngineAnswer::kBusy;
  return EngineAnswer::kUnclear;
}

}  // namespace

const char* NameOf(EngineAnswer answer) {
  switch (answer) {
    case EngineAnswer::kTaken:
      return "taken";
    case EngineAnswer::kTakenSlowly:
      return "taken_slowly";
    case EngineAnswer::kUnroutable:
      return "unroutable";
    case EngineAnswer::kNoLink:
      return "no_link";
    case EngineAnswer::kDenied:
      return "denied";
    case EngineAnswer::kBadMessage:
      return "bad_message";
    case EngineAnswer::kBusy:
      return "busy";
    case EngineAnswer::kWrongLogin:
      return "wrong_login";
    case EngineAnswer::kNotAsked:
      return "not_asked";
    case EngineAnswer::kUnclear:
      break;
  }
  return "unclear";
}

std::vector<Handover> GroupUp(std::vector<outbox::Waiting> waiting, std::size_t most_receivers) {
  struct Open {
    std::size_t group;
    std::set<std::string> numbers;
  };
  std::vector<Handover> groups;
  groups.reserve(waiting.size());
  std::map<outbox::Waiting, Open, ByContent> open;
  for (auto& part : waiting) {
    const auto place = open.find(part);
    if (place != open.end() && groups[place->second.group].to.size() < most_receivers &&
        place->second.numbers.insert(part.number).second) {
      groups[place->second.group].to.push_back(std::move(part));
      continue;
    }
    open.insert_or_assign(part, Open{groups.size(), {part.number}});
    groups.emplace_back().to.push_back(std::move(part));
  }
  return groups;
}

platform::HttpRequest RequestOf(const Handover& handover, const KannelOptions& options,
                                const std::string& url, std::int64_t now) {
  const auto& first = handover.to.front();
  const auto message = SplitMessage(
      *first.text, {first.type, first.unicode, static_cast<std::uint8_t>(first.reference)});
  const auto& part = message->parts.at(static_cast<std::size_t>(first.id.part));
  std::string numbers;
  for (const auto& receiver : handover.to) {
    numbers += (numbers.empty() ? "" : " ") + receiver.number;
  }
  platform::HttpRequest request;
  request.once = true;
  request.method = "POST";
  request.url = url;
  request.body = part.body;
  request.timeout_ms = options.reply_seconds * std::int64_t{1000};
  auto& headers = request.headers;
  headers.reserve(14);
  headers.emplace_back("Content-Type", message->alphabet == Alphabet::kGsm
                                           ? "text/plain; charset=UTF-8"
                                           : "application/octet-stream");
  headers.emplace_back("X-Kannel-Username", options.user);
  headers.emplace_back("X-Kannel-Password", options.password);
  headers.emplace_back("X-Kannel-From", first.sender);
  headers.emplace_back("X-Kannel-To", numbers);
  headers.emplace_back("X-Kannel-Coding", std::to_string(static_cast<int>(message->alphabet)));
  if (message->message_class >= 0) {
    headers.emplace_back("X-Kannel-MClass", std::to_string(message->message_class));
  }
  if (!part.header.empty()) headers.emplace_back("X-Kannel-UDH", ToHex(part.header));
  if (!options.smsc.empty()) headers.emplace_back("X-Kannel-SMSC", options.smsc);
  headers.emplace_back("X-Kannel-Validity", std::to_string(ValidityOf(handover, options, now)));
  headers.emplace_back("X-Kannel-DLR-Mask", std::to_string(kReportMask));
  headers.emplace_back("X-Kannel-DLR-Url", fmt::format("{}/reports/{}?type=%d&to=%p&detail=%A",
                                                       options.report_url, ToHex(handover.key)));
  return request;
}

EngineAnswer ReadAnswer(const platform::HttpReply& reply) {
  if (reply.failure == HttpFailure::kNoReply || reply.failure == HttpFailure::kTooLarge) {
    return EngineAnswer::kUnclear;
  }
  if (reply.failure != HttpFailure::kNone) return EngineAnswer::kNotAsked;
  if (reply.status != 202) return ReadRefusal(reply);
  return Begins(reply.body, "3:") ? EngineAnswer::kTakenSlowly : EngineAnswer::kTaken;
}

PartEvent EventOf(EngineAnswer answer, std::size_t receivers) {
  switch (answer) {
    case EngineAnswer::kTaken:
    case EngineAnswer::kTakenSlowly:
      return PartEvent::kAnswerTaken;
    case EngineAnswer::kUnroutable:
      return receivers == 1 ? PartEvent::kAnswerNoWay : PartEvent::kAnswerTaken;
    case EngineAnswer::kNoLink:
      return receivers == 1 ? PartEvent::kAnswerNotSent : PartEvent::kAnswerTaken;
    case EngineAnswer::kDenied:
      return PartEvent::kAnswerNoWay;
    case EngineAnswer::kBadMessage:
      return PartEvent::kAnswerMalformed;
    case EngineAnswer::kBusy:
      return receivers == 1 ? PartEvent::kAnswerNotSent : PartEvent::kAnswerUnclear;
    case EngineAnswer::kWrongLogin:
    case EngineAnswer::kNotAsked:
      return PartEvent::kAnswerNotSent;
    case EngineAnswer::kUnclear:
      break;
  }
  return PartEvent::kAnswerUnclear;
}

}  // namespace orvalo::service
