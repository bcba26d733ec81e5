#include "service/carrier_choice.h"

#include <fmt/format.h>

#include "platform/file.h"
#include "platform/sender_id.h"

namespace orvalo::service {
namespace {

constexpr const char* kOperationsAddress = "127.0.0.1:8481";

// An address that other machines reach needs TLS; so does one that is not a plain number.
void CheckUrl(const char* option, const std::string& url) {
  constexpr std::string_view kPlain = "http://", kTls = "https://";
  const bool tls = url.starts_with(kTls);
  if (!tls && !url.starts_with(kPlain)) {
    throw UsageError(fmt::format("{}: this is no address of the web", option));
  }
  auto host = url.substr(tls ? kTls.size() : kPlain.size());
  host = host.substr(0, host.find_first_of("/?#"));
  if (host.empty() || host.front() == ':') {
    throw UsageError(fmt::format("{}: this is no address of the web", option));
  }
  // Addresses are logged.
  if (host.find('@') != std::string::npos || url.find("password=") != std::string::npos) {
    throw UsageError(fmt::format("{}: no user and password in the address", option));
  }
  if (tls) return;
  std::string address;
  int port = 0;
  if (host.find(':') == std::string::npos) host += ":80";
  if (!SplitAddress(host, address, port) || !IsLoopback(address)) {
    throw UsageError(fmt::format("{}: {} leaves this machine, so it needs https", option, host));
  }
}

std::string FirstLine(const char* option, const std::string& file) {
  constexpr std::uint64_t kLargestPasswordFile = 4096;
  const auto text = platform::ReadFile(file, kLargestPasswordFile);
  if (!text) throw UsageError(fmt::format("{}: {} cannot be read", option, file));
  return text->substr(0, text->find_first_of("\r\n"));
}

// As the value of a query's field.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char character : text) {
    escaped += fmt::format("%{:02X}", static_cast<unsigned char>(character));
  }
  return escaped;
}

}  // namespace

void CarrierChoice::AddOptions(CLI::App& app) {
  app.add_option("--carrier", carrier_, "Who brings messages to phones")
      ->check(CLI::IsMember({"simulated", "kannel"}))
      ->capture_default_str();
  app.add_option("--operations-listen", operations_,
                 "Address and port for delivery reports, /metrics, /health and /ready");
  app.add_flag("--operations-tls", operations_tls_,
               "TLS there, also on an address that only this machine reaches");
  auto& kannel = kannel_;
  app.add_option("--kannel-url", kannel.urls, "Address of an smsbox's sendsms; several times");
  app.add_option("--kannel-user", kannel.user, "The engine's sendsms-user");
  app.add_option("--kannel-password-file", password_file_, "Its first line is the password");
  app.add_option("--kannel-status-url", kannel.status_url, "Address of the engine's status.xml");
  app.add_option("--kannel-status-password-file", status_password_file_,
                 "Its first line is the engine's status-password");
  app.add_option("--kannel-smsc", kannel.smsc, "The engine's link to send over");
  app.add_option("--kannel-sender", kannel.sender, "Sender of messages that bring none");
  app.add_option("--kannel-ca", kannel.authorities, "Certificate authorities for https, PEM");
  app.add_option("--report-url", kannel.report_url,
                 "Where the engine reaches --operations-listen, if not there");
  const auto number = [&app](const char* name, int& value, int most, const char* help) {
    app.add_option(name, value, help)->check(CLI::Range(1, most))->capture_default_str();
  };
  number("--kannel-connections", kannel.connections, 256, "Connections to the engine");
  number("--kannel-receivers", kannel.receivers, 1'000, "Receivers in one request");
  number("--kannel-window", kannel.window, 1'000'000, "Parts in the engine's queue");
  number("--backlog", kannel.backlog, 100'000'000, "Parts that wait for the engine");
  number("--validity-minutes", kannel.validity_minutes, 10'080, "How long delivery is tried");
  number("--silence-minutes", kannel.silence_minutes, 10'080,
         "What an idle engine has not reported for so long is in doubt");
}

void CarrierChoice::Apply(ServiceOptions& options) const {
  const bool is_kannel = carrier_ == "kannel";
  if (is_kannel || !operations_.empty()) {
    auto& operations = options.operations.emplace(options.http);
    const auto& listen = operations_.empty() ? kOperationsAddress : operations_;
    if (!SplitAddress(listen, operations.address, operations.port)) {
      throw UsageError(fmt::format("--operations-listen: \"{}\" is no address and port", listen));
    }
    // An engine keeps as many connections as it has reports to tell at a time.
    operations.connections = operations.connections_of_an_address = 1'024;
    operations.slow_threads = 1;
    if (IsLoopback(operations.address) && !operations_tls_) {
      operations.tls_key.clear();
      operations.tls_certificate.clear();
    } else if (!operations.has_tls()) {
      throw UsageError(operations_tls_
                           ? "--operations-tls needs --tls-key and --tls-cert"
                           : "--operations-listen: other machines reach it, so it needs --tls-key");
    }
  }
  if (!is_kannel) return;
  auto& kannel = options.kannel.emplace(kannel_);
  if (kannel.urls.empty() || kannel.user.empty() || password_file_.empty()) {
    throw UsageError(
        "--carrier kannel needs --kannel-url, --kannel-user and --kannel-password-file");
  }
  for (const auto& url : kannel.urls) CheckUrl("--kannel-url", url);
  kannel.password = FirstLine("--kannel-password-file", password_file_);
  if (!kannel.authorities.empty() && !platform::ReadFile(kannel.authorities)) {
    throw UsageError(fmt::format("--kannel-ca: {} cannot be read", kannel.authorities));
  }
  if (!kannel.status_url.empty()) CheckUrl("--kannel-status-url", kannel.status_url);
  if (kannel.status_url.empty() && !status_password_file_.empty()) {
    throw UsageError("--kannel-status-password-file needs --kannel-status-url");
  }
  const auto& listening = options.operations->address;
  if (kannel.report_url.empty() && (listening == "0.0.0.0" || listening == "::")) {
    throw UsageError("--operations-listen: all addresses; --report-url must say which one");
  }
  if (!kannel.report_url.empty()) CheckUrl("--report-url", kannel.report_url);
  while (kannel.report_url.ends_with('/')) kannel.report_url.pop_back();
  if (!kannel.sender.empty() && !platform::IsSenderId(kannel.sender)) {
    throw UsageError("--kannel-sender: up to 15 digits, or up to 11 letters and digits");
  }
  if (!status_password_file_.empty()) {
    kannel.status_url +=
        "?password=" + Escaped(FirstLine("--kannel-status-password-file", status_password_file_));
  }
}

}  // namespace orvalo::service
