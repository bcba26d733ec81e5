#include "platform/ldap_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace orvalo::platform {
namespace {

constexpr ber_len_t kLargestMessage = 64u << 20;  // bytes; a group of a million members fits
// Between the socket itself (10) and TLS (20).
constexpr int kLayerLevel = (LBER_SBIOD_LEVEL_PROVIDER + LBER_SBIOD_LEVEL_TRANSPORT) / 2;

}  // namespace

timeval AsTimeval(std::chrono::steady_clock::duration time) {
  const auto all = std::chrono::duration_cast<std::chrono::microseconds>(time).count();
  return {static_cast<time_t>(all / 1'000'000), static_cast<suseconds_t>(all % 1'000'000)};
}

LdapSocketLimits::LdapSocketLimits(Clock::duration answer_time) : answer_time_(answer_time) {}

LdapSocketLimits::Clock::duration LdapSocketLimits::TimeLeft() const {
  const auto now = Clock::now();
  if (now >= deadline_) return Clock::duration::zero();
  return std::min(answer_time_, deadline_ - now);
}

int LdapSocketLimits::Connected(LDAP*, Sockbuf* buffer, LDAPURLDesc*, sockaddr*,
                                ldap_conncb* callback) {
  auto* const limits = static_cast<LdapSocketLimits*>(callback->lc_arg);
  ber_socket_t socket = -1;
  ber_sockbuf_ctrl(buffer, LBER_SB_OPT_GET_FD, &socket);
  const timeval time = AsTimeval(limits->answer_time_);
  for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO})
    setsockopt(socket, SOL_SOCKET, option, &time, sizeof time);
  ber_len_t largest = kLargestMessage;
  ber_sockbuf_ctrl(buffer, LBER_SB_OPT_SET_MAX_INCOMING, &largest);
  return ber_sockbuf_add_io(buffer, &limits->layer_, kLayerLevel, limits);
}

int LdapSocketLimits::SetUp(Sockbuf_IO_Desc* layer, void* limits) {
  layer->sbiod_pvt = limits;
  return 0;
}

int LdapSocketLimits::Control(Sockbuf_IO_Desc* layer, int option, void* argument) {
  return LBER_SBIOD_CTRL_NEXT(layer, option, argument);
}

// Whether to try again. "Try again" itself is never answered: the library's TLS layer would do so
// at once, and for ever.
bool LdapSocketLimits::WaitFor(Sockbuf_IO_Desc* layer, short event, Clock::time_point end) {
  if (errno != EAGAIN && errno != EWOULDBLOCK) return errno == EINTR;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
  ber_socket_t socket = -1;
  ber_sockbuf_ctrl(layer->sbiod_sb, LBER_SB_OPT_GET_FD, &socket);
  pollfd wait{socket, event, 0};
  if (left > 0 && ::poll(&wait, 1, static_cast<int>(left)) != 0) return true;
  errno = ETIMEDOUT;
  return false;
}

ber_slen_t LdapSocketLimits::Read(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size) {
  const auto end = Clock::now() + static_cast<LdapSocketLimits*>(layer->sbiod_pvt)->TimeLeft();
  for (;;) {
    const ber_slen_t count = LBER_SBIOD_READ_NEXT(layer, bytes, size);
    if (count >= 0 || !WaitFor(layer, POLLIN, end)) return count;
  }
}

ber_slen_t LdapSocketLimits::Write(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size) {
  const auto end = Clock::now() + static_cast<LdapSocketLimits*>(layer->sbiod_pvt)->TimeLeft();
  for (;;) {
    const ber_slen_t count = LBER_SBIOD_WRITE_NEXT(layer, bytes, size);
    if (count >= 0 || !WaitFor(layer, POLLOUT, end)) return count;
  }
}

}  // namespace orvalo::platform
