#include "support/kannel_engine.h"

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/http.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

constexpr const char* kBearerbox = "/usr/sbin/bearerbox";
constexpr const char* kSmsbox = "/usr/sbin/smsbox";

int CountOf(const std::string& text, const std::string& piece) {
  int count = 0;
  for (auto at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++count;
  return count;
}

}  // namespace

bool KannelEngine::IsInstalled() {
  return std::filesystem::exists(kBearerbox) && std::filesystem::exists(kSmsbox);
}

KannelEngine::KannelEngine(const std::string& folder, int smpp_port, const Options& options)
    : folder_(folder),
      certificate_(options.certificate),
      scheme_(certificate_.empty() ? "http://127.0.0.1:" : "https://127.0.0.1:"),
      admin_port_(UnusedPort()),
      box_port_(UnusedPort()) {
  std::filesystem::create_directories(folder_ + "/store");
  std::filesystem::create_directories(folder_ + "/reports");
  for (int i = 0; i < options.smsboxes; ++i) sendsms_ports_.push_back(UnusedPort());
  smsboxes_.resize(sendsms_ports_.size());
  WriteConfig(options, smpp_port);
}

KannelEngine::~KannelEngine() { KillAll(); }

void KannelEngine::WriteConfig(const Options& options, int smpp_port) const {
  const std::string loopback = "\"127.0.0.1\"\n";
  const std::string tls = certificate_.empty() ? ""
                                               : "ssl-server-cert-file = \"" + certificate_ +
                                                     "\"\nssl-server-key-file = \"" + options.key +
                                                     "\"\nsmsbox-port-ssl = true\n";
  const std::string bearerbox =
      "group = core\nadmin-port = " + std::to_string(admin_port_) +
      "\nadmin-interface = " + loopback + "admin-password = admin\nstatus-password = watch\n" +
      "smsbox-port = " + std::to_string(box_port_) + "\nsmsbox-interface = " + loopback +
      "box-deny-ip = \"*.*.*.*\"\nbox-allow-ip = " + loopback + tls +
      (tls.empty() ? "" : "admin-port-ssl = true\n") +
      (options.keeps_queue ? "store-type = spool\nstore-location = \"" + folder_ + "/store\"\n"
                           : std::string()) +
      "dlr-storage = spool\ndlr-spool = \"" + folder_ + "/reports\"\n" + "log-file = \"" + folder_ +
      "/bearerbox.log\"\nlog-level = 2\n" + options.core +
      "\ngroup = smsc\nsmsc = smpp\nsmsc-id = phones\nhost = 127.0.0.1\nport = " +
      std::to_string(smpp_port) +
      "\ntransceiver-mode = true\nsmsc-username = orvalo\nsmsc-password = secret\n"
      "system-type = \"\"\ninterface-version = 34\nreconnect-delay = 1\n"
      "enquire-link-interval = 30\nmax-pending-submits = 50\nsource-addr-autodetect = true\n"
      "dest-addr-ton = 1\ndest-addr-npi = 1\ndenied-prefix = \"999\"\n" +
      options.smsc + "\ngroup = smsbox\nbearerbox-host = 127.0.0.1\n";
  Spill(folder_ + "/bearerbox.conf", bearerbox);
  for (std::size_t i = 0; i < sendsms_ports_.size(); ++i) {
    Spill(ConfigOf(static_cast<int>(i)),
          "group = core\nadmin-port = " + std::to_string(admin_port_) +
              "\nadmin-password = admin\nsmsbox-port = " + std::to_string(box_port_) + "\n" + tls +
              (tls.empty() ? "" : "ssl-trusted-ca-file = \"" + certificate_ + "\"\n") +
              "\ngroup = smsbox\nbearerbox-host = 127.0.0.1\nbearerbox-port = " +
              std::to_string(box_port_) + "\nsendsms-port = " + std::to_string(sendsms_ports_[i]) +
              (tls.empty() ? "" : "\nbearerbox-port-ssl = true\nsendsms-port-ssl = true") +
              "\nsendsms-interface = " + loopback +
              "sendsms-chars = \"0123456789 \"\nmax-pending-requests = 512\n" +
              "http-request-retry = 30\nhttp-queue-delay = 1\nlog-file = \"" + folder_ + "/smsbox" +
              std::to_string(i) + ".log\"\nlog-level = 2\n" +
              "\ngroup = sendsms-user\nusername = orvalo\npassword = engine\n"
              "user-deny-ip = \"*.*.*.*\"\nuser-allow-ip = " +
              loopback +
              "max-messages = 1\nconcatenation = false\n"
              "\ngroup = sms-service\nkeyword = default\nmax-messages = 0\ntext = \"none\"\n");
  }
}

bool KannelEngine::Start() {
  bearerbox_ = std::make_unique<ChildProcess>(
      std::vector<std::string>{kBearerbox, "-v", "4", folder_ + "/bearerbox.conf"},
      folder_ + "/bearerbox.out", folder_ + "/bearerbox.err");
  if (!AwaitStatus(0, false)) return false;
  for (std::size_t i = 0; i < smsboxes_.size(); ++i) {
    const auto name = folder_ + "/smsbox" + std::to_string(i);
    smsboxes_[i] = std::make_unique<ChildProcess>(
        std::vector<std::string>{kSmsbox, "-v", "4", ConfigOf(static_cast<int>(i))}, name + ".out",
        name + ".err");
  }
  return AwaitStatus(static_cast<int>(smsboxes_.size()), true);
}

void KannelEngine::Stop() {
  for (auto& box : smsboxes_) {
    if (!box) continue;
    box->Signal(SIGINT);
    box->Wait();
    box.reset();
  }
  if (!bearerbox_) return;
  bearerbox_->Signal(SIGINT);
  bearerbox_->Wait();
  bearerbox_.reset();
}

void KannelEngine::KillAll() {
  // A parent smsbox that sees the engine die would begin anew.
  for (auto& box : smsboxes_) box.reset();
  bearerbox_.reset();
}

void KannelEngine::KillSmsbox(int number) {
  smsboxes_.at(static_cast<std::size_t>(number)).reset();
}

std::string KannelEngine::sendsms_url(int box) const {
  return scheme_ + std::to_string(sendsms_ports_.at(static_cast<std::size_t>(box))) +
         "/cgi-bin/sendsms";
}

std::string KannelEngine::status_url() const {
  return scheme_ + std::to_string(admin_port_) + "/status.xml";
}

std::string KannelEngine::Status() const {
  platform::HttpClient client;
  client.SetCertificateAuthorities(certificate_);
  platform::HttpRequest request;
  request.url = status_url() + "?password=watch";
  request.timeout_ms = 2'000;
  return client.Perform(request).body;
}

std::string KannelEngine::Diagnosis() const {
  std::string all;
  for (const auto& file : std::filesystem::directory_iterator(folder_)) {
    if (!file.is_regular_file() || file.path().extension() == ".conf") continue;
    const auto text = Slurp(file.path());
    constexpr std::size_t kEnd = 2'000;
    all += file.path().filename().string() + ":\n" +
           text.substr(text.size() < kEnd ? 0 : text.size() - kEnd) + "\n";
  }
  return all;
}

// Asks the status page only: a connection to the boxes' own port would hold an smsbox up.
bool KannelEngine::AwaitStatus(int boxes, bool linked) const {
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (std::chrono::steady_clock::now() < give_up) {
    const auto status = Status();
    if (!status.empty() && CountOf(status, "<type>smsbox</type>") >= boxes &&
        (!linked || CountOf(status, "<status>online") >= 1)) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

}  // namespace orvalo::test
