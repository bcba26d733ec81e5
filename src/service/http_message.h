#pragma once
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvalo::service {

// A request as it arrived.
struct ServedRequest {
  std::string_view method;
  std::string_view path;   // decoded, without the query; no control characters
  std::string_view query;  // as it came, without the "?"
  std::string body;
  bool body_too_large = false;  // `body` is then empty
  // A header's value, empty when it is missing; names in any letter case.
  std::function<std::string_view(const char* name)> header;
  // Who asks, for whoever counts: a numeric address, of IPv6 the network that one customer has.
  std::string address;
};

struct ServedReply {
  int status = 200;
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers;
  bool drop = false;  // close the connection and send nothing
  std::string content_type = "application/json";
  int error = 0;  // the code of the error that the body tells, for whoever counts; 0: none
  std::chrono::milliseconds hold{0};  // before it is sent; nothing but its connection waits
};

// What answers the requests. Called on many threads at a time; must not throw.
class HttpHandler {
 public:
  virtual ~HttpHandler() = default;
  virtual ServedReply Handle(const ServedRequest& request) = 0;
  // The reply to something that is no proper request.
  virtual ServedReply Malformed(int status) = 0;
  // Whether a call waits for something scarce. Such calls have workers of their own, so that they
  // keep no others waiting. Called before the request is read whole; must be quick.
  virtual bool TakesLong(std::string_view method, std::string_view path) const {
    (void)method, (void)path;
    return false;
  }
};

// The text with its "%41" decoded, and its "+" if these stand for blanks. Nothing when a "%" is not
// followed by two hexadecimal digits.
std::optional<std::string> PercentDecoded(std::string_view text, bool plus_is_blank);

}  // namespace orvalo::service
