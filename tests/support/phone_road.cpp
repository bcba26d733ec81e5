#include "support/phone_road.h"

#include <chrono>
#include <thread>

#include "platform/http.h"

namespace orvalo::test {

PhoneRoad::PhoneRoad(const KannelEngine::Options& engine_options, std::vector<std::string> more)
    : certificate(engine_options.certificate),
      engine(folder.File("engine"), network.port(), engine_options) {
  Spill(folder.File("password"), "engine\n");
  Spill(folder.File("status"), "watch\n");
  options = {"--demo",
             "--carrier",
             "kannel",
             "--operations-listen",
             "127.0.0.1:" + std::to_string(UnusedPort()),  // the same after a restart
             "--kannel-user",
             "orvalo",
             "--kannel-password-file",
             folder.File("password"),
             "--kannel-status-url",
             engine.status_url(),
             "--kannel-status-password-file",
             folder.File("status"),
             "--kannel-sender",
             "Orvalo"};
  for (int box = 0; box < engine_options.smsboxes; ++box) {
    options.insert(options.end(), {"--kannel-url", engine.sendsms_url(box)});
  }
  if (!certificate.empty()) {
    options.insert(options.end(), {"--tls-key", engine_options.key, "--tls-cert", certificate,
                                   "--operations-tls", "--kannel-ca", certificate});
  }
  options.insert(options.end(), more.begin(), more.end());
}

void PhoneRoad::StartService() {
  service.reset();
  service = std::make_unique<GatewayProgram>(folder.path(), options);
}

std::string PhoneRoad::Operations(const std::string& path) {
  platform::HttpClient client;
  client.SetCertificateAuthorities(certificate);
  platform::HttpRequest request;
  request.url = (certificate.empty() ? "http://127.0.0.1:" : "https://127.0.0.1:") +
                std::to_string(service->operations_port()) + path;
  return client.Perform(request).body;
}

bool PhoneRoad::Await(const std::function<bool()>& ready) {
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!ready()) {
    if (std::chrono::steady_clock::now() > give_up) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

ProgramResult PhoneRoad::Run(std::vector<std::string> command) {
  command.insert(command.end(), {"--data", folder.File("data")});
  return RunGateway(std::move(command));
}

}  // namespace orvalo::test
