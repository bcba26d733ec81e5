#pragma once
#include <chrono>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "drill/drilled_client.h"
#include "drill/fault_proxy.h"
#include "drill/verdict.h"
#include "support/gateway_program.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

struct DrillPlan {
  unsigned seed = 1;
  int kills = 1'000;  // of the client, the service or both
  int cuts = 200;     // of the client's power; need the library
  int recipients = 1'000'000;
  std::string power_cut;  // path of the library, or empty
};

// Faults that were made.
struct DrillFaults {
  int client_kills = 0, service_kills = 0, both_kills = 0, cuts = 0;
  int ends = 0, stops = 0, outages = 0, bad_answers = 0, lossy_services = 0, edits = 0,
      clock_jumps = 0;
  int half_sent = 0;           // starts of the client that found messages half sent
  int accepted_meanwhile = 0;  // recipients, by the gateway before the last fault
};

// Sends messages of all kinds with the real client and the real gateway service, which are killed,
// stopped and cut off meanwhile as the dice say, lets them finish, and compares what the gateway
// has accepted with what the client says. The same plan makes the same choices; what each fault
// hits is the machine's affair.
//
// Throws std::runtime_error when something fails that the drill does not put at risk.
class Drill {
 public:
  explicit Drill(DrillPlan plan);

  Verdict Run();
  const DrillFaults& faults() const { return faults_; }

 private:
  void Prepare();
  void Step();
  void StartClient();
  void QueueMessages(int recipients);
  void QueueGroup(int members);
  void QueueTyped(int recipients, const std::string& type);
  void EditContact();
  void ChooseAddress();
  void Strike();
  void StrikeService();
  void StartService(bool clean);
  bool Finish();  // false when messages are still unsent after a long time
  struct Unfinished {
    std::size_t begun = 0, waiting = 0;  // messages
  };
  Unfinished CountUnfinished() const;
  int Roll(int from, int to);
  bool Chance(int percent) { return Roll(1, 100) <= percent; }
  void Pause(int milliseconds);
  std::string NextNumber();

  DrillPlan plan_;
  DrillFaults faults_;
  std::mt19937 dice_;
  TemporaryFolder service_folder_, files_;
  std::unique_ptr<GatewayProgram> service_;
  int port_ = 0;
  std::optional<FaultProxy> proxy_;
  DrilledClient client_;
  std::vector<ExpectedRecipient> expected_;
  std::vector<std::size_t> contacts_;  // their places among the expected, in order of their ids
  std::string text_ = "x";
  long long last_number_ = 27'100'000'000;
  int groups_ = 0;
};

}  // namespace orvalo::test
