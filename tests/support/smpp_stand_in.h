#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvalo::test {

// One submit_sm as it arrived, field by field.
struct SubmittedSm {
  int source_ton = 0, source_npi = 0, dest_ton = 0, dest_npi = 0;
  std::string source, dest;
  int esm_class = 0, protocol_id = 0, priority = 0, registered = 0, data_coding = 0;
  std::string schedule, validity;
  std::string bytes;  // the user data, its header included
};

// A message centre that speaks SMPP 3.4 on a loopback port of its own: takes every login as
// "orvalo"/"secret", keeps what is submitted, and sends receipts where they are asked for. What
// becomes of a message follows from the last three digits of its number:
//
//   991 refused: no such destination     992 UNDELIV      993 ENROUTE, then DELIVRD
//   994 EXPIRED     995 REJECTD          996 no receipt   997 refused: throttled
//   998 refused: its queue is full       999 DELETED      anything else: DELIVRD
class SmppStandIn {
 public:
  struct Options {
    int port = 0;  // 0: any free one
    std::int64_t receipt_delay_ms = 20;
    bool keeps_all = true;  // off: only counts, for benchmarks
  };

  SmppStandIn();
  explicit SmppStandIn(const Options& options);
  ~SmppStandIn();
  SmppStandIn(const SmppStandIn&) = delete;
  SmppStandIn& operator=(const SmppStandIn&) = delete;

  int port() const;
  std::vector<SubmittedSm> submitted() const;
  std::size_t count() const;     // accepted and refused submissions
  std::size_t receipts() const;  // sent
  // Blocks until there are so many, at most 20 s; false when there are not.
  bool Await(std::size_t submissions) const;
  // Called for every submission, on the server's thread. Set before the first.
  void OnSubmit(std::function<void(const SubmittedSm&)> hook);
  // From now on receipts are kept back, or all that were kept back go out.
  void HoldReceipts(bool hold);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// What has arrived, by number; the parts of a message in order.
std::map<std::string, std::vector<SubmittedSm>> ArrivedByNumber(const SmppStandIn& network);

}  // namespace orvalo::test
