#pragma once
#include <string>

namespace orvalo::platform {

// The clipboard of the desktop. Main thread.
class Clipboard {
 public:
  virtual ~Clipboard() = default;
  // Replaces what the clipboard holds by a text in the system code page. False when the clipboard
  // cannot be had; it then keeps what it held.
  virtual bool SetText(const std::string& text) = 0;
};

}  // namespace orvalo::platform
