#pragma once
#include <curl/curl.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/desktop_proxy.h"
#include "platform/http.h"
#include "platform/proxy_script.h"

namespace orvalo::platform {

// What every libcurl handle of ours has in common; for the .cpp files of this folder.

// A new handle, the library set up before the first; null when memory has run out.
CURL* OpenEasyHandle();

// No signals, certificates and host names verified. `authorities`: a file, empty for the system's.
void SetCommonOptions(CURL* easy, const std::string& authorities);

bool IsTlsCode(CURLcode code);

// How a handle's requests leave the machine. Reads the desktop's settings, if they count, and
// fetches the script that they name, when it is made.
class CurlProxy {
 public:
  // Whether a request goes through a proxy. What the environment or the desktop excepts, only
  // libcurl knows.
  enum class Use { kNever, kPerhaps, kAlways };

  explicit CurlProxy(ProxyConfig config);

  Use use() const;                                      // for the address that was set last
  void SetUp(CURL* easy) const;                         // once for a handle
  void SetAddress(CURL* easy, const std::string& url);  // whenever its address changes

  // After the proxy could not be reached: sets the one that the script names next. False when there
  // is none; the next address then begins with the first again.
  bool SetNext(CURL* easy);

 private:
  void SetChoice(CURL* easy) const;

  ProxyConfig config_;
  std::optional<DesktopProxy> desktop_;
  std::optional<ProxyScript> script_;
  std::vector<std::string> choices_;  // the script's, for the address that was set last
  std::size_t choice_ = 0;
};

}  // namespace orvalo::platform
