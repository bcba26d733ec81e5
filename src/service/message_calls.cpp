#include "service/message_calls.h"

#include <fmt/format.h>

#include <charconv>
#include <iterator>

#include "service/api_reply.h"
#include "service/money.h"
#include "service/page_text.h"
#include "service/secrets.h"

namespace orvalo::service {

namespace {

constexpr std::int64_t kMostListed = 1'000;
constexpr std::int64_t kUsuallyListed = 500;

// A whole number of a query, `usual` when it is not there; nothing when it is none or out of range.
std::optional<std::int64_t> NumberField(std::string_view query, const char* name,
                                        std::int64_t lowest, std::int64_t highest,
                                        std::int64_t usual) {
  const auto field = FormField(query, name, query.size());
  if (!field) return usual;
  std::int64_t value = 0;
  const auto* const end = field->data() + field->size();
  const auto [last, error] = std::from_chars(field->data(), end, value);
  if (error != std::errc() || last != end || value < lowest || value > highest) return std::nullopt;
  return value;
}

}  // namespace

void MessageCalls::Register(Router& router) {
  router.Add({"GET", "/v1/messages", Access::kSession,
              [this](const Call& call) { return ListMessages(call); }});
  router.Add({"POST", "/v1/messages", Access::kKeyed,
              [this](const Call& call) { return PostMessage(call); }});
  router.Add({"POST", "/v1/batches", Access::kKeyed,
              [this](const Call& call) { return OpenBatch(call); }});
  router.Add({"POST", "/v1/batches/*/recipients", Access::kKeyed,
              [this](const Call& call) { return AddRecipients(call); }});
  router.Add({"POST", "/v1/batches/*/end", Access::kKeyed,
              [this](const Call& call) { return EndBatch(call); }});
  router.Add({"GET", "/v1/messages/*", Access::kSession,
              [this](const Call& call) { return GetMessage(call); }});
  router.Add({"GET", "/v1/submissions/*", Access::kSession,
              [this](const Call& call) { return GetSubmission(call); }});
}

std::optional<Refusal> MessageCalls::ReadContent(const Call& call, MessageContent* content) {
  auto parsed = ParseContent(call.body);
  if (auto* refusal = std::get_if<Refusal>(&parsed)) return std::move(*refusal);
  *content = std::get<MessageContent>(std::move(parsed));
  return parts_.carrier.Fit(*content);
}

ServedReply MessageCalls::PostMessage(const Call& call) {
  std::string number;
  MessageContent content;
  const auto check = [&]() -> std::optional<Refusal> {
    auto parsed = ParseNumber(call.body);
    if (auto* refusal = std::get_if<Refusal>(&parsed)) return std::move(*refusal);
    number = std::get<std::string>(std::move(parsed));
    return ReadContent(call, &content);
  };
  return Submit(call, check, [&](Connection& connection) {
    Accepted accepted;
    accepted.outcomes =
        parts_.ledger.Accept(connection, {call.account, call.key, 0}, content, {number});
    const auto& outcome = accepted.outcomes.front();
    if (const auto* refusal = std::get_if<Refusal>(&outcome)) {
      accepted.reply = ReplyOf(*refusal);
    } else {
      accepted.reply.body = fmt::format(R"({{"id":"{}"}})", std::get<CarriedMessage>(outcome).id);
    }
    return accepted;
  });
}

ServedReply MessageCalls::OpenBatch(const Call& call) {
  MessageContent content;
  return parts_.submissions.Once(
      KeyedRequestOf(call),
      [&]() -> std::optional<ServedReply> {
        if (const auto refusal = ReadContent(call, &content)) return ReplyOf(*refusal);
        return std::nullopt;
      },
      [&](Connection& connection) {
        const auto id = batches_.Open(connection, call.account, content);
        return ServedReply{200, fmt::format(R"({{"batch":"{}"}})", id), {}, false};
      });
}

ServedReply MessageCalls::AddRecipients(const Call& call) {
  std::vector<std::string> numbers;
  const auto check = [&]() -> std::optional<Refusal> {
    auto parsed = ParseNumbers(call.body);
    if (auto* refusal = std::get_if<Refusal>(&parsed)) return std::move(*refusal);
    numbers = std::get<std::vector<std::string>>(std::move(parsed));
    return std::nullopt;
  };
  return Submit(call, check, [&](Connection& connection) {
    return AcceptRecipients(connection, call, numbers);
  });
}

MessageCalls::Accepted MessageCalls::AcceptRecipients(Connection& connection, const Call& call,
                                                      const std::vector<std::string>& numbers) {
  auto batch = batches_.Find(connection, call.account, call.id);
  if (!batch) return {ReplyOf(Refuse(ErrorCode::kNoSuchMessage)), {}};
  if (batch->ended) return {ReplyOf(Refuse(ErrorCode::kBatchEnded)), {}};
  // It may have been opened before a restart, with a carrier that counted its parts otherwise.
  if (const auto refusal = parts_.carrier.Fit(batch->content)) return {ReplyOf(*refusal), {}};
  Accepted accepted;
  accepted.outcomes = parts_.ledger.Accept(connection, {call.account, call.key, batch->row},
                                           batch->content, numbers);
  std::int64_t count = 0;
  auto results = nlohmann::json::array();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    nlohmann::json result{{"to", numbers[i]}};
    if (const auto* refusal = std::get_if<Refusal>(&accepted.outcomes[i])) {
      result["code"] = static_cast<int>(refusal->code);
      result["message"] = refusal->message;
    } else {
      result["id"] = std::get<CarriedMessage>(accepted.outcomes[i]).id;
      ++count;
    }
    results.push_back(std::move(result));
  }
  batches_.CountAccepted(connection, *batch, count);
  accepted.reply.body = nlohmann::json{{"results", std::move(results)}}.dump();
  return accepted;
}

