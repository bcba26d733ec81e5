#pragma once
#include <lber.h>
#include <ldap.h>

#include <chrono>

namespace orvalo::platform {

// Sees to it that no reading from and writing to a directory server takes for ever: the library
// waits for a message to begin, but not for the rest of one, nor for the other side of a TLS
// handshake. One for each handle; it must outlive it.
class LdapSocketLimits {
 public:
  using Clock = std::chrono::steady_clock;

  explicit LdapSocketLimits(Clock::duration answer_time);
  LdapSocketLimits(const LdapSocketLimits&) = delete;
  LdapSocketLimits& operator=(const LdapSocketLimits&) = delete;

  // Before the handle connects.
  void Attach(LDAP* handle) { ldap_set_option(handle, LDAP_OPT_CONNECT_CB, &callback_); }

  // Nothing waits beyond this point of time, nor longer than the answer time.
  void SetDeadline(Clock::time_point deadline) { deadline_ = deadline; }
  // How long to wait from now; 0 when the deadline has passed.
  Clock::duration TimeLeft() const;

 private:
  static int Connected(LDAP* handle, Sockbuf* buffer, LDAPURLDesc* server, sockaddr* address,
                       ldap_conncb* callback);
  static void Closed(LDAP*, Sockbuf*, ldap_conncb*) {}
  static int SetUp(Sockbuf_IO_Desc* layer, void* limits);
  static int Control(Sockbuf_IO_Desc* layer, int option, void* argument);
  static ber_slen_t Read(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size);
  static ber_slen_t Write(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size);
  static bool WaitFor(Sockbuf_IO_Desc* layer, short event, Clock::time_point end);

  Clock::duration answer_time_;
  Clock::time_point deadline_ = Clock::time_point::max();
  ldap_conncb callback_{&Connected, &Closed, this};
  Sockbuf_IO layer_{&SetUp, nullptr, &Control, &Read, &Write, nullptr};
};

timeval AsTimeval(std::chrono::steady_clock::duration time);

}  // namespace orvalo::platform
