#pragma once

namespace orvalo::platform {

// Processor faults (access violations, illegal instructions, arithmetic faults) and calls of abort
// (an exception that nobody catches): nothing of the
// process can be trusted any more, so the program's own file is started afresh in its place, told
// by FaultIsToBeShown, to tell the operator and to end. Locks of the process are released with it,
// and what it had committed stays. Called once, in main, as soon as a
// window can be shown.
//
// `program` is main's first argument. Where the signals cannot be handled the process ends as it
// would have.
void ShowFaultsAfresh(const char* program);

// Whether this process stands in the place of one that has met such a fault.
bool FaultIsToBeShown();

}  // namespace orvalo::platform
