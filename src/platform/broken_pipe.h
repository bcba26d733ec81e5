#pragma once

namespace orvalo::platform {

// Sees to it that writing to a connection that the other side has closed is an error, not the end
// of the process; for libraries that leave this to their user. A handler that is in place stays.
void SurviveBrokenPipes();

}  // namespace orvalo::platform
