#include "platform/http_download.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>

#include "platform/collation.h"
#include "platform/curl_setup.h"

namespace orvalo::platform {
namespace {

constexpr char kAgent[] = "Orvalo.exe";
constexpr long kMostRedirections = 10;
constexpr std::size_t kReadAhead = 64u << 10;  // bytes; then the server has to wait

std::int64_t SteadyMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

bool BeginsWith(std::string_view url, std::string_view scheme) {
  return url.size() > scheme.size() && EqualNoCaseAscii(url.substr(0, scheme.size()), scheme);
}

}  // namespace

struct HttpDownload::Impl {
  explicit Impl(const Options& from)
      : options(from), proxy(from.proxy), easy(OpenEasyHandle()), multi(curl_multi_init()) {}

  ~Impl() {
    if (is_added) curl_multi_remove_handle(multi, easy);
    curl_easy_cleanup(easy);
    curl_multi_cleanup(multi);
    curl_slist_free_all(headers);
  }

  void SetUp(const std::string& url) {
    SetCommonOptions(easy, options.authorities);
    proxy.SetUp(easy);
    proxy.SetAddress(easy, url);
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_USERAGENT, kAgent);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https,file");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR,
                     BeginsWith(url, "https://") ? "https" : "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, kMostRedirections);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.stall_ms));
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &TakeHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &TakeBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    for (const char* line : {"Cache-Control: no-cache", "Pragma: no-cache"})
      headers = curl_slist_append(headers, line);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
  }

  static std::size_t TakeHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& impl = *static_cast<Impl*>(self);
    const std::string_view line(bytes, size * count);
    impl.TouchStall();
    // Of a file, and of each answer of a redirection: the last one counts.
    if (line.starts_with("HTTP/")) impl.is_answered = impl.is_head_complete = false;
    if (line == "\r\n" || line == "\n") {
      impl.is_head_complete = true;
      curl_easy_getinfo(impl.easy, CURLINFO_RESPONSE_CODE, &impl.status);
      impl.is_answered = impl.status >= 200 && impl.status / 100 != 3;
    }
    return size * count;
  }

  static std::size_t TakeBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& impl = *static_cast<Impl*>(self);
    const std::size_t length = size * count;
    impl.TouchStall();
    if (impl.data.size() - impl.taken >= kReadAhead) {
      impl.is_paused = true;
      return CURL_WRITEFUNC_PAUSE;
    }
    impl.is_answered = true;
    impl.data.append(bytes, length);
    return length;
  }

  void TouchStall() { last_byte = SteadyMilliseconds(); }

  // Moves the transfer on, waiting for something to happen if nothing has.
  void Step(std::int64_t wait_ms) {
    if (is_done) return;
    Perform();
    if (is_done || HasData() || wait_ms <= 0) return;
    curl_multi_poll(multi, nullptr, 0, static_cast<int>(std::min<std::int64_t>(wait_ms, 1000)),
                    nullptr);
    Perform();
    if (is_done || HasData()) return;
    if (SteadyMilliseconds() - last_byte > options.stall_ms) Fail("The server has gone silent");
  }

  void Perform() {
    int running = 0;
    curl_multi_perform(multi, &running);
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(multi, &left)) {
      if (message->msg != CURLMSG_DONE) continue;
      const CURLcode code = message->data.result;
      if (SetOutAnew(code)) continue;
      is_done = true;
      // The library's longer messages may quote an address with credentials in it.
      if (code != CURLE_OK) {
        Fail(curl_easy_strerror(code));
      } else if (!is_head_complete) {
        // To libcurl an answer that breaks off within its headers is complete, and empty.
        Fail("The connection was closed within the answer's headers");
      }
    }
  }

  // Through the next proxy, when this one could not be reached.
  bool SetOutAnew(CURLcode code) {
    if (code != CURLE_COULDNT_CONNECT && code != CURLE_COULDNT_RESOLVE_PROXY) return false;
    if (!proxy.SetNext(easy)) return false;
    curl_multi_remove_handle(multi, easy);
    is_added = curl_multi_add_handle(multi, easy) == CURLM_OK;
    TouchStall();
    return is_added;
  }

  void Fail(std::string reason) {
    is_done = has_failed = true;
    error = std::move(reason);
  }

  bool HasData() const { return data.size() > taken; }

  const Options options;
  CurlProxy proxy;
  CURL* const easy;
  CURLM* const multi;
  curl_slist* headers = nullptr;
  bool is_added = false;
  bool is_answered = false;
  bool is_head_complete = true;  // a file may have none
  bool is_paused = false;
  bool is_done = false;
  bool has_failed = false;
  long status = 0;
  std::int64_t last_byte = 0;
  std::string data;
  std::size_t taken = 0;  // of `data`, already read
  std::string error;
};

HttpDownload::HttpDownload(const Options& options) : impl_(std::make_unique<Impl>(options)) {}
HttpDownload::~HttpDownload() = default;

bool HttpDownload::IsUsable() const { return impl_->easy != nullptr && impl_->multi != nullptr; }

HttpDownload::State HttpDownload::Open(const std::string& url) {
  const bool known =
      BeginsWith(url, "http://") || BeginsWith(url, "https://") || BeginsWith(url, "file://");
  if (!IsUsable() || !known) {
    impl_->Fail("The address is neither http, https nor file");
    return State::kFailed;
  }
  impl_->SetUp(url);
  impl_->TouchStall();
  impl_->is_added = curl_multi_add_handle(impl_->multi, impl_->easy) == CURLM_OK;
  if (!impl_->is_added) impl_->Fail("The system is out of memory");
  return impl_->has_failed ? State::kFailed : State::kWaiting;
}

HttpDownload::State HttpDownload::AwaitAnswer(std::int64_t wait_ms) {
  if (!impl_->is_answered) impl_->Step(wait_ms);
  // An answer that has begun is one, even if its data have already broken off.
  if (impl_->is_answered || (impl_->is_done && !impl_->has_failed)) return State::kOpen;
  return impl_->has_failed ? State::kFailed : State::kWaiting;
}

HttpDownload::State HttpDownload::Read(std::string* block, std::size_t limit,
                                       std::int64_t wait_ms) {
  Impl& impl = *impl_;
  if (!impl.HasData()) {
    impl.data.clear();
    impl.taken = 0;
    if (impl.is_paused) {
      impl.is_paused = false;
      impl.TouchStall();
      curl_easy_pause(impl.easy, CURLPAUSE_CONT);
    }
    if (!impl.HasData()) impl.Step(wait_ms);
  }
  if (impl.HasData()) {
    const std::size_t length = std::min(limit, impl.data.size() - impl.taken);
    block->assign(impl.data, impl.taken, length);
    impl.taken += length;
    return State::kOpen;
  }
  if (impl.has_failed) return State::kFailed;
  return impl.is_done ? State::kEnd : State::kWaiting;
}

int HttpDownload::status() const {
  long status = 0;
  if (impl_->easy != nullptr) curl_easy_getinfo(impl_->easy, CURLINFO_RESPONSE_CODE, &status);
  return static_cast<int>(status);
}

const std::string& HttpDownload::error() const { return impl_->error; }

}  // namespace orvalo::platform
