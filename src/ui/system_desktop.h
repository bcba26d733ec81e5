#pragma once
#include <string>

#include "platform/clipboard.h"
#include "platform/shell.h"

namespace orvalo::ui {

// The desktop's clipboard.
class SystemClipboard : public platform::Clipboard {
 public:
  bool SetText(const std::string& text) override;
};

// Opens addresses through the desktop.
class SystemShell : public platform::Shell {
 public:
  void OpenAddress(const std::string& address) override;
};

}  // namespace orvalo::ui
