#include "crowd.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace orvalo::bench {
namespace {

constexpr std::chrono::milliseconds kBeat{100};
constexpr std::uint32_t kFirstAddress = INADDR_LOOPBACK + 1;

// -1: not now.
int ConnectFrom(int number, int addresses, int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in own{}, its{};
  own.sin_family = its.sin_family = AF_INET;
  own.sin_addr.s_addr = htonl(kFirstAddress + static_cast<std::uint32_t>(number % addresses));
  its.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  its.sin_port = htons(static_cast<std::uint16_t>(port));
  const timeval patience{0, 200'000};
  ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  if (::bind(socket, reinterpret_cast<sockaddr*>(&own), sizeof own) == 0 &&
      ::connect(socket, reinterpret_cast<sockaddr*>(&its), sizeof its) == 0) {
    return socket;
  }
  ::close(socket);
  return -1;
}

bool SendAll(int socket, std::string_view bytes) {
  return ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(bytes.size());
}

bool IsOver(int socket) {
  char bytes[512];
  const ssize_t count = ::recv(socket, bytes, sizeof bytes, MSG_DONTWAIT);
  return count == 0 || (count < 0 && errno != EAGAIN);
}

}  // namespace

Loiterers::Loiterers(int port, int count, int addresses, std::string opening, std::string trickle)
    : port_(port),
      addresses_(addresses),
      opening_(std::move(opening)),
      trickle_(std::move(trickle)),
      sockets_(static_cast<std::size_t>(count), -1),
      thread_([this] { Loiter(); }) {}

Loiterers::~Loiterers() {
  stops_ = true;
  thread_.join();
  for (const int socket : sockets_) {
    if (socket >= 0) ::close(socket);
  }
}

void Loiterers::Loiter() {
  for (std::size_t beat = 0; !stops_; ++beat) {
    for (std::size_t i = 0; i < sockets_.size() && !stops_; ++i) {
      int& socket = sockets_[i];
      if (socket >= 0 && IsOver(socket)) {
        ++thrown_out_;
        ::close(std::exchange(socket, -1));
      }
      if (socket < 0) {
        socket = ConnectFrom(static_cast<int>(i), addresses_, port_);
        if (socket >= 0) SendAll(socket, opening_);
      } else if (!trickle_.empty()) {
        SendAll(socket, std::string_view(trickle_).substr(beat % trickle_.size(), 1));
      }
    }
    std::this_thread::sleep_for(kBeat);
  }
}

Hammerers::Hammerers(int port, int count, int addresses, std::function<std::string()> request)
    : port_(port), addresses_(addresses), request_(std::move(request)) {
  for (int i = 0; i < count; ++i) threads_.emplace_back([this, i] { Hammer(i); });
}

Hammerers::~Hammerers() {
  stops_ = true;
  for (auto& thread : threads_) thread.join();
}

void Hammerers::Hammer(int number) {
  int socket = -1;
  std::string reply;
  while (!stops_) {
    if (socket < 0) socket = ConnectFrom(number, addresses_, port_);
    reply.clear();
    bool lives = socket >= 0 && SendAll(socket, request_());
    // Until the reply is there: all of ours end with the brace of a JSON object.
    while (lives && !stops_ && !reply.ends_with('}')) {
      char bytes[2048];
      const ssize_t count = ::recv(socket, bytes, sizeof bytes, 0);
      if (count > 0) reply.append(bytes, static_cast<std::size_t>(count));
      lives = count > 0 || (count < 0 && errno == EAGAIN);
    }
    if (lives) {
      ++answered_;
    } else if (socket >= 0) {
      ::close(std::exchange(socket, -1));
    }
  }
  if (socket >= 0) ::close(socket);
}

}  // namespace orvalo::bench
