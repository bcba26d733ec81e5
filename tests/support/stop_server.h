#pragma once
#include <functional>

struct mg_context;

namespace orvalo::test {

// mg_stop without its pause of two seconds: connections to the server's port wake its thread.
void StopServer(mg_context* context, int port);
// The same for a server whose `stop` calls mg_stop somewhere within.
void StopServer(const std::function<void()>& stop, int port);

}  // namespace orvalo::test
