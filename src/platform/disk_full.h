#pragma once
#include <string>

namespace orvalo::platform {

// Whether a number of the system (errno) says that there is no room for what was to be written: the
// disk is full, or the user's share of it. Any thread.
bool MeansDiskFull(int system_error);

// Whether nothing more can be written where the file or folder `path` stands; for failures whose
// number is not known. Any thread.
bool IsDiskFull(const std::string& path);

}  // namespace orvalo::platform
