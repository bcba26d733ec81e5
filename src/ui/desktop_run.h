#pragma once
#include "app/startup/program.h"
#include "ui/surroundings.h"

namespace orvalo::ui {

// The whole run of the desktop program, from the lock on the data folder to its release; gives the
// exit code. Main thread, with a QApplication. When another program holds the data folder, nothing
// happens.
int RunDesktop(Program& program, Program::Options options, const Surroundings& around);

}  // namespace orvalo::ui
