#include "platform/thread_id.h"

#include <unistd.h>

namespace orvalo::platform {

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(gettid()); }

}  // namespace orvalo::platform
