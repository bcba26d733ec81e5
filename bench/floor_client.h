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
  explicit FloorClient(const std::string& url);  // logs in as bench/bench; throws when it cannot
  ~FloorClient();
  FloorClient(const FloorClient&) = delete;
  FloorClient& operator=(const FloorClient&) = delete;

  // The reply; throws unless the status is 200. A post carries an idempotency key, as the service
  // asks.
  const std::string& Post(const std::string& path, const std::string& body);
  const std::string& Get(const std::string& path);

 private:
  const std::string& Perform(const std::string& path, curl_slist* headers);

  CURL* easy_;
  std::string url_;
  std::string authorisation_;
  std::string reply_;
  unsigned long long next_key_;
};

}  // namespace orvalo::bench
