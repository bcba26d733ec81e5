#include "support/smpp_stand_in.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <map>
#include <mutex>
#include <string_view>
#include <thread>

namespace orvalo::test {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

enum Command : std::uint32_t {
  kGenericNack = 0x80000000,
  kBindReceiver = 1,
  kBindTransmitter = 2,
  kSubmit = 4,
  kDeliver = 5,
  kUnbind = 6,
  kBindTransceiver = 9,
  kEnquireLink = 0x15,
  kResponse = 0x80000000,
};

enum Status : std::uint32_t {
  kOk = 0,
  kNotBound = 4,
  kBadDestination = 0x0B,
  kBindFailed = 0x0D,
  kQueueFull = 0x14,
  kThrottled = 0x58,
};

void PutNumber(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(value >> shift);
}

std::string Pdu(std::uint32_t command, std::uint32_t status, std::uint32_t sequence,
                const std::string& body) {
  std::string pdu;
  PutNumber(pdu, static_cast<std::uint32_t>(16 + body.size()));
  PutNumber(pdu, command);
  PutNumber(pdu, status);
  PutNumber(pdu, sequence);
  return pdu + body;
}

// Reads the fields of a body in their order; beyond its end everything is zero.
class FieldReader {
 public:
  explicit FieldReader(std::string_view body) : body_(body) {}
  std::uint32_t Number(int bytes) {
    std::uint32_t value = 0;
    for (; bytes > 0; --bytes) value = value << 8 | Byte();
    return value;
  }
  std::string Text() {
    std::string text;
    for (std::uint32_t byte = 0; (byte = Byte()) != 0;) text += static_cast<char>(byte);
    return text;
  }
  std::string Bytes(std::size_t count) {
    const auto bytes = body_.substr(std::min(at_, body_.size()), count);
    at_ += count;
    return std::string(bytes);
  }
  bool AtEnd() const { return at_ >= body_.size(); }

 private:
  std::uint32_t Byte() { return at_ < body_.size() ? static_cast<unsigned char>(body_[at_++]) : 0; }
  std::string_view body_;
  std::size_t at_ = 0;
};

SubmittedSm ReadSubmit(std::string_view body) {
  FieldReader fields(body);
  SubmittedSm sm;
  fields.Text();  // service type
  const auto byte = [&] { return static_cast<int>(fields.Number(1)); };
  sm.source_ton = byte();
  sm.source_npi = byte();
  sm.source = fields.Text();
  sm.dest_ton = byte();
  sm.dest_npi = byte();
  sm.dest = fields.Text();
  sm.esm_class = byte();
  sm.protocol_id = byte();
  sm.priority = byte();
  sm.schedule = fields.Text();
  sm.validity = fields.Text();
  sm.registered = byte();
  byte();  // replace if present
  sm.data_coding = byte();
  byte();  // default message
  sm.bytes = fields.Bytes(fields.Number(1));
  constexpr std::uint32_t kMessagePayload = 0x0424;
  while (!fields.AtEnd()) {
    const auto tag = fields.Number(2), length = fields.Number(2);
    const auto value = fields.Bytes(length);
    if (tag == kMessagePayload) sm.bytes = value;
  }
  return sm;
}

struct Ending {
  std::uint32_t status = kOk;
  std::vector<std::pair<const char*, int>> receipts;  // with the message's state
};

Ending EndingOf(const std::string& number) {
  static const std::map<std::string, Ending> endings{
      {"991", {kBadDestination, {}}},
      {"992", {kOk, {{"UNDELIV", 5}}}},
      {"993", {kOk, {{"ENROUTE", 1}, {"DELIVRD", 2}}}},
      {"994", {kOk, {{"EXPIRED", 3}}}},
      {"995", {kOk, {{"REJECTD", 8}}}},
      {"996", {kOk, {}}},
      {"997", {kThrottled, {}}},
      {"998", {kQueueFull, {}}},
      {"999", {kOk, {{"DELETED", 4}}}}};
  const auto place = endings.find(number.size() < 3 ? "" : number.substr(number.size() - 3));
  return place == endings.end() ? Ending{kOk, {{"DELIVRD", 2}}} : place->second;
}

void PutTlv(std::string& out, std::uint32_t tag, std::string_view value) {
  out += static_cast<char>(tag >> 8);
  out += static_cast<char>(tag);
  out += static_cast<char>(value.size() >> 8);
  out += static_cast<char>(value.size());
  out += value;
}

std::string ReceiptBody(const SubmittedSm& sm, const std::string& id, const char* state,
                        int state_number) {
  const bool good = std::string_view(state) == "DELIVRD" || std::string_view(state) == "ENROUTE";
  const std::string text = "id:" + id + " sub:001 dlvrd:" + (good ? "001" : "000") +
                           " submit date:2601010000 done date:2601010000 stat:" + state +
                           " err:" + (good ? "000" : "069") + " text:-";
  std::string body(1, '\0');  // service type
  body += static_cast<char>(sm.dest_ton);
  body += static_cast<char>(sm.dest_npi);
  body += sm.dest + '\0';
  body += static_cast<char>(sm.source_ton);
  body += static_cast<char>(sm.source_npi);
  body += sm.source + '\0';
  body += static_cast<char>(state_number == 1 ? 0x20 : 0x04);
  body += std::string(6, '\0');  // protocol, priority, schedule, validity, registered, replace
  body += '\0';                  // data coding
  body += '\0';
  body += static_cast<char>(text.size());
  body += text;
  PutTlv(body, 0x001E, id + '\0');
  PutTlv(body, 0x0427, std::string(1, static_cast<char>(state_number)));
  return body;
}

}  // namespace

