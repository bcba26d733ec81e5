#pragma once
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "app/startup/program.h"
#include "platform/resource_container.h"
#include "platform/shell.h"
#include "support/fake_clock.h"
#include "support/fake_component.h"
#include "support/recording_mailbox.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/kit.h"
#include "ui/scripted_file_dialogs.h"

namespace orvalo::test {

// Windows in front of a whole program, whose gateway is scripted.
class WindowTest : public testing::Test {
 protected:
  struct Browser : platform::Shell {
    void OpenAddress(const std::string& address) override { opened.push_back(address); }
    std::vector<std::string> opened;
  };

  WindowTest() { fake_.Register(registry_); }

  // Runs `test` in a program.
  void RunProgram(const std::function<void(Program&)>& test) {
    Program::Options options;
    options.data_folder = folder_.path();
    options.enter_data_folder = false;
    const auto result = Program(boxes_, clock_, registry_).Run(options, [&](Program& program) {
      program_ = &program;
      program.GetNotices().SetMainWindow(&main_window_);
      test(program);
      program.GetNotices().SetMainWindow(nullptr);
      return 0;
    });
    EXPECT_EQ(result.reason, "");
  }
  // Shows a page as large as it is in the main window, ready for keys.
  static void ShowActive(QWidget& window) {
    window.resize(904, 510);
    window.show();
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
  }
  // Runs `test` in the dialog that is opened next, and closes that in any case.
  static void InNextDialog(const std::function<void(QDialog&)>& test) {
    QTimer::singleShot(0, qApp, [test] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      dialog->activateWindow();
      EXPECT_TRUE(QTest::qWaitFor([dialog] { return QApplication::activeWindow() == dialog; }));
      test(*dialog);
      dialog->reject();
    });
  }

  TemporaryFolder folder_;
  FakeClock clock_;
  ScriptedMessageBoxes boxes_;
  FakeGateway fake_;
  platform::ClassRegistry registry_;
  RecordingMailbox main_window_;
  Browser browser_;
  ScriptedFileDialogs files_;
  ui::FormLoader forms_{platform::ResourceContainer::BuiltIn()};
  ui::Images images_{platform::ResourceContainer::BuiltIn()};
  Texts texts_;
  ui::Kit kit_{forms_, images_, texts_, files_};
  Program* program_ = nullptr;
};

}  // namespace orvalo::test
