#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo {

class AppSettings;

// The recently used numbers, newest first, at most ten. They live in the settings as records of 108
// bytes, are saved with them, and are read and changed only through this class. Main thread.
//
// A slot is a position from 0 to size() - 1. A stored slot that is no entry (another kind, marked
// empty, or without a number) keeps its position but is not filled: it has no label, cannot be
// chosen and counts nowhere.
class RecentList {
 public:
  explicit RecentList(AppSettings& settings) : settings_(settings) {}

  // Puts a number in front; the oldest of ten goes. `name` and `surname` may be empty. Nothing
  // changes when the number (its first 16 bytes, which is what a record holds) is in the list
  // already, or is empty. The number of the entry that went when that was chosen as a recipient:
  // the choice must not be lost with it.
  std::optional<std::string> AddRecent(std::string_view name, std::string_view surname,
                                       std::string_view number);
  void ClearRecent();

  std::size_t size() const;
  bool IsFilled(std::size_t slot) const;
  std::string Label(std::size_t slot) const;  // "<name> <surname> (<number>)", at most 85 bytes
  std::string Number(std::size_t slot) const;

  // Whether the entry is chosen as a recipient; false for slots that are not filled. The mark moves
  // with its entry when a number is put in front.
  bool IsSelected(std::size_t slot) const;
  void Select(std::size_t slot, bool selected);
  void ClearSelections();
  std::size_t SelectedCount() const;

 private:
  AppSettings& settings_;
};

}  // namespace orvalo
