#include "service/http_conversation.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <optional>
#include <type_traits>

#include "service/http_request.h"

namespace orvalo::service {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::uint32_t kLargestHead = 16u << 10;
constexpr std::size_t kReadAtOnce = 16u << 10;
constexpr std::size_t kFirstRead = 4u << 10;
// Unread bytes of a request that is too large are taken in up to here.
constexpr std::uint64_t kMostDrained = 16u << 20;
constexpr std::chrono::seconds kLastWords{2};
constexpr char kContinue[] = "HTTP/1.1 100 Continue\r\n\r\n";

// The status of the reply to what the parser calls an error.
int StatusOf(const error_code& error) {
  if (error == http::error::body_limit || error == http::error::header_limit) return 413;
  if (error == http::error::bad_version) return 505;
  return 400;
}

bool IsMalformed(const error_code& error) {
  return error.category() == make_error_code(http::error::bad_version).category() &&
         error != http::error::end_of_stream;
}

template <typename Stream>
class Conversation final : public HttpConversation {
 public:
  static constexpr bool kTls = !std::is_same_v<Stream, tcp::socket>;

  Conversation(Stream stream, HttpHost& host)
      : stream_(std::move(stream)), host_(host), hold_(stream_.get_executor()) {}

  void Start() override {
    Await(host_.options().patience.first_byte);
    if constexpr (kTls) {
      stream_.async_handshake(asio::ssl::stream_base::server, [self = Self()](error_code error) {
        if (error) return self->Finish();
        self->AwaitRequest(self->host_.options().patience.first_byte);
      });
    } else {
      AwaitRequest(host_.options().patience.first_byte);
    }
  }

  void End() override {
    error_code ignored;
    socket().close(ignored);
    hold_.cancel();
  }

  // A slow request is told so; whatever else takes too long just ends.
  void Expire() override {
    if (!std::exchange(reading_, false)) return End();
    expired_ = true;
    error_code ignored;
    socket().cancel(ignored);
    deadline_ = Time::time_point::max();
  }

 private:
  std::shared_ptr<Conversation> Self() {
    return std::static_pointer_cast<Conversation>(shared_from_this());
  }
  tcp::socket& socket() {
    if constexpr (kTls) {
      return stream_.next_layer();
    } else {
      return stream_;
    }
  }

  void Await(std::chrono::milliseconds patience) {
    deadline_ = Time::now() + patience;
    if (host_.stopping()) Hurry(Time::now() + kLastWords);
  }

  void AwaitRequest(std::chrono::milliseconds patience) {
    if (host_.stopping()) return Leave(false);
    parser_.emplace();
    parser_->header_limit(kLargestHead);
    parser_->body_limit(kMostDrained);
    parser_->get().body().largest = host_.options().largest_body;
    host_.Waits(*this);
    if (buffer_.size() > 0) return ReadHead();
    Await(patience);
    stream_.async_read_some(buffer_.prepare(kFirstRead),
                            [self = Self()](error_code error, std::size_t count) {
                              if (error) return self->Finish();
                              self->buffer_.commit(count);
                              self->host_.Waits(*self);
                              self->ReadHead();
                            });
  }

  void ReadHead() {
    Await(host_.options().patience.head);
    reading_ = true;
    http::async_read_header(
        stream_, buffer_, *parser_,
        [self = Self()](error_code error, std::size_t) { self->OnHead(error); });
  }

  void OnHead(error_code error) {
    if (error) return Fail(error);
    if (!HasClearLength(parser_->get())) return Refuse(400);
    Await(host_.options().patience.body);
    if (parser_->is_done()) return Dispatch();
    if (!boost::beast::iequals(parser_->get()[http::field::expect], "100-continue")) {
      return ReadBody();
    }
    if (parser_->get().body().too_large) return Refuse(413);
    asio::async_write(stream_, asio::buffer(kContinue, sizeof kContinue - 1),
                      [self = Self()](error_code failure, std::size_t) {
                        if (failure) return self->Fail(failure);
                        self->ReadBody();
                      });
  }

  void ReadBody() {
    http::async_read(stream_, buffer_, *parser_, [self = Self()](error_code error, std::size_t) {
      if (error) return self->Fail(error);
      self->Dispatch();
    });
  }

  void Fail(error_code error) {
    if (expired_) return Refuse(408);
    if (!IsMalformed(error)) return Finish();
    Refuse(StatusOf(error));
  }

  // What is no proper request has no sure end either: nothing after it is read.
  void Refuse(int status) {
    BeginWork();
    const auto reply = host_.handler().Malformed(status);
    const bool without_body = parser_->get().method() == http::verb::head;
    Reply(ReplyText(reply, without_body, true), false, true);
  }

  void BeginWork() {
    reading_ = false;
    deadline_ = Time::time_point::max();
    host_.Works(*this);
  }

