#pragma once
#include <cstdint>
#include <functional>
#include <vector>

#include "gateway/schedule_dialog.h"
#include "gateway/send_engine.h"

namespace orvalo {

class SmsDatabase;

// Stores a message once for every time of a schedule, as Delay Scheduled when it is to be handed to
// the gateway days before, else as Scheduled. `message` says what is sent to whom; all rows get the
// first one's id as their family. `queue` is the engine's QueueMessage. Returns the ids, earliest
// time first; when the disk refuses one (StoreError) none is stored. Main thread.
std::vector<std::int32_t> QueueOccurrences(
    SmsDatabase& database, const Schedule& schedule, QueuedMessage message,
    const std::function<std::int32_t(const QueuedMessage&)>& queue);

}  // namespace orvalo
