#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace orvalo::service {

// Texts on their way to and from a browser. Pure functions, any thread.

// The text as it may stand in HTML, in an element as well as in a quoted attribute. Control
// characters become blanks.
std::string EscapeHtml(std::string_view text);

// The first `count` characters, with "…" behind them when there are more.
std::string Shortened(std::string_view text, std::size_t count);

// A field of a query or of a form (application/x-www-form-urlencoded), decoded; nothing when it is
// missing or longer than `most` bytes.
std::optional<std::string> FormField(std::string_view form, const char* name,
                                     std::size_t most = 255);

// The value of a cookie in the header "Cookie"; "" when it is missing or longer than 255 bytes.
std::string CookieValue(std::string_view header, const char* name);

// "2026-11-22" and "2026-11-22 23:58", as the clock's zone has it.
std::string DayText(const platform::LocalTime& local);
std::string MinuteText(const platform::LocalTime& local);

}  // namespace orvalo::service
