#include "service/http_request.h"

#include <fmt/format.h>

#include <iterator>

namespace orvalo::service {
namespace {

namespace http = boost::beast::http;

std::string_view ViewOf(boost::beast::string_view text) { return {text.data(), text.size()}; }

const char* ReasonOf(int status) {
  return status < 300 ? "OK" : status < 400 ? "Elsewhere" : status < 500 ? "Refused" : "Failed";
}

bool IsControl(char character) {
  return static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
}

}  // namespace

bool HasClearLength(const RequestHead& request) {
  const auto codings = request.equal_range(http::field::transfer_encoding);
  if (codings.first == codings.second) return true;
  return request.version() >= 11 && std::next(codings.first) == codings.second &&
         request.count(http::field::content_length) == 0 &&
         boost::beast::iequals(codings.first->value(), "chunked");
}

bool FillIn(const RequestHead& request, std::string& path, ServedRequest& served) {
  served.method = ViewOf(request.method_string());
  auto target = ViewOf(request.target());
  // A proxy may be asked with the whole address.
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (!target.starts_with(scheme)) continue;
    const auto slash = target.find('/', scheme.size());
    target = slash == std::string_view::npos ? "/" : target.substr(slash);
  }
  const auto mark = target.find('?');
  served.query = mark == std::string_view::npos ? std::string_view() : target.substr(mark + 1);
  const auto decoded = PercentDecoded(target.substr(0, mark), false);
  if (!decoded || std::any_of(decoded->begin(), decoded->end(), IsControl)) return false;
  path = *decoded;
  served.path = path;
  served.header = [&request](const char* name) -> std::string_view {
    const auto field = request.find(name);
    return field == request.end() ? std::string_view() : ViewOf(field->value());
  };
  return true;
}

std::string ForwardedFor(const RequestHead& request) {
  const auto fields = request.equal_range("X-Forwarded-For");
  std::string_view last;
  for (auto field = fields.first; field != fields.second; ++field) last = ViewOf(field->value());
  last.remove_prefix(last.rfind(',') + 1);  // none: npos + 1 is 0
  const auto begin = last.find_first_not_of(" \t");
  const auto end = last.find_last_not_of(" \t");
  return begin == std::string_view::npos ? "" : std::string(last.substr(begin, end - begin + 1));
}

std::string ReplyText(const ServedReply& reply, bool without_body, bool close) {
  fmt::memory_buffer out;
  fmt::format_to(std::back_inserter(out),
                 "HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\n", reply.status,
                 ReasonOf(reply.status), reply.content_type, reply.body.size());
  for (const auto& [name, value] : reply.headers) {
    fmt::format_to(std::back_inserter(out), "{}: {}\r\n", name, value);
  }
  if (close) fmt::format_to(std::back_inserter(out), "Connection: close\r\n");
  fmt::format_to(std::back_inserter(out), "\r\n{}", without_body ? "" : reply.body);
  return fmt::to_string(out);
}

}  // namespace orvalo::service
