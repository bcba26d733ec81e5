#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo::platform {

// An automatic proxy configuration script ("PAC"): a JavaScript function FindProxyForURL that
// names the proxies for an address. It is somebody else's program, so it runs in a process of its
// own (`pactester` of pacparser, which gives it the usual functions and nothing of the file
// system) and is ended when it takes too long. One thread at a time.
class ProxyScript {
 public:
  // Fetches the script, directly: an http, https or file address. Nothing when it cannot be had
  // within 5 s, exceeds 1 MB (what pactester takes), or pactester is not installed.
  static std::optional<ProxyScript> Load(const std::string& address);

  // The proxies in the order in which to try them, as libcurl takes them; "" means directly, and
  // is the whole answer of a script that fails or does not end within 5 s. The script sees scheme,
  // host and port of `url` only. Remembers the answer for the last of them.
  const std::vector<std::string>& ProxiesFor(std::string_view url);

 private:
  explicit ProxyScript(std::string text) : text_(std::move(text)) {}

  std::string text_;
  std::string origin_;
  std::vector<std::string> proxies_;
};

// The proxies in the answer of a script, such as "PROXY a:8080; SOCKS5 b:1080; DIRECT"; what is
// not understood is left out, and {""} when nothing remains.
std::vector<std::string> ParseScriptAnswer(std::string_view answer);

}  // namespace orvalo::platform
