#pragma once
#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/optional.hpp>
#include <cstdint>
#include <string>

#include "service/http_message.h"

namespace orvalo::service {

// A request's body, in the form that the parser fills: kept up to a limit, else taken in and thrown
// away, so that the client, busy sending, comes to see the reply.
struct LimitedBody {
  struct value_type {
    std::string text;
    std::size_t largest = 0;
    bool too_large = false;  // `text` is then empty
  };

  class reader {
   public:
    template <bool is_request, typename Fields>
    reader(boost::beast::http::header<is_request, Fields>&, value_type& body) : body_(body) {}

    void init(const boost::optional<std::uint64_t>& length, boost::system::error_code& error) {
      body_.too_large = length && *length > body_.largest;
      error = {};
    }
    template <typename Buffers>
    std::size_t put(const Buffers& buffers, boost::system::error_code& error) {
      const auto count = boost::asio::buffer_size(buffers);
      body_.too_large = body_.too_large || body_.text.size() + count > body_.largest;
      if (body_.too_large) {
        std::string().swap(body_.text);
      } else {
        for (auto part = boost::asio::buffer_sequence_begin(buffers);
             part != boost::asio::buffer_sequence_end(buffers); ++part) {
          body_.text.append(static_cast<const char*>(part->data()), part->size());
        }
      }
      error = {};
      return count;
    }
    void finish(boost::system::error_code& error) { error = {}; }

   private:
    value_type& body_;
  };
};

using RequestHead = boost::beast::http::request<LimitedBody>;

// Whether the length of the body is beyond doubt: whoever stands between (a proxy) must not have
// seen another end than we do.
bool HasClearLength(const RequestHead& request);

// Fills in all of a request but its body and its address; the request, and `path`, which takes the
// decoded path, must outlive it. False when its target is none.
bool FillIn(const RequestHead& request, std::string& path, ServedRequest& served);

// What the header "X-Forwarded-For" says of who asks: its last address, or "".
std::string ForwardedFor(const RequestHead& request);

// The reply as it goes over the wire.
std::string ReplyText(const ServedReply& reply, bool without_body, bool close);

}  // namespace orvalo::service
