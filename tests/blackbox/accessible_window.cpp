#include "blackbox/accessible_window.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>
#include <utility>

namespace orvalo::test {

namespace {

constexpr int kMostChildren = 200;  // the cells of a long table are never walked
constexpr auto kPatience = std::chrono::seconds(30);

Accessible Own(AtspiAccessible* object) {
  if (object == nullptr) return nullptr;
  return {object, [](AtspiAccessible* held) { g_object_unref(held); }};
}

std::string Take(gchar* text) {
  if (text == nullptr) return {};
  std::string taken(text);
  g_free(text);
  return taken;
}

int Children(const Accessible& object) {
  return atspi_accessible_get_child_count(object.get(), nullptr);
}

Accessible ChildAt(const Accessible& object, int place) {
  return Own(atspi_accessible_get_child_at_index(object.get(), place, nullptr));
}

std::string NameOf(const Accessible& object) {
  return Take(atspi_accessible_get_name(object.get(), nullptr));
}

bool Has(const Accessible& object, AtspiStateType state) {
  if (object == nullptr) return false;
  AtspiStateSet* states = atspi_accessible_get_state_set(object.get());
  const bool has = states != nullptr && atspi_state_set_contains(states, state) != FALSE;
  if (states != nullptr) g_object_unref(states);
  return has;
}

// Depth first; the last match that is on show counts, since dialogs come after the window.
Accessible Walk(const Accessible& object, const std::function<bool(const Accessible&)>& wanted) {
  if (object == nullptr) return nullptr;
  if (wanted(object)) return object;
  const int children = Children(object);
  if (children > kMostChildren) return nullptr;
  for (int i = children - 1; i >= 0; --i) {
    if (auto found = Walk(ChildAt(object, i), wanted)) return found;
  }
  return nullptr;
}

bool Within(std::chrono::seconds patience, const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}

Accessible Application(const std::string& name) {
  const auto desktop = Own(atspi_get_desktop(0));
  for (int i = Children(desktop) - 1; i >= 0; --i) {
    auto application = ChildAt(desktop, i);
    if (application != nullptr && NameOf(application) == name && Children(application) > 0) {
      return application;
    }
  }
  return nullptr;
}

}  // namespace

bool AccessibleWindow::Until(const std::function<bool()>& condition) {
  return Within(kPatience, condition);
}

AccessibleWindow::AccessibleWindow(std::string application) : application_(std::move(application)) {
  EXPECT_TRUE(Until([this] { return Application(application_) != nullptr; }));
}

Accessible AccessibleWindow::Find(const std::string& object_name) const {
  return Walk(Application(application_), [&](const Accessible& object) {
    return Take(atspi_accessible_get_description(object.get(), nullptr)) == object_name;
  });
}

Accessible AccessibleWindow::Control(const std::string& object_name) const {
  Accessible found;
  EXPECT_TRUE(Until([&] { return (found = Find(object_name)) != nullptr; })) << object_name;
  return found;
}

bool AccessibleWindow::IsShowing(const std::string& object_name) const {
  const auto control = Find(object_name);
  return control != nullptr && Has(control, ATSPI_STATE_SHOWING);
}

void AccessibleWindow::Press(const std::string& button) const {
  const auto control = Control(button);
  if (control == nullptr) return;
  AtspiAction* action = atspi_accessible_get_action_iface(control.get());
  ASSERT_NE(action, nullptr) << button;
  const int count = atspi_action_get_n_actions(action, nullptr);
  bool pressed = false;
  for (int i = 0; i < count && !pressed; ++i) {
    const std::string name = Take(atspi_action_get_action_name(action, i, nullptr));
    if (name == "Press" || name == "Toggle") pressed = atspi_action_do_action(action, i, nullptr);
  }
  g_object_unref(action);
  EXPECT_TRUE(pressed) << button;
}

void AccessibleWindow::Type(const std::string& field, const std::string& text) const {
  const auto control = Control(field);
  if (control == nullptr) return;
  AtspiEditableText* editable = atspi_accessible_get_editable_text_iface(control.get());
  ASSERT_NE(editable, nullptr) << field;
  EXPECT_TRUE(atspi_editable_text_set_text_contents(editable, text.c_str(), nullptr)) << field;
  g_object_unref(editable);
}

std::string AccessibleWindow::TextOf(const std::string& control) const {
  const auto found = Control(control);
  if (found == nullptr) return {};
  AtspiText* text = atspi_accessible_get_text_iface(found.get());
  if (text == nullptr) return NameOf(found);
  std::string content = Take(atspi_text_get_text(text, 0, -1, nullptr));
  g_object_unref(text);
  return content;
}

std::string AccessibleWindow::Cell(const std::string& table, int row, int column) const {
  const auto control = Control(table);
  if (control == nullptr) return {};
  AtspiTable* cells = atspi_accessible_get_table_iface(control.get());
  if (cells == nullptr) return {};
  const auto cell = Own(atspi_table_get_accessible_at(cells, row, column, nullptr));
  g_object_unref(cells);
  return cell == nullptr ? std::string() : NameOf(cell);
}

int AccessibleWindow::RowsOf(const std::string& table) const {
  const auto control = Control(table);
  AtspiTable* cells =
      control == nullptr ? nullptr : atspi_accessible_get_table_iface(control.get());
  if (cells == nullptr) return -1;
  const int rows = atspi_table_get_n_rows(cells, nullptr);
  g_object_unref(cells);
  return rows;
}

Accessible AccessibleWindow::Row(const std::string& tree, const std::string& text) const {
  Accessible row;
  EXPECT_TRUE(Until([&] {
    row = Walk(Control(tree), [&](const Accessible& object) { return NameOf(object) == text; });
    return row != nullptr;
  })) << text;
  return row;
}

bool AccessibleWindow::IsTicked(const Accessible& row) { return Has(row, ATSPI_STATE_CHECKED); }

void AccessibleWindow::ClickRow(const std::string& tree, const std::string& text) const {
  // A window that is still being placed is clicked beside the row: then once more, too late for a
  // double click.
  constexpr auto kBetweenClicks = std::chrono::seconds(1);
  const auto is_selected = [&] { return Has(Row(tree, text), ATSPI_STATE_SELECTED); };
  EXPECT_TRUE(Until([&] {
    const auto row = Row(tree, text);
    if (row == nullptr) return false;
    AtspiComponent* component = atspi_accessible_get_component_iface(row.get());
    if (component == nullptr) return false;
    AtspiRect* place = atspi_component_get_extents(component, ATSPI_COORD_TYPE_SCREEN, nullptr);
    atspi_generate_mouse_event(place->x + place->width / 2, place->y + place->height / 2, "b1c",
                               nullptr);
    g_free(place);
    g_object_unref(component);
    return Within(kBetweenClicks, is_selected);
  })) << text;
}

void AccessibleWindow::Open(const std::string& tree, const std::string& text) const {
  constexpr int kRightKey = 0xff53;
  ClickRow(tree, text);
  atspi_generate_keyboard_event(kRightKey, nullptr, ATSPI_KEY_SYM, nullptr);
  EXPECT_TRUE(Until([&] { return Has(Row(tree, text), ATSPI_STATE_EXPANDED); })) << text;
}

void AccessibleWindow::Tick(const std::string& tree, const std::string& text) const {
  ClickRow(tree, text);
  atspi_generate_keyboard_event(0, " ", ATSPI_KEY_STRING, nullptr);
  EXPECT_TRUE(Until([&] { return IsTicked(Row(tree, text)); })) << text;
}

}  // namespace orvalo::test
