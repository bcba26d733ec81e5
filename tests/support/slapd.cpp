#include "support/slapd.h"

#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "support/raw_server.h"

namespace orvalo::test {
std::string Slapd::SchemaLine(const std::string& name) {
  return "include /etc/ldap/schema/" + name + ".schema\n";
}

Slapd::Slapd(const std::string& ldif, const std::string& config) {
  std::filesystem::create_directory(folder_.File("db"));
  Spill(folder_.File("slapd.conf"),
        SchemaLine("core") + SchemaLine("cosine") + SchemaLine("inetorgperson") + config +
            "\nmodulepath /usr/lib/ldap\nmoduleload back_mdb\nloglevel none\n"
            "database mdb\nsuffix \"dc=orvalo,dc=test\"\n"
            "rootdn \"cn=admin,dc=orvalo,dc=test\"\nrootpw secret\ndbnosync\n"
            "index objectClass eq\nmaxsize 268435456\ndirectory \"" +
            folder_.File("db") + "\"\n");
  Spill(folder_.File("tree.ldif"), ldif);
  const ProgramResult loaded = RunProgram(
      {ORVALO_SLAPADD, "-q", "-f", folder_.File("slapd.conf"), "-l", folder_.File("tree.ldif")});
  // Another program may take a free port before slapd does.
  for (int attempt = 0; attempt < 3 && loaded.status == 0; ++attempt) {
    port_ = UnusedPort();
    tls_port_ = UnusedPort();
    if (Serve()) return;
  }
  port_ = tls_port_ = 0;
  std::fprintf(stderr, "slapd does not run: %s%s\n", loaded.err.c_str(),
               Slurp(folder_.File("err")).c_str());
}

bool Slapd::Serve() {
  process_ = std::make_unique<ChildProcess>(
      std::vector<std::string>{ORVALO_SLAPD, "-f", folder_.File("slapd.conf"), "-h",
                               url() + " " + tls_url(), "-d", "none"},
      folder_.File("out"), folder_.File("err"));
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (std::chrono::steady_clock::now() < give_up) {
    if (const int socket = ConnectLoopback(port_); socket >= 0) {
      ::close(socket);
      return true;
    }
    if (!process_->IsRunning()) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

int Slapd::Connections() const {
  int count = 0;
  for (const auto& item : std::filesystem::directory_iterator("/proc/self/fd")) {
    const int descriptor = std::atoi(item.path().filename().c_str());
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    const bool connected =
        ::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
    if (connected && peer.sin_family == AF_INET && ntohs(peer.sin_port) == port_) ++count;
  }
  return count;
}

void Slapd::Stop() {
  process_->Signal(SIGKILL);
  process_->Wait();
}

void Slapd::Start() {
  if (!Serve()) port_ = 0;
}

}  // namespace orvalo::test
