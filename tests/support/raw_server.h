#pragma once
#include <functional>
#include <string>
#include <thread>

namespace orvalo::test {

// A TCP server on a loopback port that does exactly what a test tells it: for servers that cut
// connections, answer nonsense or never answer. One connection after the other, each handed to the
// script on the server's thread and closed when the script returns.
class RawServer {
 public:
  class Connection {
   public:
    Connection(int socket, int number) : socket_(socket), number_(number) {}
    int socket() const { return socket_; }
    int number() const { return number_; }  // 1 is the first

    // One HTTP request, head and body (by its Content-Length); empty when the client has gone.
    std::string ReadRequest();
    void Send(const std::string& bytes);
    void SendReply(const std::string& body);  // 200, connection kept
    void WaitForClose();                      // by the client
    void ResetAtEnd();                        // the close then is a reset

   private:
    int socket_;
    int number_;
  };
  using Script = std::function<void(Connection&)>;

  explicit RawServer(Script script);
  ~RawServer();  // waits for a script that runs
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;

  int port() const { return port_; }
  std::string Url(const std::string& path = "/") const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }
  // New connections are refused from now on; also for scripts.
  void StopListening();

 private:
  void Serve();

  Script script_;
  int listener_ = -1;
  int port_ = 0;
  std::thread thread_;
};

// A loopback port on which nobody listens.
int UnusedPort();
// A socket that is connected to a loopback port; -1 when nobody listens there.
int ConnectLoopback(int port);

}  // namespace orvalo::test
