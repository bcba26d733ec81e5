#include "drill/drilled_client.h"

#include <signal.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace orvalo::test {

DrilledClient::DrilledClient(std::string power_cut) : power_cut_(std::move(power_cut)) {}

std::vector<std::string> DrilledClient::Words(const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{"/usr/bin/env", "ORVALO_PASSWORD=demo"};
  if (HasPowerCuts()) {
    words.push_back("LD_PRELOAD=" + power_cut_);
    words.push_back("POWER_CUT_COPIES=" + copies_.path());
    words.push_back("POWER_CUT_CLOCK=" + std::to_string(clock_ahead_));
  }
  words.insert(words.end(), {ORVALOCTL, "--data", folder_.path()});
  words.insert(words.end(), arguments.begin(), arguments.end());
  return words;
}

std::string DrilledClient::Do(const std::vector<std::string>& arguments, int highest) {
  ProgramResult result = RunProgram(Words(arguments));
  if (result.status < 0 || result.status > highest) {
    throw std::runtime_error("orvaloctl " + arguments.front() + " ended with " +
                             std::to_string(result.status) + ": " + result.out + result.err);
  }
  return std::move(result.out);
}

void DrilledClient::Start(const std::vector<std::string>& arguments) {
  process_ = std::make_unique<ChildProcess>(Words(arguments), "/dev/null", "/dev/null");
}

void DrilledClient::Kill() {
  if (!process_) return;
  process_->Signal(SIGKILL);
  process_->Wait();
  process_.reset();
}

void DrilledClient::CutPower() {
  Kill();
  for (const char* name : {"SMS.db", "SMS.db-wal"})
    FlushedCopy(copies_.File(name)).TakeBack(folder_.File(name));
  unlink(folder_.File("SMS.db-shm").c_str());
}

void DrilledClient::End() {
  if (!process_) return;
  process_->Signal(SIGTERM);
  process_->Wait();
  process_.reset();
}

}  // namespace orvalo::test
