#pragma once
#include <cstdint>
#include <mutex>

#include "platform/clock.h"
#include "service/http_message.h"
#include "service/kannel_carrier.h"

namespace orvalo::service {

// Where they come in; the id is the key that the part was handed over under.
inline constexpr char kReportRoute[] = "/reports/*";

// The engine's delivery reports as they come in over HTTP, counted by what they led to. Any thread.
//
// The engine tells a report again until the reply is 200 (or 202), for an hour or more. So 200
// means that telling it again would change nothing: it is on the disk, or about nothing that is
// known here, as after an older copy of the ledger was put back.
class DeliveryReports {
 public:
  struct Parts {
    KannelCarrier* kannel;  // null: another carrier
    Metrics& metrics;
    const EventLog& log;
    const platform::Clock& clock;
  };

  explicit DeliveryReports(const Parts& parts) : parts_(parts) {}

  // The status of the reply: 200; 404 for what is no report; 503 while another carrier is in use,
  // whose ledger may hold the part all the same. Throws what the ledger throws: nothing is known
  // of the report then.
  int Take(const ServedRequest& request);

 private:
  int Counted(const char* outcome, int status);
  void TellOfUnknown();

  const Parts parts_;
  std::mutex mutex_;
  std::int64_t unknown_ = 0, next_line_ = 0;  // since the last line about them; a tick
};

}  // namespace orvalo::service
