#pragma once
#include <QTest>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/startup/program.h"
#include "platform/clipboard.h"
#include "platform/shell.h"
#include "support/gateway_program.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "ui/desktop.h"
#include "ui/scripted_file_dialogs.h"

namespace orvalo::test {

class RecordingShell : public platform::Shell {
 public:
  void OpenAddress(const std::string& address) override { opened.push_back(address); }
  std::vector<std::string> opened;
};

class RecordingClipboard : public platform::Clipboard {
 public:
  bool SetText(const std::string& value) override {
    text = value;
    return true;
  }
  std::string text;
};

// The whole desktop program on a temporary data folder, with the real gateway service on loopback
// and its demo account (demo, password demo). Its phone network is simulated, unless UseGateway
// brings one that has another.
class DesktopStage {
 public:
  using Body = std::function<void(ui::Desktop&, Program&)>;

  // One run of the program, from its lock to its end; within `body` the window is open and nobody
  // is logged in. May be called again: the data folder stays.
  Program::Result Run(const Body& body);

  // Before the first run: the program is to speak the language of that container file.
  void Speak(const std::string& container);

  // In the window: types the demo login and presses OK.
  static void LogIn(ui::Desktop& desktop, bool offline = false);
  static void Click(ui::Desktop& desktop, const char* button);
  // The control of that name, anywhere in the main window.
  template <typename Control>
  static Control& Find(ui::Desktop& desktop, const char* name) {
    return ui::Child<Control>(desktop.Window(), name);
  }
  // Lets events happen until `condition` holds; false when it does not in 15 seconds.
  static bool Until(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, 15'000);
  }

  void UseGateway(std::unique_ptr<GatewayProgram> gateway) { gateway_ = std::move(gateway); }
  GatewayProgram& Gateway() { return *gateway_; }
  TemporaryFolder& Folder() { return folder_; }

  ScriptedMessageBoxes boxes;
  ScriptedFileDialogs files;
  RecordingShell shell;
  RecordingClipboard clipboard;

 private:
  TemporaryFolder folder_;
  std::unique_ptr<GatewayProgram> gateway_;
};

}  // namespace orvalo::test