ServedReply MessageCalls::EndBatch(const Call& call) {
  return parts_.submissions.Once(
      KeyedRequestOf(call), [] { return std::nullopt; },
      [&](Connection& connection) {
        const auto batch = batches_.Find(connection, call.account, call.id);
        if (!batch) return ReplyOf(Refuse(ErrorCode::kNoSuchMessage));
        if (batch->ended) return ReplyOf(Refuse(ErrorCode::kBatchEnded));
        batches_.End(connection, *batch);
        return ServedReply{200, fmt::format(R"({{"accepted":{}}})", batch->accepted), {}, false};
      });
}

ServedReply MessageCalls::GetMessage(const Call& call) {
  std::optional<Ledger::Entry> entry;
  auto status = GatewayStatus::kNotKnown;
  parts_.database.Read([&](Connection& connection) {
    entry = parts_.ledger.Find(connection, call.account, call.id);
    if (!entry) return;
    status = parts_.carrier.StatusOf(connection, entry->message, parts_.clock.Now());
  });
  if (!entry) return ReplyOf(Refuse(ErrorCode::kNoSuchMessage));
  return {200,
          fmt::format(R"({{"id":"{}","status":{},"charge":"{}"}})", entry->message.id,
                      static_cast<int>(status), MoneyText(entry->charge)),
          {},
          false};
}

ServedReply MessageCalls::GetSubmission(const Call& call) {
  const auto key = FromHex(call.id);
  if (key.size() != 16) {
    return ReplyOf(Refusal{ErrorCode::kMalformed, "A key has 32 hexadecimal digits"});
  }
  const auto kept = parts_.submissions.Find(call.account, key);
  if (!kept) return ReplyOf(Refuse(ErrorCode::kNoSuchSubmission));
  return {200,
          fmt::format(R"({{"key":"{}","time":{},"status":{},"reply":{}}})", ToHex(key), kept->time,
                      kept->status, kept->body),
          {},
          false};
}

ServedReply MessageCalls::ListMessages(const Call& call) {
  const auto query = call.request.query;
  const auto after = NumberField(query, "after", 0, INT64_MAX, -1);
  const auto since = NumberField(query, "since", 0, INT64_MAX, 0);
  const auto limit = NumberField(query, "limit", 1, kMostListed, kUsuallyListed);
  if (!after || !since || !limit || !PercentDecoded(query, true)) {
    return ReplyOf(Refuse(ErrorCode::kMalformed));
  }
  const auto now = parts_.clock.Now();
  std::string list, next;
  parts_.database.Read([&](Connection& connection) {
    const auto row = *after >= 0  ? *after
                     : *since > 0 ? Ledger::RowBefore(connection, call.account, *since)
                                  : 0;
    // One more tells whether there are more.
    auto entries = Ledger::After(connection, call.account, row, static_cast<int>(*limit) + 1);
    if (entries.size() > static_cast<std::size_t>(*limit)) {
      entries.pop_back();
      next = fmt::format(R"(,"next":"{}")", entries.back().message.row);
    }
    for (const auto& [message, user, key, charge] : entries) {
      const auto status = parts_.carrier.StatusOf(connection, message, now);
      fmt::format_to(
          std::back_inserter(list),
          R"({}{{"id":"{}","key":"{}","to":"{}","parts":{},"charge":"{}","status":{},"accepted":{}}})",
          list.empty() ? "" : ",", message.id, key, message.number, message.parts,
          MoneyText(charge), static_cast<int>(status), message.accepted);
    }
  });
  return {200, fmt::format(R"({{"messages":[{}]{}}})", list, next), {}, false};
}

// The refusal of a single message is the reply's, and counted with that.
void MessageCalls::Count(const Accepted& accepted) {
  std::int64_t messages = 0, parts = 0;
  for (const auto& outcome : accepted.outcomes) {
    if (const auto* message = std::get_if<CarriedMessage>(&outcome)) {
      ++messages;
      parts += message->parts;
    } else if (accepted.reply.error == 0) {
      CountRefusal(parts_.metrics, std::get<Refusal>(outcome).code);
    }
  }
  parts_.metrics.Count("orvalo_messages_accepted_total", "", messages);
  parts_.metrics.Count("orvalo_parts_accepted_total", "", parts);
}

// What was accepted goes to the carrier once it is on the disk, and never for a replay.
ServedReply MessageCalls::Submit(const Call& call,
                                 const std::function<std::optional<Refusal>()>& check,
                                 const std::function<Accepted(Connection&)>& accept) {
  Accepted accepted;
  auto reply = parts_.submissions.Once(
      KeyedRequestOf(call),
      [&]() -> std::optional<ServedReply> {
        if (const auto refusal = check()) return ReplyOf(*refusal);
        if (const auto refusal = parts_.carrier.Admit()) return ReplyOf(*refusal);
        return std::nullopt;
      },
      [&](Connection& connection) {
        accepted = accept(connection);
        return accepted.reply;
      });
  Count(accepted);
  for (const auto& outcome : accepted.outcomes) {
    if (const auto* message = std::get_if<CarriedMessage>(&outcome)) {
      parts_.carrier.Submit(*message);
    }
  }
  return reply;
}

}  // namespace orvalo::service
