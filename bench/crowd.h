#pragma once
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace orvalo::bench {

// Those who come to a service to keep it busy. All from this machine: the addresses 127.0.0.2 and
// up are theirs, by turns; 127.0.0.1 is for others.

// Connections that say `opening` and then `trickle`, one byte of it every 100 ms, again and again
// (nothing: they are silent). Whoever is thrown out comes again within 100 ms. Gone at the end of
// the scope.
class Loiterers {
 public:
  Loiterers(int port, int count, int addresses, std::string opening, std::string trickle);
  ~Loiterers();
  Loiterers(const Loiterers&) = delete;
  Loiterers& operator=(const Loiterers&) = delete;

  int thrown_out() const { return thrown_out_; }

 private:
  void Loiter();

  const int port_, addresses_;
  const std::string opening_, trickle_;
  std::vector<int> sockets_;
  std::atomic<int> thrown_out_{0};
  std::atomic<bool> stops_{false};
  std::thread thread_;
};

// Connections that each post one request after the other, as fast as they are answered.
class Hammerers {
 public:
  // `request` makes the next one, head and body; any thread.
  Hammerers(int port, int count, int addresses, std::function<std::string()> request);
  ~Hammerers();
  Hammerers(const Hammerers&) = delete;
  Hammerers& operator=(const Hammerers&) = delete;

  int answered() const { return answered_; }

 private:
  void Hammer(int number);

  const int port_, addresses_;
  const std::function<std::string()> request_;
  std::atomic<int> answered_{0};
  std::atomic<bool> stops_{false};
  std::vector<std::thread> threads_;
};

}  // namespace orvalo::bench
