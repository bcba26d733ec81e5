#include "support/raw_server.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <tuple>
#include <utility>

namespace orvalo::test {
namespace {

// A bound loopback socket and its port.
std::pair<int, int> BindLoopback() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (socket < 0 || ::bind(socket, generic, length) != 0 ||
      ::getsockname(socket, generic, &length) != 0)
    std::abort();
  return {socket, ntohs(address.sin_port)};
}

}  // namespace

std::string RawServer::Connection::ReadRequest() {
  std::string request;
  std::size_t wanted = std::string::npos;
  while (request.size() < wanted) {
    char bytes[4096];
    const ssize_t count = ::recv(socket_, bytes, sizeof bytes, 0);
    if (count <= 0) return "";
    request.append(bytes, static_cast<std::size_t>(count));
    const std::size_t head = request.find("\r\n\r\n");
    if (head == std::string::npos) continue;
    const std::size_t length = request.find("Content-Length: ");
    wanted = head + 4;
    if (length < head) wanted += std::strtoul(request.c_str() + length + 16, nullptr, 10);
  }
  return request;
}

void RawServer::Connection::Send(const std::string& bytes) {
  (void)!::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void RawServer::Connection::SendReply(const std::string& body) {
  Send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

void RawServer::Connection::WaitForClose() {
  char bytes[4096];
  while (::recv(socket_, bytes, sizeof bytes, 0) > 0) {
  }
}

void RawServer::Connection::ResetAtEnd() {
  const linger no_wait = {1, 0};
  ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &no_wait, sizeof no_wait);
}

RawServer::RawServer(Script script) : script_(std::move(script)) {
  std::tie(listener_, port_) = BindLoopback();
  if (::listen(listener_, 16) != 0) std::abort();
  thread_ = std::thread([this] { Serve(); });
}

RawServer::~RawServer() {
  StopListening();
  thread_.join();
  ::close(listener_);
}

void RawServer::StopListening() { ::shutdown(listener_, SHUT_RDWR); }

void RawServer::Serve() {
  for (int number = 1;; ++number) {
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    Connection connection(socket, number);
    script_(connection);
    ::close(socket);
  }
}

int UnusedPort() {
  const auto [socket, port] = BindLoopback();
  ::close(socket);
  return port;
}

int ConnectLoopback(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return socket;
  ::close(socket);
  return -1;
}

}  // namespace orvalo::test
