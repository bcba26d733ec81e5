#include "service/http_server.h"

#include <civetweb.h>
#include <fmt/format.h>

#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <mutex>
#include <stdexcept>

namespace orvalo::service {
namespace {

// Unread bytes of a request that is too large are taken in up to here, so that the client, busy
// sending, comes to see the reply.
constexpr std::size_t kMostDrained = 16u << 20;

const char* ReasonOf(int status) {
  return status < 300 ? "OK" : status < 400 ? "Elsewhere" : status < 500 ? "Refused" : "Failed";
}

// Header and body in one write, else Nagle's algorithm and delayed acknowledgements add 40 ms.
void WriteReply(mg_connection* connection, const ServedReply& reply, bool close) {
  fmt::memory_buffer out;
  fmt::format_to(std::back_inserter(out),
                 "HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\n", reply.status,
                 ReasonOf(reply.status), reply.content_type, reply.body.size());
  for (const auto& [name, value] : reply.headers) {
    fmt::format_to(std::back_inserter(out), "{}: {}\r\n", name, value);
  }
  if (close) fmt::format_to(std::back_inserter(out), "Connection: close\r\n");
  fmt::format_to(std::back_inserter(out), "\r\n{}", reply.body);
  mg_write(connection, out.data(), out.size());
}

// False when the body does not arrive whole.
bool ReadBody(mg_connection* connection, ServedRequest& request, std::size_t largest,
              std::chrono::seconds patience) {
  const auto* info = mg_get_request_info(connection);
  const auto announced = info->content_length;  // -1: chunked or none
  request.body_too_large = announced > static_cast<long long>(largest);
  if (announced > 0 && !request.body_too_large) request.body.reserve(announced);
  // A read lasts until it is full, and each byte may take its time: only small ones let the end be
  // seen.
  std::array<char, 32> chunk{};
  std::size_t total = 0;
  const auto end = std::chrono::steady_clock::now() + patience;
  for (;;) {
    if (std::chrono::steady_clock::now() > end) return false;
    const int count = mg_read(connection, chunk.data(), chunk.size());
    if (count <= 0) break;
    total += static_cast<std::size_t>(count);
    if (total > largest) request.body_too_large = true;
    if (total > kMostDrained) break;
    if (!request.body_too_large) request.body.append(chunk.data(), static_cast<std::size_t>(count));
  }
  if (request.body_too_large) request.body.clear();
  return request.body_too_large || announced <= 0 || static_cast<long long>(total) == announced;
}

std::string ListeningAddress(const HttpServerOptions& options) {
  const bool v6 = options.address.find(':') != std::string::npos;
  return fmt::format("{}{}{}:{}{}", v6 ? "[" : "", options.address, v6 ? "]" : "", options.port,
                     options.certificate.empty() ? "" : "s");
}

}  // namespace

struct HttpServer::Impl {
  Impl(HttpHandler& its_handler, const HttpServerOptions& options)
      : handler(its_handler),
        largest_body(options.largest_body),
        longest_body(options.longest_body_seconds),
        crowd(options.threads / 2) {}

  HttpHandler& handler;
  std::size_t largest_body;
  std::chrono::seconds longest_body;
  int crowd;
  std::atomic<int> connections{0};
  mg_context* context = nullptr;
  std::mutex mutex;
  std::string last_message;  // of civetweb: why it does not start

  int Serve(mg_connection* connection) {
    const auto* info = mg_get_request_info(connection);
    ServedRequest request;
    request.method = info->request_method;
    request.path = info->local_uri ? info->local_uri : "";
    request.query = info->query_string ? info->query_string : "";
    request.header = [connection](const char* name) -> std::string_view {
      const char* value = mg_get_header(connection, name);
      return value ? value : "";
    };
    if (!ReadBody(connection, request, largest_body, longest_body)) {
      mg_disable_connection_keep_alive(connection);
      return 400;
    }
    const auto reply = handler.Handle(request);
    const bool close = reply.drop || request.body_too_large || connections > crowd;
    if (close) mg_disable_connection_keep_alive(connection);
    if (!reply.drop) WriteReply(connection, reply, close);
    return reply.status;
  }

