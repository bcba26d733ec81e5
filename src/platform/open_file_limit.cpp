#include "platform/open_file_limit.h"

#include <sys/resource.h>

#include <algorithm>
#include <limits>

namespace orvalo::platform {

std::uint64_t RaiseOpenFileLimit(std::uint64_t wanted) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return std::numeric_limits<std::uint64_t>::max();
  const rlimit raised{std::min<rlim_t>(wanted, limit.rlim_max), limit.rlim_max};
  if (raised.rlim_cur > limit.rlim_cur && setrlimit(RLIMIT_NOFILE, &raised) == 0) limit = raised;
  return limit.rlim_cur;
}

}  // namespace orvalo::platform
