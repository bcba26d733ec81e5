#include "gateway/gateway_failure.h"

#include <algorithm>

#include "app/texts.h"

namespace orvalo {

namespace {

constexpr int kUnknownLoginTextId = 1058;
constexpr int kProxyUnreachableTextId = 1140;
constexpr int kProxyRefusedTextId = 1141;
constexpr int kUnreachableTextId = 2250;
constexpr int kFirstObstacleTextId = 2251;  // in the order of platform::HttpObstacle, from 1
constexpr int kNotUnderstoodTextId = 2262;
constexpr int kRefusalTextId = 2263;
constexpr int kWordlessRefusalTextId = 2264;

std::string WithInsert(const Texts& texts, int id, const std::string& insert) {
  return texts.Format(id, {insert}).value_or(insert);
}

// Of the digits at the front and the ", " behind them.
std::size_t LengthOfCode(std::string_view text) {
  const auto digits = std::min(text.find_first_not_of("0123456789"), text.size());
  return digits > 0 && text.substr(digits).starts_with(", ") ? digits + 2 : digits;
}

}  // namespace

bool ConcernsEveryCall(std::int32_t code) {
  return (code >= kProxyUnreachable && code <= kGatewayUnreachable) ||
         (code >= kWrongPassword && code <= kTooManyRequests) || code == kServiceFailed ||
         code == kNetworkUnavailable;
}

std::string ObstacleText(const GatewayFailure& failure, const Texts& texts,
                         const std::string& address) {
  const bool known = failure.obstacle > platform::HttpObstacle::kNotKnown &&
                     failure.obstacle <= platform::HttpObstacle::kNoAuthorities;
  if (failure.code != kGatewayUnreachable || !known) return {};
  return WithInsert(texts, kFirstObstacleTextId - 1 + static_cast<int>(failure.obstacle), address);
}

std::string FailureText(const GatewayFailure& failure, const Texts& texts,
                        const std::string& address) {
  switch (failure.code) {
    case kGatewayOk:
      return {};
    case kWrongPassword:
      return texts.Load(kUnknownLoginTextId);
    case kProxyUnreachable:
      return texts.Load(kProxyUnreachableTextId);
    case kProxyRefused:
      return texts.Load(kProxyRefusedTextId);
    case kNotUnderstood:
      return WithInsert(texts, kNotUnderstoodTextId, address);
    case kGatewayUnreachable: {
      const std::string why = ObstacleText(failure, texts, address);
      return why.empty() ? WithInsert(texts, kUnreachableTextId, address) : why;
    }
    default:
      break;
  }
  const auto text = failure.words.empty()
                        ? texts.Format(kWordlessRefusalTextId, {failure.code})
                        : texts.Format(kRefusalTextId, {failure.words, failure.code});
  return text.value_or(failure.words);
}

std::string ReasonText(const GatewayFailure& failure, const Texts& texts,
                       const std::string& address) {
  const bool never_travels = failure.code <= kGatewayUnreachable;
  const std::string words =
      never_travels || failure.words.empty() ? FailureText(failure, texts, address) : failure.words;
  return std::to_string(failure.code) + ": " + words;
}

bool IsUnreachable(std::int32_t code) {
  return code == kProxyUnreachable || code == kProxyRefused || code == kGatewayUnreachable;
}

bool IsUnanswered(std::int32_t code) {
  switch (code) {
    case kGatewayOk:
      return false;
    case kNoSession:
    case kTooManyRequests:
    case kServiceFailed:
    case kNetworkUnavailable:
      return true;
    default:
      return code <= kGatewayUnreachable || (code > kServiceFailed && code <= 504);
  }
}

std::string_view RefusalWords(std::string_view reply) {
  constexpr std::string_view kOpening = "ERR: ";
  if (!reply.starts_with(kOpening)) return reply;
  const auto words = reply.substr(kOpening.size());
  return words.substr(LengthOfCode(words));
}

std::string RefusalReason(std::string_view entry) {
  const auto words = entry.substr(LengthOfCode(entry));
  const auto code = entry.substr(0, entry.find_first_not_of("0123456789"));
  if (code.empty() || code.size() == entry.size()) return std::string(entry);
  return std::string(code) + ": " + std::string(words);
}

}  // namespace orvalo
