#pragma once
#include <cstddef>
#include <optional>
#include <string>

namespace orvalo {

struct RecipientNode;

// What the recipient tree asks of the window that draws it. Main thread.
class RecipientTreeView {
 public:
  virtual ~RecipientTreeView() = default;

  // Around every change of a node's children: they are all about to go (`count` 0), or `count` are
  // about to come where there were none. References to nodes that go are void after
  // ChildrenChanged.
  virtual void ChildrenChanging(const RecipientNode& node, std::size_t count) = 0;
  virtual void ChildrenChanged(const RecipientNode& node) = 0;
  virtual void Collapse(const RecipientNode& node) = 0;  // with all below it
  // Expands what is above the node, scrolls to it and makes it the current one.
  virtual void Reveal(const RecipientNode& node) = 0;
  virtual void TicksChanged() = 0;  // the check boxes are to be drawn anew
  // The "Processing, please wait ..." window, while the external address book is read.
  virtual void ShowWait(bool shown) = 0;
};

// The window of the recipient inputs of the compose page.
class RecipientView : public RecipientTreeView {
 public:
  virtual void NumbersChanged() = 0;  // the rows of the number list are to be drawn anew
  virtual void BringNumberIntoView(std::size_t row) = 0;
  // Opens the editing field of a row; `text` stands in it instead of the row's own, the caret
  // behind it. The field takes at most NumberList::kNumberLength characters.
  virtual void EditNumber(std::size_t row, const std::optional<std::string>& text) = 0;
  virtual void Beep() = 0;
  virtual void EnableSearch(bool enabled) = 0;
  virtual void ShowRecipientCount(std::size_t count) = 0;  // "Recipients Selected:"
};

}  // namespace orvalo