  static Impl& Of(const mg_connection* connection) {
    return *static_cast<Impl*>(mg_get_user_data(mg_get_context(connection)));
  }
  static int BeginConnection(const mg_connection* connection, void**) {
    ++Of(connection).connections;
    return 0;
  }
  static void EndConnection(const mg_connection* connection) { --Of(connection).connections; }
  static int BeginRequest(mg_connection* connection) { return Of(connection).Serve(connection); }
  static int HttpError(mg_connection* connection, int status, const char*) {
    mg_disable_connection_keep_alive(connection);
    WriteReply(connection, Of(connection).handler.Malformed(status), true);
    return 0;
  }
  static int LogMessage(const mg_connection* connection, const char* message) {
    auto* context = connection ? mg_get_context(connection) : nullptr;
    auto* impl = context ? static_cast<Impl*>(mg_get_user_data(context)) : nullptr;
    if (impl) {
      std::lock_guard guard(impl->mutex);
      impl->last_message = message;
    }
    return 1;
  }
};

HttpServer::HttpServer(const HttpServerOptions& options, HttpHandler& handler)
    : impl_(std::make_unique<Impl>(handler, options)) {
  const unsigned features = options.certificate.empty() ? MG_FEATURES_DEFAULT : MG_FEATURES_TLS;
  // Without this check a missing TLS library would show at the first connection, as a crash.
  if (mg_init_library(features) != features) {
    throw std::runtime_error("the TLS library cannot be loaded");
  }
  mg_callbacks callbacks{};
  callbacks.init_connection = &Impl::BeginConnection;
  callbacks.connection_closed = &Impl::EndConnection;
  callbacks.begin_request = &Impl::BeginRequest;
  callbacks.http_error = &Impl::HttpError;
  callbacks.log_message = &Impl::LogMessage;
  const auto address = ListeningAddress(options);
  const auto threads = std::to_string(options.threads);
  std::vector<const char*> settings{"listening_ports",
                                    address.c_str(),
                                    "num_threads",
                                    threads.c_str(),
                                    "enable_keep_alive",
                                    "yes",
                                    "keep_alive_timeout_ms",
                                    "60000",
                                    "request_timeout_ms",
                                    "30000",
                                    "tcp_nodelay",
                                    "1",
                                    "connection_queue",
                                    "128",
                                    "enable_directory_listing",
                                    "no",
                                    "decode_url",
                                    "yes"};
  if (!options.certificate.empty()) {
    settings.insert(settings.end(), {"ssl_certificate", options.certificate.c_str(),
                                     "ssl_certificate_chain", options.certificate.c_str()});
  }
  settings.push_back(nullptr);
  impl_->context = mg_start(&callbacks, impl_.get(), settings.data());
  if (!impl_->context) {
    mg_exit_library();
    throw std::runtime_error(fmt::format("cannot listen on {}{}{}", address,
                                         impl_->last_message.empty() ? "" : ": ",
                                         impl_->last_message));
  }
  std::array<mg_server_port, 4> ports{};
  if (mg_get_server_ports(impl_->context, static_cast<int>(ports.size()), ports.data()) > 0) {
    port_ = ports[0].port;
  }
}

HttpServer::~HttpServer() {
  mg_stop(impl_->context);
  mg_exit_library();
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
    return address.find_first_not_of("0123456789abcdefABCDEF:.") == std::string::npos;
  }
  if (address == "localhost") address = "127.0.0.1";
  return address.find_first_not_of("0123456789.") == std::string::npos;
}

bool IsLoopback(const std::string& address) {
  return address.starts_with("127.") || address == "::1";
}

}  // namespace orvalo::service
