#include "support/stop_server.h"

#include <arpa/inet.h>
#include <civetweb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <future>

namespace orvalo::test {

void StopServer(mg_context* context, int port) {
  StopServer([context] { mg_stop(context); }, port);
}

void StopServer(const std::function<void()>& stop, int port) {
  const auto stopped = std::async(std::launch::async, stop);
  while (stopped.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    (void)!::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::close(socket);
  }
}

}  // namespace orvalo::test
