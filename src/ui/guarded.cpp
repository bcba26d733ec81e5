#include "ui/guarded.h"

#include "app/texts.h"
#include "platform/message_box.h"
#include "store/store_error.h"

namespace orvalo::ui {

bool Guarded(platform::MessageBoxes& boxes, const Texts& texts, const std::function<void()>& work) {
  constexpr int kProductName = 1024;
  try {
    work();
    return true;
  } catch (const StoreError& error) {
    boxes.Show(error.InWords(texts), texts.Load(kProductName), platform::BoxIcon::kStop);
    return false;
  }
}

}  // namespace orvalo::ui
