#pragma once
#include <atspi/atspi.h>

#include <functional>
#include <memory>
#include <string>

namespace orvalo::test {

// An object of the program under test, seen through the desktop's accessibility interface.
using Accessible = std::shared_ptr<AtspiAccessible>;

// The program under test from outside: what assistive tools see and can do. Controls are found by
// the object names that stand in their descriptions. Everything waits, at most half a minute, for
// what it is after and fails the test when that does not come.
class AccessibleWindow {
 public:
  // Waits for the first window of the application.
  explicit AccessibleWindow(std::string application);

  // The control with that object name. Null, the test having failed, when there is none.
  Accessible Control(const std::string& object_name) const;
  bool IsShowing(const std::string& object_name) const;

  void Press(const std::string& button) const;
  void Type(const std::string& field, const std::string& text) const;  // replaces what stands there
  std::string TextOf(const std::string& control) const;                // its text, or else its name
  // The text of a table's cell.
  std::string Cell(const std::string& table, int row, int column) const;
  int RowsOf(const std::string& table) const;
  // A row of a tree by its text: clicked with the pointer, then opened or ticked by the keyboard.
  void Open(const std::string& tree, const std::string& row) const;
  void Tick(const std::string& tree, const std::string& row) const;
  static bool IsTicked(const Accessible& row);
  Accessible Row(const std::string& tree, const std::string& text) const;

  static bool Until(const std::function<bool()>& condition);

 private:
  Accessible Find(const std::string& object_name) const;
  void ClickRow(const std::string& tree, const std::string& text) const;

  std::string application_;
};

}  // namespace orvalo::test
