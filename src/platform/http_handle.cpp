#include "platform/http_handle.h"

#include <algorithm>
#include <chrono>
#include <string_view>

#include "platform/collation.h"
#include "platform/http_obstacle.h"

namespace orvalo::platform {
namespace {

HttpReply FailedReply(HttpFailure failure, std::string error) {
  HttpReply reply;
  reply.failure = failure;
  reply.error = std::move(error);
  return reply;
}

// The host that a URL names, for comparing with the one in the library's messages.
std::string_view HostOf(std::string_view url) {
  url.remove_prefix(std::min(url.find("//"), url.size() - 2) + 2);
  url = url.substr(0, url.find_first_of("/?#"));
  if (const auto at = url.rfind('@'); at != std::string_view::npos) url.remove_prefix(at + 1);
  if (url.starts_with('[')) return url.substr(1, url.find(']') - 1);
  return url.substr(0, url.find(':'));
}

}  // namespace

CurlHandle::CurlHandle(HttpConfig config)
    : config_(std::move(config)), proxy_(config_.proxy), easy_(OpenEasyHandle()) {
  if (easy_ == nullptr) return;
  SetConstantOptions();
  proxy_.SetUp(easy_);
}

CurlHandle::~CurlHandle() { curl_easy_cleanup(easy_); }

HttpReply CurlHandle::Perform(const HttpRequest& request) {
  if (easy_ == nullptr)
    return FailedReply(HttpFailure::kUnreachable, "The system is out of memory");
  if (config_.proxy.mode == ProxyMode::kNamed && config_.proxy.host.empty())
    return FailedReply(HttpFailure::kProxyUnreachable, "No proxy server is named");
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + std::chrono::milliseconds(request.timeout_ms);
  for (std::int64_t left = request.timeout_ms;;) {
    HttpReply reply = PerformOnce(request, left);
    if (reply.failure != HttpFailure::kProxyUnreachable || !proxy_.SetNext(easy_)) return reply;
    left = std::chrono::duration_cast<std::chrono::milliseconds>(end - steady_clock::now()).count();
    if (left <= 0) return reply;
  }
}

HttpReply CurlHandle::PerformOnce(const HttpRequest& request, std::int64_t timeout_ms) {
  SetRequestOptions(request, timeout_ms);
  HttpReply reply;
  reply_ = &reply;
  max_reply_ = request.max_reply;
  too_large_ = false;
  is_head_complete_ = false;
  message_[0] = '\0';
  const CURLcode code = curl_easy_perform(easy_);
  long status = 0;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  reply.status = static_cast<int>(status);
  reply.failure = Classify(code, reply.status, request.url);
  if (reply.failure == HttpFailure::kNone) {
    const char* type = nullptr;
    curl_easy_getinfo(easy_, CURLINFO_CONTENT_TYPE, &type);
    if (type != nullptr) reply.content_type = type;
  } else {
    reply.body.clear();
    reply.error = Describe(code, reply.failure);
    reply.obstacle = FindObstacle(code);
  }
  return reply;
}

void CurlHandle::SetConstantOptions() {
  SetCommonOptions(easy_, config_.authorities);
  curl_easy_setopt(easy_, CURLOPT_TCP_NODELAY, 1L);
  curl_easy_setopt(easy_, CURLOPT_TCP_KEEPALIVE, 1L);
  curl_easy_setopt(easy_, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy_, CURLOPT_ERRORBUFFER, message_);
  curl_easy_setopt(easy_, CURLOPT_READFUNCTION, &GiveBody);
  curl_easy_setopt(easy_, CURLOPT_READDATA, this);
  curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, &TakeHeader);
  curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &TakeBody);
  curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
}

