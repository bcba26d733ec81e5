#include "support/gateway_program.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <thread>

#include "support/temporary_folder.h"

namespace orvalo::test {

GatewayProgram::GatewayProgram(const std::string& folder, const std::vector<std::string>& options,
                               int port)
    : data_(folder + "/data") {
  const std::string port_file = folder + "/port";
  std::remove(port_file.c_str());
  std::vector<std::string> words{
      ORVALO_GATEWAY, "--data", data_, "--listen", "127.0.0.1:" + std::to_string(port),
      "--port-file",  port_file};
  words.insert(words.end(), options.begin(), options.end());
  process_ = std::make_unique<ChildProcess>(std::move(words), folder + "/out", folder + "/err");
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (port_ == 0 && std::chrono::steady_clock::now() < give_up) {
    port_ = std::atoi(Slurp(port_file).c_str());
    operations_port_ = std::atoi(Slurp(port_file + ".operations").c_str());
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

int GatewayProgram::Stop(int signal) {
  process_->Signal(signal);
  return process_->Wait();
}

std::vector<std::string> GatewayProgram::Ledger() const {
  std::istringstream output(RunGateway({"ledger", "--json", "--data", data_}).out);
  std::vector<std::string> lines;
  for (std::string line; std::getline(output, line);) lines.push_back(line);
  return lines;
}

std::string GatewayPath() { return ORVALO_GATEWAY; }

ProgramResult RunGateway(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), ORVALO_GATEWAY);
  return RunProgram(std::move(arguments));
}

}  // namespace orvalo::test
