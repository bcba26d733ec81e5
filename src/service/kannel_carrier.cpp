#include "service/kannel_carrier.h"

#include <algorithm>

#include "platform/sender_id.h"
#include "service/message_parts.h"
#include "service/secrets.h"

namespace orvalo::service {
namespace {

constexpr std::int64_t kCountEveryMs = 1'000;
constexpr std::chrono::milliseconds kPatience(10);

}  // namespace

KannelCarrier::KannelCarrier(KannelOptions options, const Parts& parts)
    : options_(std::move(options)),
      parts_(parts),
      watch_(options_, parts.clock, parts.log),
      sender_({parts.database, watch_, client_, parts.clock, parts.metrics, parts.log, options_}),
      warden_({parts.database, watch_, client_, parts.clock, parts.metrics, parts.log, options_}),
      reference_(static_cast<unsigned char>(RandomBytes(1)[0])) {
  client_.SetCertificateAuthorities(options_.authorities);
}

KannelCarrier::~KannelCarrier() {
  warden_.Stop();
  sender_.Stop();
}

void KannelCarrier::Start(const std::string& report_url) {
  if (options_.report_url.empty()) options_.report_url = report_url;
  std::int64_t doubted = 0;
  parts_.database.Write([&](Connection& connection) {
    doubted = outbox::DoubtAsked(connection, parts_.clock.Now());
  });
  if (doubted > 0) parts_.log.Warn("parts_in_doubt", {{"parts", std::to_string(doubted)}});
  watch_.Refresh(client_);
  sender_.Start();
  warden_.Start();
}

std::optional<Refusal> KannelCarrier::Admit() {
  // Counting for each submission would cost more than the submission.
  const auto now = parts_.clock.Tick();
  auto next = next_count_.load();
  if (now >= next && next_count_.compare_exchange_strong(next, now + kCountEveryMs)) {
    constexpr std::int64_t kLongestPause = 60;  // of parts that were put back
    const auto by = parts_.clock.Now() + kLongestPause;
    waiting_ = parts_.database.Read(
        [by](Connection& connection) { return outbox::CountDue(connection, by); });
  }
  if (waiting_ > options_.backlog) return Refuse(ErrorCode::kNetworkDown);
  return std::nullopt;
}

std::optional<Refusal> KannelCarrier::Fit(MessageContent& content) {
  if (content.sender.empty()) content.sender = options_.sender;
  if (!platform::IsSenderId(content.sender)) {
    return Refusal{ErrorCode::kMalformed,
                   "The sender must be up to 15 digits or up to 11 letters and digits"};
  }
  const auto message = SplitMessage(content.text, {content.type, content.unicode, 0});
  if (!message || message->parts.size() > static_cast<std::size_t>(content.most_parts)) {
    return Refuse(ErrorCode::kTextTooLong);
  }
  content.parts = static_cast<int>(message->parts.size());
  return std::nullopt;
}

// The messages of a batch have one reference, so that they can share requests, but for those to a
// number that has had it lately.
void KannelCarrier::Record(Connection& connection, const CarriedMessage& message, Money charge) {
  int reference = 0;
  if (message.parts > 1) {
    const auto wanted = static_cast<std::uint8_t>(message.batch > 0 ? message.batch : reference_++);
    reference =
        outbox::FreeReference(connection, message.number, wanted,
                              message.accepted - options_.validity_minutes * std::int64_t{60});
  }
  outbox::Add(connection, message, charge, reference);
}

void KannelCarrier::Submit(const CarriedMessage&) { sender_.Poke(); }

GatewayStatus KannelCarrier::StatusOf(Connection& connection, const CarriedMessage& message,
                                      std::int64_t now) {
  return outbox::StatusOf(connection, message, now).value_or(GatewayStatus::kNotKnown);
}

std::optional<outbox::Reported> KannelCarrier::TakeReport(std::string_view key,
                                                          std::string_view number, int bits,
                                                          std::string_view detail) {
  const bool has_all_links =
      EventOfReport(bits, detail) != PartEvent::kReportNoRoute || watch_.HasAllLinks(client_);
  std::optional<outbox::Reported> reported;
  parts_.database.Write(
      [&](Connection& connection) {
        reported = outbox::TakeReport(connection, key, number, bits, detail, has_all_links,
                                      parts_.clock.Now());
      },
      kPatience);
  if (reported && reported->before == PartState::kTaken) sender_.RoomMade();
  return reported;
}

}  // namespace orvalo::service
