#include "service/page_text.h"

#include <civetweb.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/code_page.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kCookieBytes = 256;  // with the zero behind it

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
  std::string value(std::min(form.size(), most) + 1, '\0');  // with the zero behind it
  const int length = mg_get_var(form.data(), form.size(), name, value.data(), value.size());
  if (length < 0) return std::nullopt;
  value.resize(static_cast<std::size_t>(length));
  return value;
}

std::string CookieValue(std::string_view header, const char* name) {
  std::array<char, kCookieBytes> value{};
  const int length = mg_get_cookie(std::string(header).c_str(), name, value.data(), value.size());
  return length < 0 ? std::string() : std::string(value.data(), static_cast<std::size_t>(length));
}

std::string DayText(const platform::LocalTime& local) {
  return fmt::format("{:04}-{:02}-{:02}", local.year, local.month, local.day);
}

std::string MinuteText(const platform::LocalTime& local) {
  return fmt::format("{} {:02}:{:02}", DayText(local), local.hour, local.minute);
}

}  // namespace orvalo::service