  void Dispatch() {
    if (host_.stopping()) return Finish();
    auto& request = parser_->get();
    if (!FillIn(request, path_, served_)) return Refuse(400);
    BeginWork();
    served_.body_too_large = request.body().too_large;
    served_.body = std::move(request.body().text);
    served_.address = WhoAsks();
    const bool takes_long = host_.handler().TakesLong(served_.method, served_.path);
    host_.Work(takes_long, [self = Self()]() mutable { Answer(std::move(self)); });
  }

  std::string WhoAsks() {
    error_code error;
    const auto peer = socket().remote_endpoint(error).address();
    const auto& proxies = host_.options().proxies;
    if (std::find(proxies.begin(), proxies.end(), NameOf(peer)) != proxies.end()) {
      const auto told = asio::ip::make_address(ForwardedFor(parser_->get()), error);
      if (!error) return CountedAddress(told);
    }
    return CountedAddress(peer);
  }

  // On a worker; nothing else touches the conversation meanwhile.
  static void Answer(std::shared_ptr<Conversation> self) {
    const auto& request = self->parser_->get();
    const auto reply = self->host_.handler().Handle(self->served_);
    const bool close = reply.drop || request.version() < 11 || !self->parser_->keep_alive();
    auto text = ReplyText(reply, request.method() == http::verb::head, close);
    const auto executor = self->stream_.get_executor();
    asio::post(executor, [self = std::move(self), text = std::move(text), close, drop = reply.drop,
                          hold = reply.hold]() mutable {
      if (drop) return self->Finish();
      if (hold.count() > 0) return self->Hold(hold, std::move(text), !close);
      self->Reply(std::move(text), !close, false);
    });
  }

  // Meanwhile it may be ended for another's sake.
  void Hold(std::chrono::milliseconds hold, std::string text, bool keep) {
    if (host_.stopping()) return Reply(std::move(text), keep, false);
    host_.Waits(*this);
    hold_.expires_after(hold);
    hold_.async_wait([self = Self(), text = std::move(text), keep](error_code) mutable {
      self->host_.Works(*self);
      self->Reply(std::move(text), keep, false);
    });
  }

  // Head and body in one write, else Nagle's algorithm and delayed acknowledgements add 40 ms.
  void Reply(std::string text, bool keep, bool unread) {
    Await(host_.options().patience.reply);
    out_ = std::move(text);
    asio::async_write(stream_, asio::buffer(out_),
                      [self = Self(), keep, unread](error_code error, std::size_t) {
                        if (error) return self->Finish();
                        if (!keep) return self->Leave(unread);
                        self->AwaitRequest(self->host_.options().patience.next_request);
                      });
  }

  // `unread`: more may come from the client; closing upon it would take the reply away again.
  void Leave(bool unread) {
    Await(kLastWords);
    if constexpr (kTls) {
      stream_.async_shutdown([self = Self()](error_code) { self->Finish(); });
    } else {
      if (!unread) return Finish();
      error_code ignored;
      stream_.shutdown(tcp::socket::shutdown_send, ignored);
      buffer_.clear();
      Drain();
    }
  }

  void Drain() {
    stream_.async_read_some(buffer_.prepare(kReadAtOnce),
                            [self = Self()](error_code error, std::size_t count) {
                              self->drained_ += count;
                              if (error || self->drained_ > kMostDrained) return self->Finish();
                              self->Drain();
                            });
  }

  void Finish() {
    if (std::exchange(finished_, true)) return;
    End();
    host_.Ended(*this);
  }

  Stream stream_;
  HttpHost& host_;
  asio::steady_timer hold_;
  boost::beast::flat_buffer buffer_{kReadAtOnce};
  std::optional<http::request_parser<LimitedBody>> parser_;
  ServedRequest served_;
  std::string path_, out_;
  std::uint64_t drained_ = 0;
  bool reading_ = false;  // a request has begun and is not there as a whole
  bool expired_ = false;
  bool finished_ = false;
};

}  // namespace

std::shared_ptr<HttpConversation> MakeConversation(tcp::socket socket, asio::ssl::context* tls,
                                                   HttpHost& host) {
  if (tls == nullptr) return std::make_shared<Conversation<tcp::socket>>(std::move(socket), host);
  using TlsStream = asio::ssl::stream<tcp::socket>;
  return std::make_shared<Conversation<TlsStream>>(TlsStream(std::move(socket), *tls), host);
}

std::string NameOf(const asio::ip::address& address) {
  if (address.is_v4() || !address.to_v6().is_v4_mapped()) return address.to_string();
  return asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6()).to_string();
}

std::string CountedAddress(const asio::ip::address& address) {
  if (address.is_v4() || address.to_v6().is_v4_mapped()) return NameOf(address);
  auto network = address.to_v6().to_bytes();
  std::fill(network.begin() + 8, network.end(), std::uint8_t{0});
  return asio::ip::address_v6(network).to_string() + "/64";
}

}  // namespace orvalo::service
