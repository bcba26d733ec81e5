#pragma once
#include <atomic>
#include <list>
#include <mutex>
#include <random>
#include <thread>

namespace orvalo::test {

// A proxy on a loopback port of its own in front of a service on another, which may come and go.
// Some of what a client sends gets an error page or a cut connection for an answer: in half of
// these cases the service has had the request all the same.
class FaultProxy {
 public:
  explicit FaultProxy(int service_port);
  ~FaultProxy();
  FaultProxy(const FaultProxy&) = delete;
  FaultProxy& operator=(const FaultProxy&) = delete;

  int port() const { return port_; }
  void SetFaults(double share, unsigned seed);  // of the requests
  int faults() const { return faults_; }        // made so far

 private:
  enum class Fault { kNone, kPageBefore, kPageAfter, kCutBefore, kCutAfter };

  void Accept();
  void Serve(int client);
  Fault Draw();

  const int service_port_;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<bool> ends_ = false;
  std::atomic<int> faults_ = 0;
  std::mutex mutex_;  // guards the dice
  double share_ = 0;
  std::mt19937 dice_;
  std::list<std::thread> conversations_;
  std::thread thread_;
};

}  // namespace orvalo::test
