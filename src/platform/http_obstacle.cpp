#include "platform/http_obstacle.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace orvalo::platform {
namespace {

// OpenSSL's words for what comes back from a server that answers a TLS greeting in plain text.
constexpr std::array<std::string_view, 4> kPlainAnswers = {
    "wrong version number", "http request", "unknown protocol", "packet length too long"};

// OpenSSL's numbers for a certificate outside its time.
constexpr long kNotYetValid = 9, kExpired = 10;
// libcurl asks OpenSSL only once the name is right; until then it has no particular number.
constexpr long kNotAsked = 1;

HttpObstacle ConnectObstacle(long system_error) {
  switch (system_error) {
    case ECONNREFUSED:
      return HttpObstacle::kRefused;
    case ETIMEDOUT:
      return HttpObstacle::kTimedOut;
    case ENETUNREACH:
    case EHOSTUNREACH:
    case ENETDOWN:
    case EHOSTDOWN:
      return HttpObstacle::kNoRoute;
    case ECONNRESET:
    case ECONNABORTED:
      return HttpObstacle::kCutOff;
    default:
      return HttpObstacle::kNotKnown;
  }
}

HttpObstacle CertificateObstacle(long verified) {
  if (verified == 0 || verified == kNotAsked) return HttpObstacle::kWrongName;
  if (verified == kNotYetValid || verified == kExpired) return HttpObstacle::kOutOfDate;
  return HttpObstacle::kUntrusted;
}

}  // namespace

HttpObstacle ObstacleOf(const CurlFault& fault) {
  switch (fault.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return HttpObstacle::kNameNotFound;
    case CURLE_COULDNT_CONNECT:
      return ConnectObstacle(fault.system_error);
    case CURLE_OPERATION_TIMEDOUT:
      return HttpObstacle::kTimedOut;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
      return HttpObstacle::kCutOff;
    case CURLE_PEER_FAILED_VERIFICATION:
      return CertificateObstacle(fault.verified);
    case CURLE_SSL_CACERT_BADFILE:
      return HttpObstacle::kNoAuthorities;
    case CURLE_SSL_CONNECT_ERROR: {
      const bool plain =
          std::any_of(kPlainAnswers.begin(), kPlainAnswers.end(), [&](std::string_view words) {
            return fault.message.find(words) != std::string_view::npos;
          });
      return plain ? HttpObstacle::kNoTls : HttpObstacle::kHandshake;
    }
    default:
      return HttpObstacle::kNotKnown;
  }
}

}  // namespace orvalo::platform