void CurlHandle::SetRequestOptions(const HttpRequest& request, std::int64_t timeout_ms) {
  if (url_ != request.url) {
    url_ = request.url;
    curl_easy_setopt(easy_, CURLOPT_URL, url_.c_str());
    proxy_.SetAddress(easy_, url_);
  }
  SetMethod(request);
  SetHeaders(request);
  curl_easy_setopt(easy_, CURLOPT_FRESH_CONNECT, request.once && request.body.empty() ? 1L : 0L);
  // To libcurl 0 means "for ever".
  constexpr std::int64_t kLongest = 24L * 3600 * 1000;
  curl_easy_setopt(easy_, CURLOPT_TIMEOUT_MS,
                   static_cast<long>(std::clamp<std::int64_t>(timeout_ms, 1, kLongest)));
  curl_easy_setopt(
      easy_, CURLOPT_CONNECTTIMEOUT_MS,
      static_cast<long>(std::clamp<std::int64_t>(request.connect_timeout_ms, 1, kLongest)));
}

void CurlHandle::SetMethod(const HttpRequest& request) {
  const bool plain_get = request.method == "GET" && request.body.empty();
  if (!plain_get && request.method != "HEAD") SetBody(request);
  const std::string& method = plain_get ? "" : request.method;
  if (method_ == method) return;
  method_ = method;
  if (plain_get) {
    curl_easy_setopt(easy_, CURLOPT_CUSTOMREQUEST, nullptr);
    curl_easy_setopt(easy_, CURLOPT_HTTPGET, 1L);
  } else if (method == "HEAD") {
    curl_easy_setopt(easy_, CURLOPT_CUSTOMREQUEST, nullptr);
    curl_easy_setopt(easy_, CURLOPT_NOBODY, 1L);
  } else {
    curl_easy_setopt(easy_, CURLOPT_NOBODY, 0L);
    curl_easy_setopt(easy_, CURLOPT_POST, 1L);
    curl_easy_setopt(easy_, CURLOPT_CUSTOMREQUEST, method == "POST" ? nullptr : method.c_str());
  }
}

// libcurl sends a request again when the connection it was sent on dies without a reply. What it
// draws from a function it cannot send again, unless there was nothing to draw: an empty body gets
// a connection of its own, on which nothing is retried.
void CurlHandle::SetBody(const HttpRequest& request) {
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE,
                   static_cast<curl_off_t>(request.body.size()));
  const bool drawn = request.once && !request.body.empty();
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, drawn ? nullptr : request.body.data());
  unsent_ = request.body;
}

std::size_t CurlHandle::GiveBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& unsent = static_cast<CurlHandle*>(self)->unsent_;
  const auto length = unsent.copy(bytes, size * count);
  unsent.remove_prefix(length);
  return length;
}

void CurlHandle::SetHeaders(const HttpRequest& request) {
  const bool same_kind = method_for_headers_ == request.method;
  if (has_headers_ && same_kind && headers_ == request.headers) return;
  method_for_headers_ = request.method;
  headers_ = request.headers;
  has_headers_ = true;
  decltype(header_list_) list;
  const auto append = [&list](const std::string& line) {
    curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) return;
    (void)list.release();
    list.reset(longer);
  };
  // Neither a wait for the server's consent nor a content type that nobody asked for; without a
  // body libcurl sends neither by itself.
  const bool has_body = !request.body.empty() || request.method != "GET";
  const bool typed = std::any_of(headers_.begin(), headers_.end(), [](const auto& header) {
    return EqualNoCaseAscii(header.first, "Content-Type");
  });
  if (has_body) append("Expect:");
  if (has_body && !typed) append("Content-Type:");
  for (const auto& [name, value] : headers_)
    append(value.empty() ? name + ";" : name + ": " + value);
  curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, list.get());
  header_list_ = std::move(list);
}

// libcurl takes a reply that breaks off within its headers for a complete one; the empty line
// tells.
std::size_t CurlHandle::TakeHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& handle = *static_cast<CurlHandle*>(self);
  const std::string_view line(bytes, size * count);
  if (line == "\r\n" || line == "\n") handle.is_head_complete_ = true;
  if (line.starts_with("HTTP/")) handle.is_head_complete_ = false;  // a further reply, as after 100
  return size * count;
}

