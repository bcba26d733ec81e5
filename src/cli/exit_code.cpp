#include "cli/exit_code.h"

#include <array>

namespace orvalo::cli {

namespace {

constexpr std::array kMeanings{
    ExitMeaning{ExitCode::kDone, "done", "Done. Every recipient that was waited for has it."},
    ExitMeaning{ExitCode::kFailed, "failed",
                "It could not be done, or not wholly; no message was queued."},
    ExitMeaning{ExitCode::kUsage, "usage", "Wrong use of the command line; nothing was done."},
    ExitMeaning{ExitCode::kInUse, "in-use",
                "Another program is using the data folder; nothing was done."},
    ExitMeaning{ExitCode::kUnreachable, "unreachable",
                "The gateway cannot be reached, or is out of order; no message was queued."},
    ExitMeaning{
        ExitCode::kRefused, "refused",
        "The gateway refused what was asked, or every recipient; nothing waits to be sent."},
    ExitMeaning{ExitCode::kSomeRefused, "some-refused",
                "The gateway refused some recipients and took others."},
    ExitMeaning{ExitCode::kNotDelivered, "not-delivered",
                "The gateway took the message, but it did not reach everybody."},
    ExitMeaning{ExitCode::kNoFinalStatus, "no-final-status",
                "Time was up, or the wait broken off, before every recipient had a final status."},
    ExitMeaning{ExitCode::kQueued, "queued", "Queued, but not sent: the next run sends it."},
    ExitMeaning{ExitCode::kNothing, "nothing",
                "There was nobody to send to or nothing to do; nothing was queued."},
    ExitMeaning{ExitCode::kNotWritten, "not-written",
                "It was done, but not all results could be written out."},
    ExitMeaning{ExitCode::kDiffers, "differs", "The outbox and the gateway differ."},
};

}  // namespace

std::span<const ExitMeaning> ExitMeanings() { return kMeanings; }

const ExitMeaning& MeaningOf(ExitCode code) { return kMeanings.at(static_cast<std::size_t>(code)); }

}  // namespace orvalo::cli
