#pragma once
#include <span>
#include <string_view>

namespace orvalo::cli {

// How a run of orvaloctl ended: its exit status. Every command uses these and no other; scripts
// depend on the values. Where several of kRefused to kQueued are true, the lowest counts.
enum class ExitCode : int {
  kDone = 0,
  kFailed = 1,
  kUsage = 2,
  kInUse = 3,
  kUnreachable = 4,
  kRefused = 5,
  kSomeRefused = 6,
  kNotDelivered = 7,
  kNoFinalStatus = 8,
  kQueued = 9,
  kNothing = 10,
  kNotWritten = 11,
  kDiffers = 12,
};

struct ExitMeaning {
  ExitCode code;
  std::string_view name;     // the code of an error in JSON
  std::string_view meaning;  // a sentence; the help, the guide and the manual page have the same
};

// All of them, by their values, which count from 0.
std::span<const ExitMeaning> ExitMeanings();
const ExitMeaning& MeaningOf(ExitCode code);

}  // namespace orvalo::cli
