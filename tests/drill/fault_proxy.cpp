#include "drill/fault_proxy.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "support/raw_server.h"

namespace orvalo::test {
namespace {

constexpr int kLookAround = 50;  // milliseconds
constexpr std::string_view kPage =
    "HTTP/1.1 502 Bad Gateway\r\nContent-Type: text/html\r\nContent-Length: 44\r\n"
    "Connection: close\r\n\r\n<html><body><h1>Bad Gateway</h1></body></html>";

bool IsReadable(int socket, int milliseconds) {
  pollfd look{socket, POLLIN, 0};
  return poll(&look, 1, milliseconds) > 0;
}

// False at the end of the connection.
bool Pass(int from, int to) {
  std::array<char, 65536> bytes;
  const ssize_t got = recv(from, bytes.data(), bytes.size(), 0);
  if (got <= 0) return false;
  const auto count = static_cast<std::size_t>(got);
  return send(to, bytes.data(), count, MSG_NOSIGNAL) == got;
}

}  // namespace

FaultProxy::FaultProxy(int service_port) : service_port_(service_port) {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
  listen(listener_, 64);
  getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Accept(); });
}

FaultProxy::~FaultProxy() {
  ends_ = true;
  thread_.join();
  for (std::thread& conversation : conversations_) conversation.join();
  close(listener_);
}

void FaultProxy::SetFaults(double share, unsigned seed) {
  const std::lock_guard lock(mutex_);
  share_ = share;
  dice_.seed(seed);
}

void FaultProxy::Accept() {
  while (!ends_) {
    if (!IsReadable(listener_, kLookAround)) continue;
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client >= 0) conversations_.emplace_back([this, client] { Serve(client); });
  }
}

FaultProxy::Fault FaultProxy::Draw() {
  const std::lock_guard lock(mutex_);
  if (std::uniform_real_distribution<>()(dice_) >= share_) return Fault::kNone;
  ++faults_;
  return static_cast<Fault>(std::uniform_int_distribution<>(1, 4)(dice_));
}

void FaultProxy::Serve(int client) {
  const int service = ConnectLoopback(service_port_);
  const int now = 1;
  setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &now, sizeof(now));
  setsockopt(service, IPPROTO_TCP, TCP_NODELAY, &now, sizeof(now));
  bool goes_on = service >= 0;
  while (goes_on && !ends_) {
    std::array<pollfd, 2> look{{{client, POLLIN, 0}, {service, POLLIN, 0}}};
    if (poll(look.data(), look.size(), kLookAround) <= 0) continue;
    if (look[1].revents != 0) {
      goes_on = Pass(service, client);
    } else if (look[0].revents != 0) {
      const Fault fault = Draw();
      const bool page = fault == Fault::kPageBefore || fault == Fault::kPageAfter;
      if (fault == Fault::kCutBefore) break;
      if (fault != Fault::kPageBefore) goes_on = Pass(client, service);
      if (fault == Fault::kNone) continue;
      if (fault == Fault::kPageAfter || fault == Fault::kCutAfter) IsReadable(service, 1'000);
      if (page) send(client, kPage.data(), kPage.size(), MSG_NOSIGNAL);
      goes_on = false;
    }
  }
  if (service >= 0) close(service);
  close(client);
}

}  // namespace orvalo::test
