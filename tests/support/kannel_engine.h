#pragma once
#include <memory>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/raw_server.h"

namespace orvalo::test {

// A real SMS gateway engine on loopback ports of its own, in a folder of the test's: one bearerbox
// linked to an SMPP server, and smsboxes. Its queue and its memory of reports are on the disk, so
// that it may be killed. Needs the package "kannel"; IsInstalled tells whether it is there.
class KannelEngine {
 public:
  struct Options {
    int smsboxes = 1;
    bool keeps_queue = true;  // on the disk; off: what it has not sent is gone when it is killed
    std::string core;         // more lines for the engine's group "core"
    std::string smsc;         // and for its link
    // Files. With them everything of the engine's speaks TLS, and the smsboxes trust nobody else.
    std::string certificate = "", key = "";
  };

  KannelEngine(const std::string& folder, int smpp_port) : KannelEngine(folder, smpp_port, {}) {}
  KannelEngine(const std::string& folder, int smpp_port, const Options& options);
  ~KannelEngine();

  static bool IsInstalled();

  // Returns once the engine is linked to the SMPP server and the smsboxes to the engine; false when
  // that takes longer than 20 s.
  bool Start();
  void Stop();                  // in order, as an administrator does
  void KillAll();               // kill -9, everything
  void KillSmsbox(int number);  // from 0 on

  std::string sendsms_url(int box = 0) const;
  std::string status_url() const;
  std::string Status() const;     // the page; "" when there is none
  std::string Diagnosis() const;  // the ends of its logs, for a test that failed

 private:
  void WriteConfig(const Options& options, int smpp_port) const;
  std::string ConfigOf(int box) const {
    return folder_ + "/smsbox" + std::to_string(box) + ".conf";
  }
  bool AwaitStatus(int boxes, bool linked) const;

  const std::string folder_, certificate_, scheme_;
  const int admin_port_, box_port_;
  std::vector<int> sendsms_ports_;
  std::unique_ptr<ChildProcess> bearerbox_;
  std::vector<std::unique_ptr<ChildProcess>> smsboxes_;
};

}  // namespace orvalo::test
