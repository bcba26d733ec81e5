#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gateway/schedule_dialog.h"

namespace orvalo {

// When a changed message goes out.
enum class UpdateTiming { kAtItsTime, kNow, kGoBack };

enum class EditCommand { kCut, kCopy, kPaste, kSelectAll };

// What the compose logic asks of its window, apart from the recipient inputs. Positions and limits
// count characters. Main thread.
class ComposeView {
 public:
  // Where the keyboard focus is. kNumberEditor is the editing field of a row of the number list.
  enum class Focus { kElsewhere, kText, kSearch, kNumbers, kNumberEditor };

  virtual ~ComposeView() = default;

  // --- Type, text, path ---
  virtual void SetTypes(const std::vector<std::string>& names) = 0;  // the type list's entries
  virtual void ChooseType(std::optional<std::size_t> entry) = 0;     // nothing: no entry
  virtual void ShowInputs(std::uint32_t mask) = 0;                   // bits of ComposeInput
  virtual void ShowText(const std::string& text) = 0;                // replaces the text
  virtual void InsertText(std::size_t position, const std::string& text) = 0;
  virtual void LimitTextTo(std::optional<std::size_t> characters) = 0;  // of what is typed
  virtual void SetCaret(std::size_t position) = 0;
  virtual void FocusText() = 0;
  virtual void ShowCounter(const std::string& counter) = 0;
  virtual void LimitPathTo(std::size_t characters) = 0;
  virtual void ShowPath(const std::string& path) = 0;
  // Shows a file's picture; nothing when it is no picture, or the path is empty.
  virtual void PreviewPicture(const std::string& path) = 0;

  // --- Buttons and the balance line ---
  virtual void NameSendButton(const std::string& name) = 0;
  virtual void EnableSend(bool enabled) = 0;
  virtual void EnableSchedule(bool enabled) = 0;
  virtual void ShowBalance(const std::string& line, const std::string& hint) = 0;

  // --- Questions; nothing when the operator cancels ---
  // `filter` is a list of "name\npattern\n" pairs that ends in an empty line.
  virtual std::optional<std::string> PickFile(const std::string& pattern,
                                              const std::string& filter) = 0;
  virtual std::optional<Schedule> AskSchedule() = 0;
  // About a message that is scheduled for `time` and about to be changed.
  virtual UpdateTiming AskUpdateTiming(const std::string& time) = 0;

  // --- Edit commands ---
  virtual Focus FocusedInput() const = 0;
  virtual std::optional<std::size_t> SelectedNumber() const = 0;      // row of the number list
  virtual void RunEditCommand(Focus input, EditCommand command) = 0;  // a field's own command
  virtual std::string ClipboardText() const = 0;
  virtual void SetClipboardText(const std::string& text) = 0;
};

}  // namespace orvalo
