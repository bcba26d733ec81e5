#pragma once
#include <curl/curl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/curl_setup.h"
#include "platform/http.h"

namespace orvalo::platform {

struct HttpConfig {
  ProxyConfig proxy;
  std::string authorities;  // a file; empty for the system's
  std::uint64_t generation = 0;
};

// One libcurl handle with its own kept connections. Used by one thread at a time; made for one
// configuration and thrown away with it.
class CurlHandle {
 public:
  explicit CurlHandle(HttpConfig config);
  ~CurlHandle();
  CurlHandle(const CurlHandle&) = delete;
  CurlHandle& operator=(const CurlHandle&) = delete;

  std::uint64_t generation() const { return config_.generation; }

  HttpReply Perform(const HttpRequest& request);

 private:
  struct FreeHeaders {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  HttpReply PerformOnce(const HttpRequest& request, std::int64_t timeout_ms);
  void SetConstantOptions();
  void SetRequestOptions(const HttpRequest& request, std::int64_t timeout_ms);
  void SetMethod(const HttpRequest& request);
  void SetHeaders(const HttpRequest& request);
  void SetBody(const HttpRequest& request);
  static std::size_t GiveBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static std::size_t TakeHeader(char* bytes, std::size_t size, std::size_t count, void* self);
  static std::size_t TakeBody(char* bytes, std::size_t size, std::size_t count, void* self);

  bool WentOut() const;
  HttpFailure Classify(CURLcode code, int status, const std::string& url) const;
  std::string Describe(CURLcode code, HttpFailure failure) const;
  HttpObstacle FindObstacle(CURLcode code) const;

  const HttpConfig config_;
  CurlProxy proxy_;
  CURL* const easy_;
  std::unique_ptr<curl_slist, FreeHeaders> header_list_;
  // What the handle is set to, so that only differences are set again.
  std::string url_;
  std::string method_;
  std::vector<std::pair<std::string, std::string>> headers_;
  bool has_headers_ = false;
  std::string method_for_headers_;

  std::string_view unsent_;  // of the body of a request that goes out once
  HttpReply* reply_ = nullptr;
  bool is_head_complete_ = false;
  std::size_t max_reply_ = 0;
  bool too_large_ = false;
  char message_[CURL_ERROR_SIZE] = "";
};

}  // namespace orvalo::platform
