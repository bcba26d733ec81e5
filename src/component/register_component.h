#pragma once
#include "platform/automation.h"

namespace orvalo::component {

// Makes the class "SMS_COMAPI.SMS" known: the gateway protocol's client (docs/gateway-protocol.md).
// Called once, at the composition root.
void RegisterComponent(platform::ClassRegistry& registry);

}  // namespace orvalo::component