struct SmppStandIn::Impl {
  struct Link {
    std::string in, out;
    bool bound = false;
    bool gone = false;
  };
  struct DueReceipt {
    SteadyTime when;
    std::string body;
  };

  Options options;
  int listener = -1, port = 0, wake[2] = {-1, -1};
  std::map<int, Link> links;   // by socket
  std::deque<DueReceipt> due;  // in the order of their time
  std::uint32_t sequence = 0;
  std::uint64_t next_id = static_cast<std::uint64_t>(std::time(nullptr)) << 24;
  std::atomic<bool> stops{false}, holds{false};
  std::thread thread;

  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  std::function<void(const SubmittedSm&)> hook;
  std::vector<SubmittedSm> submitted;
  std::size_t count = 0, receipts = 0;

  explicit Impl(const Options& its_options) : options(its_options) {
    listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(options.port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener, generic, length) != 0 || ::listen(listener, 16) != 0 ||
        ::getsockname(listener, generic, &length) != 0 || ::pipe2(wake, O_CLOEXEC) != 0)
      std::abort();
    port = ntohs(address.sin_port);
    thread = std::thread([this] { Run(); });
  }

  ~Impl() {
    stops = true;
    Wake();
    thread.join();
    for (const auto& [socket, link] : links) ::close(socket);
    for (const int file : {listener, wake[0], wake[1]}) ::close(file);
  }

  void Wake() const { (void)!::write(wake[1], "x", 1); }

  void Run() {
    while (!stops) {
      std::vector<pollfd> files{{listener, POLLIN, 0}, {wake[0], POLLIN, 0}};
      for (const auto& [socket, link] : links) {
        files.push_back(
            {socket, static_cast<short>(link.out.empty() ? POLLIN : POLLIN | POLLOUT), 0});
      }
      ::poll(files.data(), files.size(), MillisecondsToNext());
      if (files[0].revents != 0) {
        const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (socket >= 0) links[socket];
      }
      char dump[64];
      if (files[1].revents != 0) (void)!::read(wake[0], dump, sizeof dump);
      for (std::size_t i = 2; i < files.size(); ++i) {
        if (files[i].revents & ~POLLOUT) Receive(files[i].fd);
      }
      SendDue();
      for (auto& [socket, link] : links) Flush(socket, link);
      std::erase_if(links, [](const auto& entry) {
        if (entry.second.gone) ::close(entry.first);
        return entry.second.gone;
      });
    }
  }

  int MillisecondsToNext() const {
    if (due.empty() || holds) return 1000;
    const auto wait = due.front().when - std::chrono::steady_clock::now();
    return std::max<int>(
        0,
        static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(wait).count() + 1));
  }

  void Receive(int socket) {
    auto& link = links[socket];
    char bytes[65536];
    const auto count_read = ::recv(socket, bytes, sizeof bytes, 0);
    if (count_read <= 0) {
      link.gone = true;
      return;
    }
    link.in.append(bytes, static_cast<std::size_t>(count_read));
    std::size_t at = 0;
    while (link.in.size() - at >= 16) {
      FieldReader head(std::string_view(link.in).substr(at, 16));
      const auto length = head.Number(4);
      if (length < 16 || length > link.in.size() - at) break;
      const auto command = head.Number(4);
      head.Number(4);
      Take(link, command, head.Number(4), link.in.substr(at + 16, length - 16));
      at += length;
    }
    link.in.erase(0, at);
  }

  void Take(Link& link, std::uint32_t command, std::uint32_t number, const std::string& body) {
    switch (command) {
      case kBindReceiver:
      case kBindTransmitter:
      case kBindTransceiver: {
        FieldReader fields(body);
        link.bound = fields.Text() == "orvalo" && fields.Text() == "secret";
        link.out += Pdu(command | kResponse, link.bound ? kOk : kBindFailed, number,
                        std::string("standin") + '\0');
        return;
      }
      case kSubmit:
        Submit(link, number, body);
        return;
      case kEnquireLink:
      case kUnbind:
        link.out += Pdu(command | kResponse, kOk, number, "");
        return;
      default:
        if (command < kResponse) link.out += Pdu(kGenericNack, 3, number, "");
    }
  }

  void Submit(Link& link, std::uint32_t number, const std::string& body) {
    const auto sm = ReadSubmit(body);
    auto ending = EndingOf(sm.dest);
    if (!link.bound) ending = {kNotBound, {}};
    char id[24];
    std::snprintf(id, sizeof id, "%llx", static_cast<unsigned long long>(++next_id));
    {
      std::lock_guard guard(mutex);
      ++count;
      if (options.keeps_all) submitted.push_back(sm);
      if (hook) hook(sm);
      changed.notify_all();
    }
    link.out += Pdu(kSubmit | kResponse, ending.status, number,
                    ending.status == kOk ? std::string(id) + '\0' : std::string());
    if ((sm.registered & 3) == 0) return;
    auto when = std::chrono::steady_clock::now();
    for (const auto& [state, state_number] : ending.receipts) {
      when += std::chrono::milliseconds(options.receipt_delay_ms);
      auto place = due.end();
      while (place != due.begin() && std::prev(place)->when > when) --place;
      due.insert(place, {when, ReceiptBody(sm, id, state, state_number)});
    }
  }

  // Over the first link that is logged in, as a centre with several sessions of one user does.
  void SendDue() {
    if (holds) return;
    const auto now = std::chrono::steady_clock::now();
    for (auto& [socket, link] : links) {
      if (!link.bound || link.gone) continue;
      std::size_t sent = 0;
      for (; !due.empty() && due.front().when <= now; due.pop_front(), ++sent) {
        link.out += Pdu(kDeliver, kOk, ++sequence, due.front().body);
      }
      if (sent == 0) return;
      std::lock_guard guard(mutex);
      receipts += sent;
      changed.notify_all();
      return;
    }
  }

  static void Flush(int socket, Link& link) {
    if (link.out.empty() || link.gone) return;
    const auto sent = ::send(socket, link.out.data(), link.out.size(), MSG_NOSIGNAL);
    if (sent > 0) link.out.erase(0, static_cast<std::size_t>(sent));
    if (sent < 0 && errno != EAGAIN) link.gone = true;
  }
};

