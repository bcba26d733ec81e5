#pragma once
#include "store/records.h"

namespace orvalo::cli {

// Whether a status pass asks the gateway about the message.
bool IsFollowed(const MessageRow& row);

// Whether nothing more is going to happen to the message by itself.
bool IsSettled(const MessageRow& row);

}  // namespace orvalo::cli
