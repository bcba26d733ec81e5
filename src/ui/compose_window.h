#pragma once
#include <QWidget>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "messages/compose_view.h"
#include "shell/main_shell.h"
#include "ui/kit.h"
#include "ui/message_field.h"
#include "ui/recipient_inputs.h"

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QToolButton;
QT_END_NAMESPACE

namespace orvalo {
class ComposePage;
}

namespace orvalo::ui {

// The compose page's window (dialog 131, the tab "SMS"). What it does stands in ComposePage and
// RecipientSelection. Made by ComposeArea; main thread.
class ComposeWindow : public QWidget, public ComposeView {
 public:
  // What the window asks of elsewhere.
  struct Seams {
    platform::MessageBoxes& boxes;
    platform::Clock& clock;
    std::function<std::optional<Schedule>(QWidget& owner)> ask_schedule;
    std::function<void()> request_balance;  // "Update Balance"
  };

  // Throws FormError.
  ComposeWindow(const Kit& kit, Seams seams);
  ~ComposeWindow() override;

  // The logic behind the window, once, before it is shown; the window goes before it.
  void Connect(ComposePage& page, RecipientSelection& selection);
  RecipientView& Recipients() { return recipients_; }

  // A keyboard command while the page is in front. Others than the page's do nothing.
  void Run(ShellCommand command);
  void LightBalance(bool lit);

  // --- ComposeView
  void SetTypes(const std::vector<std::string>& names) override;
  void ChooseType(std::optional<std::size_t> entry) override;
  void ShowInputs(std::uint32_t mask) override;
  void ShowText(const std::string& text) override { text_.Show(text); }
  void InsertText(std::size_t position, const std::string& text) override {
    text_.Insert(position, text);
  }
  void LimitTextTo(std::optional<std::size_t> characters) override { text_.LimitTo(characters); }
  void SetCaret(std::size_t position) override { text_.SetCaret(position); }
  void FocusText() override { text_.Focus(); }
  void ShowCounter(const std::string& counter) override;
  void LimitPathTo(std::size_t characters) override;
  void ShowPath(const std::string& path) override;
  void PreviewPicture(const std::string& path) override;
  void NameSendButton(const std::string& name) override;
  void EnableSend(bool enabled) override;
  void EnableSchedule(bool enabled) override;
  void ShowBalance(const std::string& line, const std::string& hint) override;
  std::optional<std::string> PickFile(const std::string& pattern,
                                      const std::string& filter) override;
  std::optional<Schedule> AskSchedule() override;
  UpdateTiming AskUpdateTiming(const std::string& time) override;
  Focus FocusedInput() const override;
  std::optional<std::size_t> SelectedNumber() const override;
  void RunEditCommand(Focus input, EditCommand command) override;
  std::string ClipboardText() const override;
  void SetClipboardText(const std::string& text) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  MessageField::Events TextEvents();
  bool Try(const std::function<void()>& work);
  void WireMessage();
  void WireCommands();
  // Runs a page command with what the operator has typed taken over. A message goes out only when
  // all of it could be.
  void Command(void (ComposePage::*command)());

  const Kit& kit_;
  const Seams seams_;
  ComposePage* page_ = nullptr;

  struct Form {  // its controls; made of the form's existence
    explicit Form(ComposeWindow& window, const Kit& kit);
    QComboBox& type;
    QLabel& counter;
    QLineEdit& path;
    QPushButton& browse;
    QLabel& preview;
    QLineEdit& search;
    QToolButton& balance;
    QPushButton& send;
    QPushButton& schedule;
    QPushButton& clear;
  };
  const Form form_;
  MessageField text_;
  RecipientInputs recipients_;
  std::unique_ptr<QMenu> balance_menu_;
};

}  // namespace orvalo::ui
