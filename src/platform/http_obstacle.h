#pragma once
#include <curl/curl.h>

#include <string_view>

#include "platform/http.h"

namespace orvalo::platform {

// What libcurl tells of a request that failed; for the .cpp files of this folder.
struct CurlFault {
  CURLcode code = CURLE_OK;
  long verified = 0;         // CURLINFO_SSL_VERIFYRESULT: what OpenSSL said of the certificate
  long system_error = 0;     // CURLINFO_OS_ERRNO
  std::string_view message;  // CURLOPT_ERRORBUFFER
};

// A pure function, any thread.
HttpObstacle ObstacleOf(const CurlFault& fault);

}  // namespace orvalo::platform
