#include "net/link_message.h"

namespace orvalo {

namespace {

constexpr std::string_view kVendorSite = "https://www.orvalo.example";

}  // namespace

std::string LinkAddress(std::string_view url, int help_number) {
  if (url.empty()) return std::string(kVendorSite);
  std::string address(url);
  if (help_number > 0) address += "?help=" + std::to_string(help_number);
  return address;
}

platform::BoxAnswer ShowLinkMessage(platform::MessageBoxes& boxes, const std::string& text,
                                    const std::string& caption, std::string_view url,
                                    int help_number) {
  return boxes.ShowLink(text, caption, LinkAddress(url, help_number));
}

}  // namespace orvalo
