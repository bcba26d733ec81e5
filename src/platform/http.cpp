#include "platform/http.h"

#include <algorithm>
#include <mutex>
#include <string_view>

#include "platform/collation.h"
#include "platform/http_handle.h"

namespace orvalo::platform {
namespace {

bool HasControls(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) == 0x7F;
  });
}

bool IsToken(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_';
  });
}

bool HasScheme(std::string_view url, std::string_view scheme) {
  return url.size() > scheme.size() && EqualNoCaseAscii(url.substr(0, scheme.size()), scheme);
}

// Null, or why the request cannot go out as it is: a line break in it would begin a header of its
// own.
const char* FindFault(const HttpRequest& request) {
  if (!HasScheme(request.url, "http://") && !HasScheme(request.url, "https://"))
    return "The address is neither http nor https";
  if (HasControls(request.url)) return "The address holds control characters";
  if (!IsToken(request.method)) return "The method is malformed";
  for (const auto& [name, value] : request.headers)
    if (!IsToken(name) || HasControls(value)) return "A header is malformed";
  return nullptr;
}

}  // namespace

struct HttpClient::Impl {
  // A handle that nobody uses, or a new one; of the configuration that holds now.
  std::unique_ptr<CurlHandle> Take() {
    std::unique_lock lock(mutex);
    if (!idle.empty()) {
      auto handle = std::move(idle.back());
      idle.pop_back();
      return handle;
    }
    HttpConfig now = config;
    lock.unlock();
    return std::make_unique<CurlHandle>(std::move(now));
  }

  void GiveBack(std::unique_ptr<CurlHandle> handle) {
    std::lock_guard lock(mutex);
    if (handle->generation() == config.generation) idle.push_back(std::move(handle));
  }

  template <typename Change>
  void Configure(Change change) {
    std::vector<std::unique_ptr<CurlHandle>> outdated;  // closed without the lock
    std::lock_guard lock(mutex);
    change(config);
    ++config.generation;
    outdated.swap(idle);
  }

  std::mutex mutex;
  HttpConfig config;
  std::vector<std::unique_ptr<CurlHandle>> idle;  // the last given back is the first taken
};

HttpClient::HttpClient() : impl_(std::make_unique<Impl>()) {}
HttpClient::~HttpClient() = default;

void HttpClient::SetProxy(const ProxyConfig& proxy) {
  impl_->Configure([&](HttpConfig& config) { config.proxy = proxy; });
}

void HttpClient::SetCertificateAuthorities(const std::string& file) {
  impl_->Configure([&](HttpConfig& config) { config.authorities = file; });
}

HttpReply HttpClient::Perform(const HttpRequest& request) {
  if (const char* fault = FindFault(request)) {
    HttpReply reply;
    reply.failure = HttpFailure::kBadRequest;
    reply.error = fault;
    return reply;
  }
  std::unique_ptr<CurlHandle> handle = impl_->Take();
  HttpReply reply = handle->Perform(request);
  impl_->GiveBack(std::move(handle));
  return reply;
}

}  // namespace orvalo::platform
