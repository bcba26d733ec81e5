#pragma once
#include <string>

namespace orvalo::platform {

enum class BoxIcon { kNone, kStop, kQuestion, kWarning, kInformation };
enum class BoxButtons { kOkOnly, kOkCancel, kYesNo, kYesNoCancel };
enum class BoxAnswer { kAccepted, kCancel, kYes, kNo };

// Messages to the operator. The desktop shows windows, the terminal prints lines, a test answers
// from a script. May be called from any thread; returns when the operator has answered.
class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  virtual BoxAnswer Show(const std::string& text, const std::string& caption, BoxIcon icon,
                         BoxButtons buttons = BoxButtons::kOkOnly) = 0;

  // A message whose last line is an address that opens with a click, with OK and Cancel. `url` is
  // final: already completed with any help number, never empty.
  virtual BoxAnswer ShowLink(const std::string& text, const std::string& caption,
                             const std::string& url) = 0;
};

}  // namespace orvalo::platform
