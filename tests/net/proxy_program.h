#pragma once
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "support/child_process.h"
#include "support/raw_server.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// A real proxy server (tinyproxy) on a loopback port, for as long as the object lives.
class ProxyProgram {
 public:
  // Lines of its configuration beside the port, as "BasicAuth ann hush".
  explicit ProxyProgram(const std::string& lines = "") : port_(UnusedPort()) {
    const std::string config = folder_.File("conf");
    Spill(config, "Port " + std::to_string(port_) + "\nListen 127.0.0.1\nTimeout 10\nLogFile \"" +
                      LogFile() + "\"\nLogLevel Info\n" + lines + "\n");
    process_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/usr/bin/tinyproxy", "-d", "-c", config}, folder_.File("out"),
        folder_.File("err"));
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!Listens() && std::chrono::steady_clock::now() < give_up)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }

  std::string port() const { return std::to_string(port_); }
  std::string Log() const { return Slurp(LogFile()); }

 private:
  std::string LogFile() const { return folder_.File("log"); }
  bool Listens() const {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port_));
    const bool listens =
        connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return listens;
  }

  TemporaryFolder folder_;
  int port_;
  std::unique_ptr<ChildProcess> process_;
};

}  // namespace orvalo::test
