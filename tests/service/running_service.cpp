#include "service/running_service.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "service/secrets.h"

namespace orvalo::test {

int JsonReply::code() const {
  return body.is_object() && body.contains("error") ? body["error"].value("code", -1) : 0;
}

std::string NewKey() {
  static std::atomic<int> last = 0;
  return fmt::format("{:032x}", ++last);
}

GatewayCaller::GatewayCaller(int port, const std::string& user, const std::string& authorities)
    : url_((authorities.empty() ? "http://127.0.0.1:" : "https://127.0.0.1:") +
           std::to_string(port)) {
  client.SetCertificateAuthorities(authorities);
  if (!user.empty()) LogIn(user, user);
}

JsonReply GatewayCaller::Send(const std::string& method, const std::string& path,
                              const std::string& body, const std::string& key,
                              const std::string& content_type) {
  platform::HttpRequest request;
  request.method = method;
  request.url = url_ + path;
  request.body = body;
  if (!token.empty()) request.headers.emplace_back("Authorization", "Bearer " + token);
  if (!key.empty()) request.headers.emplace_back("Idempotency-Key", key);
  if (!content_type.empty()) request.headers.emplace_back("Content-Type", content_type);
  const auto reply = client.Perform(request);
  return {reply.status, nlohmann::json::parse(reply.body, nullptr, false)};
}

JsonReply GatewayCaller::Post(const std::string& path, const nlohmann::json& body,
                              const std::string& key) {
  return Send("POST", path, body.dump(), key.empty() ? NewKey() : key);
}

bool GatewayCaller::LogIn(const std::string& user, const std::string& password) {
  const auto reply =
      Post("/v1/session", {{"client_id", "Orvalo"}, {"user", user}, {"password", password}});
  if (reply.status == 200) token = reply.body.value("token", "");
  return reply.status == 200;
}

JsonReply GatewayCaller::Message(const std::string& number, const std::string& key) {
  return Post("/v1/messages", {{"to", number}, {"text", "Hello"}}, key);
}

RunningService::RunningService(const service::SimulationOptions& simulation, double drop_replies) {
  service::PrepareSecrets();
  options.folder = folder.File("data");
  options.http.threads = 12;
  options.hold_refusals = std::chrono::milliseconds(0);
  options.simulation = simulation;
  options.drop_replies = drop_replies;
  service_ = std::make_unique<service::GatewayService>(options, clock);
  service_->accounts().Add("ann", "ann@example.org", "ann", 100'000);
  service_->accounts().Add("bob", "", "bob", 2'000);
  service_->Listen();
}

RunningService::~RunningService() { Stop(); }

void RunningService::Stop() { service_.reset(); }

void RunningService::Restart(std::int64_t seconds_away) {
  Stop();
  clock.Advance(seconds_away * 1'000);
  service_ = std::make_unique<service::GatewayService>(options, clock);
  service_->Listen();
}

GatewayCaller RunningService::Caller(const std::string& user) {
  return GatewayCaller(service_->port(), user);
}

std::vector<service::Ledger::Entry> RunningService::Entries() {
  std::vector<service::Ledger::Entry> entries;
  service_->database().Read([&](service::Connection& connection) {
    service::Ledger::ForEach(connection, [&](const auto& entry) { entries.push_back(entry); });
  });
  return entries;
}

bool RunningService::LedgerAddsUp() {
  service::Money rest = 0;
  for (const auto& account : service_->accounts().List()) rest += account.credits - account.balance;
  for (const auto& entry : Entries()) rest -= entry.charge;
  return rest == 0;
}

std::string RawExchange(int port, const std::string& bytes, int blanks, int* sent) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<in_port_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string reply;
  if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
    (void)!::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    char next = 0;
    for (int i = 0; i < blanks; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      if (::recv(socket, &next, 1, MSG_PEEK | MSG_DONTWAIT) >= 0) break;
      if (::send(socket, " ", 1, MSG_NOSIGNAL) < 0) break;
      if (sent != nullptr) ++*sent;
    }
    ::shutdown(socket, SHUT_WR);
    char part[4096];
    for (ssize_t count = 0; (count = ::recv(socket, part, sizeof part, 0)) > 0;) {
      reply.append(part, static_cast<std::size_t>(count));
    }
  }
  ::close(socket);
  return reply;
}

}  // namespace orvalo::test
