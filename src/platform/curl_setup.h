#pragma once
#include <curl/curl.h>

#include <optional>
#include <string>

#include "platform/desktop_proxy.h"
#include "platform/http.h"

namespace orvalo::platform {

// What every libcurl handle of ours has in common; for the .cpp files of this folder.

// A new handle, the library set up before the first; null when memory has run out.
CURL* OpenEasyHandle();

// No signals, certificates and host names verified. `authorities`: a file, empty for the system's.
void SetCommonOptions(CURL* easy, const std::string& authorities);

bool IsTlsCode(CURLcode code);

// How a handle's requests leave the machine. Reads the desktop's settings, if they count, when it
// is made.
class CurlProxy {
 public:
  explicit CurlProxy(ProxyConfig config);

  const ProxyConfig& config() const { return config_; }
  void SetUp(CURL* easy) const;                               // once for a handle
  void SetAddress(CURL* easy, const std::string& url) const;  // whenever its address changes

 private:
  ProxyConfig config_;
  std::optional<DesktopProxy> desktop_;
};

}  // namespace orvalo::platform
