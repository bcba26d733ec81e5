#pragma once
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "app/settings.h"
#include "app/texts.h"
#include "contacts/external_address_book.h"
#include "contacts/recent_list.h"
#include "messages/recipient_selection.h"
#include "messages/recipient_view.h"
#include "store/sms_database.h"
#include "support/fake_clock.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// Records what the recipient inputs ask of their window, and holds them to the rules of
// ChildrenChanging.
class RecordingRecipientView : public RecipientView {
 public:
  void ChildrenChanging(const RecipientNode& node, std::size_t expected) override {
    EXPECT_EQ(node.children.empty(), expected != 0);
    coming = expected;
  }
  void ChildrenChanged(const RecipientNode& node) override {
    EXPECT_EQ(node.children.size(), coming);
  }
  void Collapse(const RecipientNode& node) override { collapsed += node.label + ";"; }
  void Reveal(const RecipientNode& node) override {
    revealed = node.label;
    for (const auto* above = node.parent; above->parent != nullptr; above = above->parent) {
      revealed = above->label + "/" + revealed;
    }
    EXPECT_EQ(node.parent->children[node.row].get(), &node);
  }
  void TicksChanged() override {}
  void ShowWait(bool shown) override { waits += shown ? "(" : ")"; }
  void NumbersChanged() override {}
  void BringNumberIntoView(std::size_t row) override { brought = row; }
  void EditNumber(std::size_t row, const std::optional<std::string>& text) override {
    edit = std::to_string(row) + ":" + text.value_or("-");
  }
  void Beep() override { ++beeps; }
  void EnableSearch(bool enabled) override { search_enabled = enabled; }
  void ShowRecipientCount(std::size_t shown) override { count = shown; }

  std::size_t coming = 0, count = 99;
  std::string collapsed, revealed, waits, edit;
  std::optional<std::size_t> brought;
  int beeps = 0;
  bool search_enabled = true;
};

// An address book with a few entries, one of them in a folder.
struct SampleSource : AddressBookSource {
  bool Walk(AddressBookKind, AddressTree& tree) override {
    if (broken) throw 1;
    const auto staff = tree.AddFolder(AddressTree::kRoot, "Staff");
    tree.AddEntry(staff, "Ines", "+351 91");
    tree.AddEntry(AddressTree::kRoot, "Olga", "55");
    ++walks;
    return true;
  }
  bool broken = false;
  int walks = 0;
};

// The recipient inputs on a database of their own.
class RecipientTest : public testing::Test {
 protected:
  RecipientTest() { selection_.ClearRecipients(); }

  std::int32_t AddPerson(std::string name, std::string mobile, std::vector<std::int32_t> groups) {
    ContactRecord contact;
    contact.name = std::move(name);
    contact.surname = "Doe";
    contact.mobile = std::move(mobile);
    contact.group_ids = std::move(groups);
    return db_.AddContact(contact);
  }
  void Type(std::string number) {
    selection_.EndNumberEdit(selection_.Numbers().Last(), std::move(number));
  }
  RecipientTree& tree() { return selection_.Tree(); }
  const RecipientNode& Child(const RecipientNode& node, std::size_t row) {
    selection_.Expand(node);
    return *node.children.at(row);
  }
  // The labels of a node's children, a star behind ticked ones, a tilde behind partly ticked ones.
  std::string Labels(const RecipientNode& node) {
    selection_.Expand(node);
    std::string labels;
    for (const auto& child : node.children) {
      const TickState state = tree().StateOf(*child);
      labels += child->label;
      labels += state == TickState::kTicked ? "*;" : state == TickState::kPartly ? "~;" : ";";
    }
    return labels;
  }
  std::string Numbers() {
    std::string rows;
    for (const auto& row : selection_.Numbers().rows()) rows += row + ";";
    return rows;
  }
  std::string RecentNumbers() {
    std::string numbers;
    for (std::size_t i = 0; i < recent_.size(); ++i) numbers += recent_.Label(i) + ";";
    return numbers;
  }

  TemporaryFolder folder_;
  FakeClock clock_;
  Texts texts_;
  AppSettings settings_;
  ScriptedMessageBoxes boxes_;
  SmsDatabase db_{folder_.path(), texts_, clock_};
  RecentList recent_{settings_};
  SampleSource source_;
  ExternalAddressBook external_{settings_, &source_};
  RecordingRecipientView view_;
  RecipientSelection selection_{{db_, settings_, recent_, external_, texts_, boxes_, view_}};
};

}  // namespace orvalo::test
