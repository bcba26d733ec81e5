// What browsers and the engine send to the service: forms, cookies, delivery reports.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/code_page.h"
#include "service/delivery_reports.h"
#include "service/event_log.h"
#include "service/metrics.h"
#include "service/page_text.h"

namespace {

using namespace orvalo::service;

void Require(bool condition) {
  if (!condition) std::abort();
}

void CheckPageText(const std::string& text) {
  const std::string html = EscapeHtml(text);
  Require(html.find_first_of("<>\"'") == std::string::npos);
  for (const char c : html) Require(static_cast<unsigned char>(c) >= 0x20);
  if (orvalo::platform::IsValidUtf8(text))
    Require(orvalo::platform::CountCharacters(Shortened(text, 20)) <= 21);
}

// Split at its line feeds: path, query, and the rest.
void TakeReport(std::string_view input) {
  static orvalo::platform::Clock& clock = orvalo::platform::SystemClock();
  static const EventLog log(clock, [](const std::string&) {});
  static Metrics metrics;
  static DeliveryReports reports({nullptr, metrics, log, clock});
  const std::size_t end = input.find('\n');
  const std::string path = "/reports/" + std::string(input.substr(0, end));
  ServedRequest request;
  request.method = "GET";
  request.path = path;
  if (end != std::string_view::npos) request.query = input.substr(end + 1);
  const int status = reports.Take(request);
  Require(status == 404 || status == 503);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  for (const char* name : {"token", "voucher", "to", "detail"}) {
    if (const auto field = FormField(input, name)) {
      Require(field->size() <= 255);
      CheckPageText(*field);
    }
    Require(CookieValue(input, name).size() <= 255);
  }
  CheckPageText(input);
  TakeReport(input);
  return 0;
}
