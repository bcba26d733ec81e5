#include "component/register_component.h"

#include <memory>

#include "component/component.h"

namespace orvalo::component {

void RegisterComponent(platform::ClassRegistry& registry) {
  registry.Register("SMS_COMAPI.SMS",
                    [] { return std::make_unique<Component>(platform::SystemClock()); });
}

}  // namespace orvalo::component
