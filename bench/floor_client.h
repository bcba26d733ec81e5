#pragma once
#include <curl/curl.h>

#include <span>
#include <string>
#include <vector>

namespace orvalo::bench {

// What the product is measured against: one libcurl handle on one connection that posts ready-made
// bodies, and nothing else.
class FloorClient {
 public:
  // Logs in, with the password "bench"; throws when it cannot.
  explicit FloorClient(const std::string& url, const std::string& user = "bench");
  ~FloorClient();
  FloorClient(const FloorClient&) = delete;
  FloorClient& operator=(const FloorClient&) = delete;

  // The reply; throws unless the status is 200. A post carries an idempotency key, as the service
  // asks.
  const std::string& Post(const std::string& path, const std::string& body);
  const std::string& Get(const std::string& path);

  const std::string& token() const { return token_; }  // of the session

 private:
  const std::string& Perform(const std::string& path, curl_slist* headers);

  CURL* easy_;
  std::string url_;
  std::string token_;
  std::string authorisation_;
  std::string reply_;
  unsigned long long next_key_;
};

}  // namespace orvalo::bench
