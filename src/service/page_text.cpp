#include "service/page_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/code_page.h"
#include "service/http_message.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kLongestCookie = 255;

// Takes the part up to the separator off the front, and the separator with it.
std::string_view NextPart(std::string_view& text, char separator) {
  const auto part = text.substr(0, text.find(separator));
  text.remove_prefix(std::min(part.size() + 1, text.size()));
  return part;
}

}  // namespace

std::string EscapeHtml(std::string_view text) {
  std::string html;
  html.reserve(text.size());
  for (const char character : text) {
    switch (character) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += static_cast<unsigned char>(character) < 0x20 || character == 0x7f ? ' ' : character;
    }
  }
  return html;
}

std::string Shortened(std::string_view text, std::size_t count) {
  std::string shown(platform::FirstCharacters(text, count));
  return shown.size() < text.size() ? shown + "…" : shown;
}

std::optional<std::string> FormField(std::string_view form, const char* name, std::size_t most) {
  while (!form.empty()) {
    const auto field = NextPart(form, '&');
    const auto equals = field.find('=');
    if (equals == std::string_view::npos || field.substr(0, equals) != name) continue;
    auto value = PercentDecoded(field.substr(equals + 1), true);
    if (!value || value->size() > most) return std::nullopt;
    return value;
  }
  return std::nullopt;
}

std::string CookieValue(std::string_view header, const char* name) {
  while (!header.empty()) {
    auto cookie = NextPart(header, ';');
    cookie.remove_prefix(std::min(cookie.find_first_not_of(' '), cookie.size()));
    const auto equals = cookie.find('=');
    if (equals == std::string_view::npos || cookie.substr(0, equals) != name) continue;
    cookie.remove_prefix(equals + 1);
    return std::string(cookie.size() > kLongestCookie ? "" : cookie);
  }
  return {};
}

std::string DayText(const platform::LocalTime& local) {
  return fmt::format("{:04}-{:02}-{:02}", local.year, local.month, local.day);
}

std::string MinuteText(const platform::LocalTime& local) {
  return fmt::format("{} {:02}:{:02}", DayText(local), local.hour, local.minute);
}

}  // namespace orvalo::service
