#include "platform/curl_setup.h"

#include <mutex>
#include <utility>

#include "platform/broken_pipe.h"
#include "platform/collation.h"

namespace orvalo::platform {

CURL* OpenEasyHandle() {
  static std::once_flag initialized;
  std::call_once(initialized, [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    SurviveBrokenPipes();  // libcurl, told to use no signals, leaves TLS connections to its user
  });
  return curl_easy_init();
}

void SetCommonOptions(CURL* easy, const std::string& authorities) {
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  // A name server that does not answer must hold up neither a time limit nor a cancellation: the
  // thread that asks it is left behind.
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  if (authorities.empty()) return;
  curl_easy_setopt(easy, CURLOPT_CAINFO, authorities.c_str());
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
}

bool IsTlsCode(CURLcode code) {
  switch (code) {
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_USE_SSL_FAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
      return true;
    default:
      return false;
  }
}

CurlProxy::CurlProxy(ProxyConfig config) : config_(std::move(config)) {
  const bool system = config_.mode != ProxyMode::kDirect && config_.mode != ProxyMode::kNamed;
  if (!system || HasProxyEnvironment()) return;
  desktop_ = ReadDesktopProxy();
  if (!desktop_->script.empty() && config_.mode != ProxyMode::kSystemNoScripts)
    script_ = ProxyScript::Load(desktop_->script);
}

CurlProxy::Use CurlProxy::use() const {
  if (config_.mode == ProxyMode::kDirect) return Use::kNever;
  if (config_.mode == ProxyMode::kNamed) return Use::kAlways;
  if (choices_.empty()) return Use::kPerhaps;
  return choices_[choice_].empty() ? Use::kNever : Use::kAlways;
}

void CurlProxy::SetUp(CURL* easy) const {
  curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  if (config_.mode == ProxyMode::kDirect) curl_easy_setopt(easy, CURLOPT_PROXY, "");
  if (config_.mode != ProxyMode::kNamed) return;  // libcurl reads the environment itself
  const std::string& host = config_.host;
  const bool bare_ipv6 =
      host.find(':') != host.rfind(':') && host.find_first_of("/[") == std::string::npos;
  std::string address = bare_ipv6 ? "[" + host + "]" : host;
  if (!config_.port.empty()) address += ":" + config_.port;
  curl_easy_setopt(easy, CURLOPT_PROXY, address.c_str());
  curl_easy_setopt(easy, CURLOPT_NOPROXY, "");  // the environment's exceptions do not hold
  if (config_.user.empty()) return;
  curl_easy_setopt(easy, CURLOPT_PROXYAUTH, static_cast<long>(CURLAUTH_ANY));
  curl_easy_setopt(easy, CURLOPT_PROXYUSERNAME, config_.user.c_str());
  curl_easy_setopt(easy, CURLOPT_PROXYPASSWORD, config_.password.c_str());
}

void CurlProxy::SetAddress(CURL* easy, const std::string& url) {
  if (!desktop_) return;
  if (script_) {
    const auto& choices = script_->ProxiesFor(url);
    if (choices != choices_) choice_ = 0;
    choices_ = choices;
    SetChoice(easy);
    return;
  }
  const bool https = url.size() > 5 && EqualNoCaseAscii(url.substr(0, 5), "https");
  curl_easy_setopt(easy, CURLOPT_PROXY, (https ? desktop_->https : desktop_->http).c_str());
  curl_easy_setopt(easy, CURLOPT_NOPROXY, desktop_->exceptions.c_str());
  curl_easy_setopt(easy, CURLOPT_PROXYAUTH, static_cast<long>(CURLAUTH_ANY));
}

bool CurlProxy::SetNext(CURL* easy) {
  if (choice_ + 1 >= choices_.size()) {
    choice_ = 0;
  } else {
    ++choice_;
  }
  if (!choices_.empty()) SetChoice(easy);
  return choice_ > 0;
}

void CurlProxy::SetChoice(CURL* easy) const {
  curl_easy_setopt(easy, CURLOPT_PROXY, choices_[choice_].c_str());
  curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
}

}  // namespace orvalo::platform
