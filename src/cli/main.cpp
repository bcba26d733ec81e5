#include <iostream>

#include "cli/orvaloctl.h"
#include "component/register_component.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/terminal.h"

int main(int count, char** values) {
  orvalo::platform::ClassRegistry registry;
  orvalo::component::RegisterComponent(registry);
  const orvalo::cli::Console console{std::cin, std::cout, std::cerr,
                                     orvalo::platform::InputIsTerminal(),
                                     orvalo::platform::ErrorOutputIsTerminal()};
  return orvalo::cli::RunOrvaloctl({values + 1, values + count}, console, registry,
                                   orvalo::platform::SystemClock());
}
