#pragma once

struct mg_context;

namespace orvalo::test {

// mg_stop without its pause of two seconds: connections to the server's port wake its thread.
void StopServer(mg_context* context, int port);

}  // namespace orvalo::test