std::size_t CurlHandle::TakeBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& handle = *static_cast<CurlHandle*>(self);
  const std::size_t length = size * count;
  std::string& body = handle.reply_->body;
  if (length > handle.max_reply_ - body.size()) {
    handle.too_large_ = true;
    return CURL_WRITEFUNC_ERROR;
  }
  body.append(bytes, length);
  return length;
}

// True unless it is certain that no byte of the request was sent. Both figures count over the
// attempts that libcurl makes by itself when a kept connection turns out to be closed; the size
// alone would also count a request to a proxy to connect through.
bool CurlHandle::WentOut() const {
  long sent = 0;
  curl_off_t started = 0;
  curl_easy_getinfo(easy_, CURLINFO_REQUEST_SIZE, &sent);
  curl_easy_getinfo(easy_, CURLINFO_PRETRANSFER_TIME_T, &started);
  return sent > 0 && started > 0;
}

HttpFailure CurlHandle::Classify(CURLcode code, int status, const std::string& url) const {
  const bool direct = proxy_.use() == CurlProxy::Use::kNever;
  if (code == CURLE_OK && !is_head_complete_) return HttpFailure::kNoReply;
  if (code == CURLE_OK)
    return status == 407 && !direct ? HttpFailure::kProxyRefused : HttpFailure::kNone;
  if (too_large_) return HttpFailure::kTooLarge;
  if (WentOut()) return HttpFailure::kNoReply;
  long connect_status = 0;
  curl_easy_getinfo(easy_, CURLINFO_HTTP_CONNECTCODE, &connect_status);
  if (connect_status >= 300) return HttpFailure::kProxyRefused;
  if (IsTlsCode(code)) return HttpFailure::kTls;
  const bool named = proxy_.use() == CurlProxy::Use::kAlways;
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_URL_MALFORMAT:
      return HttpFailure::kBadRequest;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
      return HttpFailure::kProxyUnreachable;
    case CURLE_COULDNT_CONNECT: {
      if (named) return HttpFailure::kProxyUnreachable;
      // Only libcurl knows whether the environment's proxy held for this address: its message names
      // the peer that it could not connect to.
      constexpr std::string_view kOpening = "Failed to connect to ";
      const std::string_view message = message_;
      if (direct || !message.starts_with(kOpening)) return HttpFailure::kUnreachable;
      const std::string_view peer = message.substr(kOpening.size());
      return peer.starts_with(std::string(HostOf(url)) + " port") ? HttpFailure::kUnreachable
                                                                  : HttpFailure::kProxyUnreachable;
    }
    default:
      // All that was on the line is the proxy, which broke off before it had connected through.
      return named ? HttpFailure::kProxyUnreachable : HttpFailure::kUnreachable;
  }
}

HttpObstacle CurlHandle::FindObstacle(CURLcode code) const {
  if (code == CURLE_OK) return HttpObstacle::kNotKnown;
  long verified = 0, error = 0;
  curl_easy_getinfo(easy_, CURLINFO_SSL_VERIFYRESULT, &verified);
  curl_easy_getinfo(easy_, CURLINFO_OS_ERRNO, &error);
  return ObstacleOf({code, verified, error, message_});
}

std::string CurlHandle::Describe(CURLcode code, HttpFailure failure) const {
  if (failure == HttpFailure::kTooLarge)
    return "The reply is larger than " + std::to_string(max_reply_) + " bytes";
  if (code == CURLE_OK && failure == HttpFailure::kNoReply)
    return "The connection was closed within the reply's headers";
  if (code == CURLE_OK) return "The proxy server asks for a user name and password";
  // Some messages quote an address with the credentials in it; what the codes say never does.
  const std::string_view message = message_;
  const bool quotes = code == CURLE_URL_MALFORMAT || code == CURLE_UNSUPPORTED_PROTOCOL ||
                      code == CURLE_COULDNT_RESOLVE_PROXY ||
                      message.find('@') != std::string_view::npos;
  return message.empty() || quotes ? curl_easy_strerror(code) : std::string(message);
}

}  // namespace orvalo::platform
