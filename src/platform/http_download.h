#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/http.h"

namespace orvalo::platform {

// One file fetched block by block from an http, https or file address: for what is too large to
// hold in memory, and for callers that do something else between the blocks. Redirections are
// followed (at most 10; never from https back to http, never to a file). Answers come neither from
// a cache nor through one. Used by one thread.
class HttpDownload {
 public:
  struct Options {
    ProxyConfig proxy{ProxyMode::kSystem, "", "", "", ""};
    std::string authorities;         // a file; empty for the system's
    std::int64_t stall_ms = 30'000;  // without a byte (or a connection) for so long: failed
  };

  enum class State {
    kWaiting,  // nothing has come yet; read again
    kOpen,     // a block may be read, or has been
    kEnd,      // all has been read
    kFailed    // the address cannot be opened, or the data broke off
  };

  explicit HttpDownload(const Options& options);
  ~HttpDownload();
  HttpDownload(const HttpDownload&) = delete;
  HttpDownload& operator=(const HttpDownload&) = delete;

  // False when the system has no means for a download.
  bool IsUsable() const;

  // Begins with an address, once. kFailed for one that is none of the three kinds.
  State Open(const std::string& url);

  // Waits up to `wait_ms` for the answer to begin: kOpen as soon as its headers are complete.
  State AwaitAnswer(std::int64_t wait_ms);

  // Waits up to `wait_ms` for data; kOpen puts 1 to `limit` bytes into `block`. An answer that is
  // shorter than it claimed to be fails.
  State Read(std::string* block, std::size_t limit, std::int64_t wait_ms);

  int status() const;                // of the answer; 0 for a file, or when there is none yet
  const std::string& error() const;  // why it failed, in words, without credentials

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace orvalo::platform
