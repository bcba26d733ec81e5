#include "service/http_server.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>
#include <charconv>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>

#include "service/http_conversation.h"
#include "service/http_guests.h"

namespace orvalo::service {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::chrono::milliseconds kLookAround{200};
constexpr std::chrono::seconds kFarewell{2};

}  // namespace

struct HttpServer::Impl final : HttpHost {
  Impl(const HttpServerOptions& its_options, HttpHandler& its_handler)
      : its(its_options),
        answers(its_handler),
        acceptor(io),
        timer(io),
        guests(its.connections, its.connections_of_an_address),
        workers(static_cast<std::size_t>(its.threads)),
        slow_workers(static_cast<std::size_t>(its.slow_threads)),
        guard(asio::make_work_guard(io)) {
    if (its.has_tls()) tls.emplace(MakeTlsContext(its.tls_key, its.tls_certificate));
  }

  const HttpServerOptions& options() const override { return its; }
  HttpHandler& handler() override { return answers; }
  bool stopping() const override { return ends; }
  void Work(bool takes_long, std::function<void()> job) override {
    asio::post(takes_long ? slow_workers : workers, std::move(job));
  }
  void Waits(HttpConversation& conversation) override { guests.Waits(&conversation); }
  void Works(HttpConversation& conversation) override { guests.Works(&conversation); }
  void Ended(HttpConversation& conversation) override {
    guests.Leave(&conversation);
    if (ends && guests.empty()) timer.cancel();
  }

  int Listen() {
    const auto address = asio::ip::make_address(its.address);
    const tcp::endpoint endpoint(address, static_cast<unsigned short>(its.port));
    acceptor.open(endpoint.protocol());
    acceptor.set_option(tcp::acceptor::reuse_address(true));
    acceptor.bind(endpoint);
    acceptor.listen(tcp::acceptor::max_listen_connections);
    const int port = acceptor.local_endpoint().port();
    Accept();
    LookAround();
    reader = std::thread([this] { io.run(); });
    return port;
  }

  void Accept() {
    accepts = true;
    acceptor.async_accept([this](error_code error, tcp::socket socket) {
      if (ends) return;
      if (!error) {
        Admit(std::move(socket));
        return Accept();
      }
      // No file descriptor is left, or the like: again in a moment.
      accepts = false;
      if (auto* const leaver = guests.PickLeaver()) leaver->End();
    });
  }

  void Admit(tcp::socket socket) {
    error_code error;
    const auto peer = socket.remote_endpoint(error).address();
    if (error) return;
    socket.set_option(tcp::no_delay(true), error);
    const bool is_proxy =
        std::find(its.proxies.begin(), its.proxies.end(), NameOf(peer)) != its.proxies.end();
    const auto guest = MakeConversation(std::move(socket), tls ? &*tls : nullptr, *this);
    HttpConversation* leaver = nullptr;
    const bool enters = guests.Enter(guest.get(), CountedAddress(peer), is_proxy, leaver);
    if (leaver != nullptr) leaver->End();
    if (enters) guest->Start();
  }

  void LookAround() {
    timer.expires_after(kLookAround);
    timer.async_wait([this](error_code) {
      if (ends && guests.empty()) return;
      const auto now = HttpConversation::Time::now();
      guests.ForEach([&](HttpConversation& guest) {
        if (guest.deadline() <= now) guest.Expire();
      });
      if (!accepts && !ends) Accept();
      LookAround();
    });
  }

  // Requests in hand are finished; their replies have a moment to be taken.
  void Stop() {
    std::promise<void> stopped;
    asio::post(io, [&] {
      ends = true;
      acceptor.close();
      while (auto* const leaver = guests.PickLeaver()) leaver->End();
      const auto latest = HttpConversation::Time::now() + kFarewell;
      guests.ForEach([&](HttpConversation& guest) {
        if (guest.deadline() != HttpConversation::Time::time_point::max()) guest.Hurry(latest);
      });
      timer.cancel();
      stopped.set_value();
    });
    stopped.get_future().wait();
    workers.join();
    slow_workers.join();
    guard.reset();
    reader.join();
  }

  const HttpServerOptions its;
  HttpHandler& answers;
  asio::io_context io{1};
  std::optional<asio::ssl::context> tls;
  tcp::acceptor acceptor;
  asio::steady_timer timer;
  HttpGuests guests;
  bool ends = false, accepts = false;  // the reader's
  asio::thread_pool workers, slow_workers;
  asio::executor_work_guard<asio::io_context::executor_type> guard;
  std::thread reader;
};

HttpServer::HttpServer(const HttpServerOptions& options, HttpHandler& handler)
    : impl_(std::make_unique<Impl>(options, handler)) {
  try {
    port_ = impl_->Listen();
  } catch (const boost::system::system_error& failure) {
    throw std::runtime_error(fmt::format("cannot listen on {} port {}: {}", options.address,
                                         options.port, failure.code().message()));
  }
}

HttpServer::~HttpServer() { impl_->Stop(); }

std::optional<std::string> NumericAddress(const std::string& text) {
  error_code error;
  const auto address = asio::ip::make_address(text, error);
  if (error) return std::nullopt;
  return NameOf(address);
}

bool SplitAddress(const std::string& text, std::string& address, int& port) {
  const auto colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) return false;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, port);
  if (error != std::errc() || stop != end || port < 0 || port > 65535) return false;
  address = text.substr(0, colon);
  if (address.front() == '[' && address.back() == ']') {
    address = address.substr(1, address.size() - 2);
    return address.find(':') != std::string::npos && NumericAddress(address).has_value();
  }
  if (address == "localhost") address = "127.0.0.1";
  return address.find(':') == std::string::npos && NumericAddress(address).has_value();
}

bool IsLoopback(const std::string& address) {
  return address.starts_with("127.") || address == "::1";
}

}  // namespace orvalo::service
