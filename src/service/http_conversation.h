#pragma once
#include <algorithm>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <string>

#include "service/http_server.h"

namespace orvalo::service {

class HttpConversation;

// What a conversation needs of its server. The reader's thread only.
class HttpHost {
 public:
  virtual ~HttpHost() = default;
  virtual const HttpServerOptions& options() const = 0;
  virtual HttpHandler& handler() = 0;
  virtual bool stopping() const = 0;
  virtual void Work(bool takes_long, std::function<void()> job) = 0;  // on a worker
  virtual void Waits(HttpConversation& conversation) = 0;             // for its client
  virtual void Works(HttpConversation& conversation) = 0;
  virtual void Ended(HttpConversation& conversation) = 0;  // once
};

// One connection: reads a request, has it answered, writes the reply, and so on. Lives for as long
// as something of it is under way. The reader's thread only.
class HttpConversation : public std::enable_shared_from_this<HttpConversation> {
 public:
  using Time = std::chrono::steady_clock;

  virtual ~HttpConversation() = default;
  virtual void Start() = 0;
  virtual void End() = 0;     // at once, unless a worker has its request
  virtual void Expire() = 0;  // the deadline has passed
  Time::time_point deadline() const { return deadline_; }
  void Hurry(Time::time_point latest) { deadline_ = std::min(deadline_, latest); }

 protected:
  Time::time_point deadline_ = Time::time_point::max();  // max: none
};

// The socket is a new connection's. Over TLS when there is a context, which must outlive it.
std::shared_ptr<HttpConversation> MakeConversation(boost::asio::ip::tcp::socket socket,
                                                   boost::asio::ssl::context* tls, HttpHost& host);

// An address in the form in which it is compared: one of IPv4 as such, even on an IPv6 socket.
std::string NameOf(const boost::asio::ip::address& address);

// The name under which an address is counted: IPv6 by its first 64 bits.
std::string CountedAddress(const boost::asio::ip::address& address);

// For a server: TLS 1.2 with ephemeral keys and authenticated encryption, or 1.3. Throws
// std::runtime_error when key or certificate is of no use.
boost::asio::ssl::context MakeTlsContext(const std::string& key, const std::string& certificate);

}  // namespace orvalo::service
