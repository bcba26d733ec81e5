#pragma once
#include <string>
#include <string_view>

#include "platform/message_box.h"

namespace orvalo {

// The address that a link message shows: `url`, completed to "<url>?help=<number>" when the help
// number is above 0, or the vendor's site when `url` is empty.
std::string LinkAddress(std::string_view url, int help_number);

// Shows a message whose last line is a clickable address. Any thread; returns when it has been
// closed, and how: kAccepted for OK, kCancel for everything else.
platform::BoxAnswer ShowLinkMessage(platform::MessageBoxes& boxes, const std::string& text,
                                    const std::string& caption, std::string_view url,
                                    int help_number);

}  // namespace orvalo
