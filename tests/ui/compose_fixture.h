#pragma once
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <functional>
#include <string>

#include "app/startup/program.h"
#include "messages/outbox_caption.h"
#include "platform/resource_container.h"
#include "support/fake_clock.h"
#include "support/fake_component.h"
#include "support/recording_mailbox.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "ui/compose_area.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/scripted_file_dialogs.h"

namespace orvalo::test {

// The compose page in front of a whole program, whose gateway is scripted.
class ComposeWindowTest : public testing::Test {
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

  ComposeWindowTest() { fake_.Register(registry_); }

  // Runs `test` in a program with the page shown and active.
  void OnPage(const std::function<void()>& test) {
    Program::Options options;
    options.data_folder = folder_.path();
    options.enter_data_folder = false;
    const auto result = Program(boxes_, clock_, registry_).Run(options, [&](Program& program) {
      program_ = &program;
      program.GetNotices().SetMainWindow(&main_window_);
      program.GetSettings().SetFlag(FlagSetting::kWorkingOnLine, false);
      if (prepare_) prepare_();
      ui::ComposeArea area(program, kit_, caption_, &book_);
      area_ = &area;
      area.Window().resize(904, 510);
      area.Window().show();
      area.Window().activateWindow();
      EXPECT_TRUE(QTest::qWaitForWindowActive(&area.Window()));
      for (QAction* action : forms_.LoadAccelerators(128, area.Window())) {
        QObject::connect(action, &QAction::triggered, &area.Window(), [&area, action] {
          area.Window().Run(static_cast<ShellCommand>(action->data().toInt()));
        });
      }
      test();
      program.GetNotices().SetMainWindow(nullptr);
      return 0;
    });
    EXPECT_EQ(result.reason, "");
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

  TemporaryFolder folder_;
  FakeClock clock_;
  ScriptedMessageBoxes boxes_;
  FakeGateway fake_;
  platform::ClassRegistry registry_;
  RecordingMailbox main_window_;
  CountingCaption caption_;
  SampleBook book_;
  ScriptedFileDialogs files_;
  ui::FormLoader forms_{platform::ResourceContainer::BuiltIn()};
  ui::Images images_{platform::ResourceContainer::BuiltIn()};
  Texts texts_;
  ui::Kit kit_{forms_, images_, texts_, files_};
  std::function<void()> prepare_;  // with the program there, before the page is
  Program* program_ = nullptr;
  ui::ComposeArea* area_ = nullptr;
};

}  // namespace orvalo::test
