#include "drill/drill.h"

#include <signal.h>

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <utility>

#include "app/texts.h"
#include "store/send_journal.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"

namespace orvalo::test {
namespace {

constexpr int kQueued = 9;         // the exit status of orvaloctl
constexpr int kFewest = 40;        // recipients that are worth a message
constexpr int kSpecialEnd = 9900;  // of numbers that the simulated network treats otherwise
constexpr long kMostAhead = 6 * 3600;

}  // namespace

Drill::Drill(DrillPlan plan) : plan_(std::move(plan)), dice_(plan_.seed), client_(plan_.power_cut) {
  if (!client_.HasPowerCuts()) plan_.cuts = 0;
}

Verdict Drill::Run() {
  Prepare();
  while (faults_.client_kills + faults_.service_kills + faults_.both_kills < plan_.kills ||
         faults_.cuts < plan_.cuts) {
    Step();
  }
  client_.Kill();
  faults_.accepted_meanwhile = static_cast<int>(service_->Ledger().size());
  QueueMessages(plan_.recipients - static_cast<int>(expected_.size()));
  const bool finished = Finish();
  Verdict verdict = Judge(expected_, *service_, client_.folder());
  if (!finished) verdict.examples.push_back("messages are still unsent");
  return verdict;
}

void Drill::Prepare() {
  StartService(true);
  const std::string data = service_folder_.File("data");
  if (RunGateway({"account", "credit", "demo", "100000000", "--data", data}).status != 0)
    throw std::runtime_error("the account gets no credit");
  client_.Do({"init", "--gateway", service_->url()});
  client_.Do({"login", "demo", "--remember"});
}

int Drill::Roll(int from, int to) { return std::uniform_int_distribution<>(from, to)(dice_); }

void Drill::Pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::string Drill::NextNumber() {
  do {
    ++last_number_;
  } while (last_number_ % 10'000 >= kSpecialEnd);
  return std::to_string(last_number_);
}

void Drill::Step() {
  if (!client_.IsRunning()) StartClient();
  Pause(Roll(0, proxy_ || Chance(15) ? 1'200 : 250));
  Strike();
}

// Between a death and the next start.
void Drill::StartClient() {
  client_.Kill();
  if (!expected_.empty() && CountUnfinished().begun > 0) ++faults_.half_sent;
  if (!contacts_.empty() && Chance(30)) EditContact();
  const int done = faults_.client_kills + faults_.service_kills + faults_.both_kills + faults_.cuts;
  const double share = (done + 1.0) / (plan_.kills + plan_.cuts + 1.0);
  QueueMessages(static_cast<int>(share * plan_.recipients) - static_cast<int>(expected_.size()));
  ChooseAddress();
  if (client_.HasPowerCuts()) {
    const bool jumps = Chance(20);
    faults_.clock_jumps += jumps ? 1 : 0;
    client_.SetClockAhead(jumps ? Roll(-kMostAhead, kMostAhead) : 0);
  }
  client_.Start({"run", "--for", "600"});
}

void Drill::ChooseAddress() {
  const bool was_through_proxy = proxy_.has_value();
  if (was_through_proxy) faults_.bad_answers += proxy_->faults();
  proxy_.reset();
  if (Chance(10)) {
    proxy_.emplace(port_);
    proxy_->SetFaults(Roll(5, 30) / 100.0, static_cast<unsigned>(Roll(0, 1 << 30)));
  }
  if (!proxy_ && !was_through_proxy) return;
  const int port = proxy_ ? proxy_->port() : port_;
  client_.Do({"settings", "COMBaseURL", "http://127.0.0.1:" + std::to_string(port)});
}

void Drill::QueueMessages(int recipients) {
  if (recipients < kFewest) return;
  const auto aim = expected_.size() + static_cast<std::size_t>(recipients);
  if (Chance(25)) QueueGroup(Roll(5, 20));
  if (Chance(30)) QueueTyped(Roll(2, 15), "flash");
  if (Chance(50)) QueueTyped(1, "text");
  if (expected_.size() < aim) QueueTyped(static_cast<int>(aim - expected_.size()), "text");
}

void Drill::QueueTyped(int recipients, const std::string& type) {
  std::string numbers;
  for (int i = 0; i < recipients; ++i) {
    expected_.push_back({NextNumber(), ""});
    numbers += expected_.back().number + "\n";
  }
  Spill(files_.File("numbers"), numbers);
  client_.Do({"send", "--to-file", files_.File("numbers"), "--type", type, "--text", text_},
             kQueued);
}

void Drill::QueueGroup(int members) {
  std::string lines = "FName,SName,Title,Custom,Mobile,Group\n";
  const std::string group = "Group " + std::to_string(++groups_);
  for (int i = 0; i < members; ++i) {
    contacts_.push_back(expected_.size());
    expected_.push_back({NextNumber(), ""});
    lines += "Ann " + std::to_string(i) + ",Archer,,," + expected_.back().number + "," + "\n";
  }
  Spill(files_.File("people.csv"), lines);
  client_.Do({"group", "add", group});
  client_.Do({"import", files_.File("people.csv"), "--group", group});
  client_.Do({"send", "--group", group, "--text", "Dear <<FIRSTNAME>>"}, kQueued);
}

// Of one of the youngest contacts, whose message is likely to be on its way: it may go to either
// number, but not to both.
void Drill::EditContact() {
  const int youngest = static_cast<int>(contacts_.size());
  const int id = Roll(std::max(1, youngest - 30), youngest);
  ExpectedRecipient& recipient = expected_[contacts_[static_cast<std::size_t>(id - 1)]];
  if (!recipient.other.empty()) return;
  recipient.other = NextNumber();
  client_.Do({"contact", "edit", std::to_string(id), "--mobile", recipient.other});
  ++faults_.edits;
}

void Drill::Strike() {
  const int kills_left =
      plan_.kills - faults_.client_kills - faults_.service_kills - faults_.both_kills;
  const int cuts_left = plan_.cuts - faults_.cuts;
  if (Chance(10)) {
    client_.End();
    ++faults_.ends;
  } else if (Chance(6)) {
    service_->Signal(SIGSTOP);
    Pause(1'000);
    service_->Signal(SIGCONT);
    ++faults_.stops;
  } else if (Chance(5)) {
    service_->Stop(SIGTERM);
    Pause(Roll(300, 2'000));
    StartService(false);
    ++faults_.outages;
  } else if (Roll(1, kills_left + cuts_left) <= cuts_left) {
    client_.CutPower();
    ++faults_.cuts;
  } else if (Chance(50)) {
    client_.Kill();
    ++faults_.client_kills;
  } else {
    StrikeService();
  }
}

void Drill::StrikeService() {
  const bool both = Chance(50);
  if (both) {
    client_.Kill();
    ++faults_.both_kills;
  } else {
    ++faults_.service_kills;
  }
  service_->Stop(SIGKILL);
  if (Chance(20)) Pause(Roll(100, 1'500));
  StartService(false);
  if (!both && Chance(30)) Pause(1'100);  // the client tries again
}

void Drill::StartService(bool clean) {
  std::vector<std::string> options{"--demo", "--sim-delivery-seconds", "0", "--rate-limit",
                                   "1000000"};
  if (!clean && Chance(30)) {
    options.insert(options.end(), {"--sim-drop-reply", "0.05"});
    ++faults_.lossy_services;
  }
  if (!clean && Chance(50)) {
    options.insert(options.end(), {"--sim-latency-ms", std::to_string(Roll(1, 5))});
  }
  service_ = nullptr;
  service_ = std::make_unique<GatewayProgram>(service_folder_.path(), options, port_);
  port_ = service_->port();
  if (port_ == 0) throw std::runtime_error("the service does not listen");
}

bool Drill::Finish() {
  client_.Kill();
  service_->Stop(SIGTERM);
  StartService(true);
  if (proxy_) faults_.bad_answers += proxy_->faults();
  proxy_.reset();
  client_.Do({"settings", "COMBaseURL", service_->url()});
  client_.SetClockAhead(0);
  for (int runs = 0; runs < 20; ++runs) {
    client_.Start({"run", "--for", "60"});
    while (client_.IsRunning()) {
      Pause(200);
      const Unfinished left = CountUnfinished();
      if (left.begun + left.waiting > 0) continue;
      client_.End();
      return true;
    }
    client_.Kill();
  }
  return false;
}

Drill::Unfinished Drill::CountUnfinished() const {
  const Texts texts;
  const FakeClock clock;
  SmsDatabase outbox(client_.folder(), texts, clock, /*read_only=*/true);
  return {SendJournal(outbox).Unfinished().size(), outbox.PendingSms(-1).size()};
}

}  // namespace orvalo::test
