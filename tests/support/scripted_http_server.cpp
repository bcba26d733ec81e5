#include "support/scripted_http_server.h"

#include <civetweb.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <stdexcept>
#include <utility>

#include "support/stop_server.h"

namespace orvalo::test {
namespace {

RecordedRequest ReadRequest(mg_connection* connection) {
  const auto* info = mg_get_request_info(connection);
  RecordedRequest request{info->request_method,
                          info->local_uri,
                          "",
                          {},
                          info->remote_port,
                          info->query_string == nullptr ? "" : info->query_string};
  for (int i = 0; i < info->num_headers; ++i) {
    std::string name = info->http_headers[i].name;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    request.headers[name] = info->http_headers[i].value;
  }
  std::array<char, 8192> part;
  int count = 0;
  while ((count = mg_read(connection, part.data(), part.size())) > 0) {
    request.body.append(part.data(), static_cast<std::size_t>(count));
  }
  return request;
}

}  // namespace

ScriptedHttpServer::ScriptedHttpServer(Script script) : script_(std::move(script)) {
  // Without the check of the domain it can stand in for a proxy, too.
  const char* options[] = {"listening_ports",          "127.0.0.1:0", "num_threads", "4",
                           "enable_keep_alive",        "yes",         "tcp_nodelay", "1",
                           "enable_auth_domain_check", "no",          nullptr};
  const mg_callbacks callbacks{};
  context_ = mg_start(&callbacks, nullptr, options);
  if (context_ == nullptr) throw std::runtime_error("the scripted server cannot listen");
  mg_server_port port{};
  mg_get_server_ports(context_, 1, &port);
  port_ = port.port;
  mg_set_request_handler(context_, "/", &ScriptedHttpServer::Handle, this);
}

ScriptedHttpServer::~ScriptedHttpServer() { StopServer(context_, port_); }

std::vector<RecordedRequest> ScriptedHttpServer::requests() const {
  std::lock_guard guard(mutex_);
  return requests_;
}

void ScriptedHttpServer::SetScript(Script script) {
  std::lock_guard guard(mutex_);
  script_ = std::move(script);
}

ScriptedReply ScriptedHttpServer::Record(RecordedRequest request) {
  std::lock_guard guard(mutex_);
  requests_.push_back(std::move(request));
  return script_(requests_.back());
}

int ScriptedHttpServer::Handle(mg_connection* connection, void* server) {
  const auto reply = static_cast<ScriptedHttpServer*>(server)->Record(ReadRequest(connection));
  if (reply.wait) reply.wait();
  if (reply.cut || !reply.raw.empty()) {
    mg_disable_connection_keep_alive(connection);
    mg_write(connection, reply.raw.data(), reply.raw.size());
    return reply.status;
  }
  mg_printf(connection, "HTTP/1.1 %d Scripted\r\nContent-Type: %s\r\nContent-Length: %zu\r\n\r\n",
            reply.status, reply.content_type.c_str(), reply.body.size());
  mg_write(connection, reply.body.data(), reply.body.size());
  return reply.status;
}

}  // namespace orvalo::test