SmppStandIn::SmppStandIn() : SmppStandIn(Options{}) {}
SmppStandIn::SmppStandIn(const Options& options) : impl_(std::make_unique<Impl>(options)) {}
SmppStandIn::~SmppStandIn() = default;

int SmppStandIn::port() const { return impl_->port; }

std::vector<SubmittedSm> SmppStandIn::submitted() const {
  std::lock_guard guard(impl_->mutex);
  return impl_->submitted;
}

std::size_t SmppStandIn::count() const {
  std::lock_guard guard(impl_->mutex);
  return impl_->count;
}

std::size_t SmppStandIn::receipts() const {
  std::lock_guard guard(impl_->mutex);
  return impl_->receipts;
}

bool SmppStandIn::Await(std::size_t submissions) const {
  std::unique_lock lock(impl_->mutex);
  return impl_->changed.wait_for(lock, std::chrono::seconds(20),
                                 [&] { return impl_->count >= submissions; });
}

void SmppStandIn::OnSubmit(std::function<void(const SubmittedSm&)> hook) {
  std::lock_guard guard(impl_->mutex);
  impl_->hook = std::move(hook);
}

void SmppStandIn::HoldReceipts(bool hold) {
  impl_->holds = hold;
  impl_->Wake();
}

std::map<std::string, std::vector<SubmittedSm>> ArrivedByNumber(const SmppStandIn& network) {
  std::map<std::string, std::vector<SubmittedSm>> arrived;
  for (auto& sm : network.submitted()) arrived[sm.dest].push_back(sm);
  for (auto& [number, parts] : arrived) {
    std::sort(parts.begin(), parts.end(),
              [](const auto& one, const auto& other) { return one.bytes < other.bytes; });
  }
  return arrived;
}

}  // namespace orvalo::test
