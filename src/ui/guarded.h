#pragma once
#include <functional>

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {
class Texts;
}

namespace orvalo::ui {

// Runs what may meet a store that refuses (StoreError) and then tells the operator; false when it
// had to. For the handlers of events, main thread. Any other exception goes on and ends the run.
bool Guarded(platform::MessageBoxes& boxes, const Texts& texts, const std::function<void()>& work);

}  // namespace orvalo::ui
