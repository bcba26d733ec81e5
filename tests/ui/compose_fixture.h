#pragma once
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "messages/outbox_caption.h"
#include "ui/compose_area.h"
#include "ui/window_fixture.h"

namespace orvalo::test {

// The compose page in front of a whole program, whose gateway is scripted.
class ComposeWindowTest : public WindowTest {
 protected:
  struct SampleBook : AddressBookSource {
    bool Walk(AddressBookKind, AddressTree& tree) override {
      if (empty) return true;
      const auto staff = tree.AddFolder(AddressTree::kRoot, "Staff");
      tree.AddEntry(staff, "Ines", "35191");
      return true;
    }
    bool empty = false;
  };
  struct CountingCaption : OutboxCaption {
    void UpdateCaption() override { ++updates; }
    int updates = 0;
  };

  // Runs `test` in a program with the page shown and active.
  void OnPage(const std::function<void()>& test) {
    RunProgram([&](Program& program) {
      program.GetSettings().SetFlag(FlagSetting::kWorkingOnLine, false);
      if (prepare_) prepare_();
      ExternalAddressBook external(program.GetSettings(), &book_);
      ui::ComposeArea area(program, kit_, caption_, external);
      area_ = &area;
      ShowActive(area.Window());
      for (QAction* action : forms_.LoadAccelerators(128, area.Window())) {
        QObject::connect(action, &QAction::triggered, &area.Window(), [&area, action] {
          area.Window().Run(static_cast<ShellCommand>(action->data().toInt()));
        });
      }
      test();
    });
  }
  template <typename Control>
  Control& Get(const char* name) {
    return ui::Child<Control>(area_->Window(), name);
  }
  SmsDatabase& Store() { return program_->GetDatabase(); }
  std::int32_t AddPerson(std::string name, std::string mobile, std::vector<std::int32_t> groups) {
    ContactRecord contact;
    contact.name = std::move(name);
    contact.surname = "Doe";
    contact.mobile = std::move(mobile);
    contact.group_ids = std::move(groups);
    return Store().AddContact(contact);
  }
  // "<status> <type> <recipients> <text>" of every stored message.
  std::string Rows() {
    std::string rows;
    for (const MessageRow& row : Store().AllSms()) {
      rows += std::to_string(row.stat) + " " + std::to_string(row.type) + " " + row.to + " " +
              row.msg + "\n";
    }
    return rows;
  }

  CountingCaption caption_;
  SampleBook book_;
  std::function<void()> prepare_;  // with the program there, before the page is
  ui::ComposeArea* area_ = nullptr;
};

}  // namespace orvalo::test
