#include "ui/compose_window.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QToolButton>
#include <array>
#include <functional>
#include <utility>

#include "messages/compose_page.h"
#include "messages/message_types.h"
#include "messages/picture_preview.h"
#include "ui/character_limit.h"
#include "ui/file_dialogs.h"
#include "ui/form_loader.h"
#include "ui/guarded.h"
#include "ui/images.h"

namespace orvalo::ui {

namespace {

constexpr int kUpdateTimingCaptionId = 2205;
constexpr int kUpdateTimingTextId = 2206;
constexpr int kAtItsTimeId = 2207;
constexpr int kSendNowId = 2208;
constexpr int kGoBackId = 2209;
constexpr int kComposeDialog = 131;
constexpr int kBalanceMenu = 251;

struct InsertButton {
  ComposeInput input;
  const char* name;
};
constexpr std::array<InsertButton, 5> kInsertButtons{{{kNameButton, "insertName"},
                                                      {kTitleButton, "insertTitle"},
                                                      {kSurnameButton, "insertSurname"},
                                                      {kCustomButton, "insertCustom"},
                                                      {kSignatureButton, "insertSignature"}}};

QWidget& Loaded(QWidget& window, const Kit& kit) {
  kit.forms.LoadInto(window, kComposeDialog);
  return window;
}

std::optional<EditCommand> EditCommandOf(ShellCommand command) {
  switch (command) {
    case ShellCommand::kCut:
      return EditCommand::kCut;
    case ShellCommand::kCopy:
      return EditCommand::kCopy;
    case ShellCommand::kPaste:
      return EditCommand::kPaste;
    case ShellCommand::kSelectAll:
      return EditCommand::kSelectAll;
    default:
      return std::nullopt;
  }
}

QPixmap Draw(const PicturePreview& preview) {
  constexpr int kSide = PicturePreview::kSide;
  QImage picture(kSide, kSide, QImage::Format_RGB32);
  auto pixel = preview.pixels.begin();
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      const auto& [red, green, blue] = preview.colours[*pixel++];
      picture.setPixel(x, y, qRgb(red, green, blue));
    }
  }
  return QPixmap::fromImage(picture);
}

// What is hidden takes no keys: neither now nor when the page, as it comes to the front, gives the
// focus back to where it was.
void Offer(QWidget& inputs, bool offered) {
  inputs.setVisible(offered);
  inputs.setEnabled(offered);
  QWidget* remembered = offered ? nullptr : inputs.focusWidget();
  if (remembered != nullptr) remembered->clearFocus();
}

void RunIn(QLineEdit& field, EditCommand command) {
  switch (command) {
    case EditCommand::kCut:
      return field.cut();
    case EditCommand::kCopy:
      return field.copy();
    case EditCommand::kPaste:
      return field.paste();
    case EditCommand::kSelectAll:
      return field.selectAll();
  }
}

}  // namespace

ComposeWindow::Form::Form(ComposeWindow& window, const Kit& kit)
    : type(Child<QComboBox>(Loaded(window, kit), "messageType")),
      counter(Child<QLabel>(window, "characterCount")),
      path(Child<QLineEdit>(window, "filePath")),
      browse(Child<QPushButton>(window, "browseFile")),
      preview(Child<QLabel>(window, "picturePreview")),
      search(Child<QLineEdit>(window, "quickSearch")),
      balance(Child<QToolButton>(window, "balanceLine")),
      send(Child<QPushButton>(window, "sendButton")),
      schedule(Child<QPushButton>(window, "scheduleButton")),
      clear(Child<QPushButton>(window, "clearButton")) {}

ComposeWindow::ComposeWindow(const Kit& kit, Seams seams)
    : kit_(kit),
      seams_(std::move(seams)),
      form_(*this, kit),
      text_(Child<QPlainTextEdit>(*this, "messageText"), TextEvents()),
      recipients_(kit, *this, seams_.clock,
                  [this](const std::function<void()>& work) { return Try(work); }),
      balance_menu_(kit.forms.LoadMenu(kBalanceMenu, this)) {
  form_.balance.setIcon(kit.images.Icon("balance", IconTint::kMuted));
  form_.clear.setIcon(kit.images.Icon("clear"));
  form_.schedule.setIcon(kit.images.Icon("recent"));
}

ComposeWindow::~ComposeWindow() = default;

bool ComposeWindow::Try(const std::function<void()>& work) {
  return Guarded(seams_.boxes, kit_.texts, work);
}

MessageField::Events ComposeWindow::TextEvents() {
  return {.changed = [this](const std::string& text) { page_->TextChanged(text); },
          .focus_lost = [this](std::size_t start) { page_->TextFocusLost(start); },
          .focus_gained = [this] { page_->TextFocusGained(); }};
}

void ComposeWindow::Connect(ComposePage& page, RecipientSelection& selection) {
  page_ = &page;
  recipients_.Connect(selection);
  WireMessage();
  WireCommands();
}

void ComposeWindow::WireMessage() {
  connect(&form_.type, &QComboBox::activated, this, [this](int entry) {
    if (entry >= 0) page_->TypeChosen(static_cast<std::size_t>(entry));
  });
  for (const InsertButton& insert : kInsertButtons) {
    connect(&Child<QPushButton>(*this, insert.name), &QPushButton::clicked, this,
            [this, input = insert.input] {
              if (text_.HasFocus()) page_->TextFocusLost(text_.SelectionStart());
              page_->InsertField(input);
            });
  }
  form_.path.installEventFilter(this);
  connect(&form_.browse, &QPushButton::clicked, this, [this] { page_->Browse(); });
}

void ComposeWindow::WireCommands() {
  connect(&form_.send, &QPushButton::clicked, this, [this] { Command(&ComposePage::Send); });
  connect(&form_.schedule, &QPushButton::clicked, this,
          [this] { Command(&ComposePage::ScheduleMessage); });
  connect(&form_.clear, &QPushButton::clicked, this, [this] { Command(&ComposePage::ClearForm); });
  form_.balance.setMenu(balance_menu_.get());
  form_.balance.installEventFilter(this);
  connect(balance_menu_.get(), &QMenu::triggered, this, [this] { seams_.request_balance(); });
}

void ComposeWindow::Command(void (ComposePage::*command)()) {
  Try([this, command] {
    const bool taken = recipients_.Numbers().FinishEditing();
    if (taken || command == &ComposePage::ClearForm) std::invoke(command, *page_);
  });
}

void ComposeWindow::Run(ShellCommand command) {
  if (command == ShellCommand::kComposeKey) return Command(&ComposePage::Send);
  const auto edit = EditCommandOf(command);
  if (edit) Try([&] { page_->Edit(*edit); });
}

void ComposeWindow::LightBalance(bool lit) {
  form_.balance.setProperty("lit", lit);
  form_.balance.style()->unpolish(&form_.balance);
  form_.balance.style()->polish(&form_.balance);
}

// Enter in the path field is the field's own, not the window's.
bool ComposeWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &form_.path && event->type() == QEvent::KeyPress) {
    const int key = static_cast<const QKeyEvent*>(event)->key();
    if (key != Qt::Key_Return && key != Qt::Key_Enter) return false;
    page_->PathEntered(form_.path.text().toStdString());
    return true;
  }
  if (watched == &form_.balance && event->type() == QEvent::ContextMenu) {
    balance_menu_->popup(static_cast<const QContextMenuEvent*>(event)->globalPos());
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

// --- ComposeView

void ComposeWindow::SetTypes(const std::vector<std::string>& names) {
  const QSignalBlocker quiet(form_.type);
  form_.type.clear();
  for (const std::string& name : names) form_.type.addItem(Qt8(name));
}

void ComposeWindow::ChooseType(std::optional<std::size_t> entry) {
  const QSignalBlocker quiet(form_.type);
  form_.type.setCurrentIndex(entry ? static_cast<int>(*entry) : -1);
}

void ComposeWindow::ShowInputs(std::uint32_t mask) {
  const bool text = (mask & kTextField) != 0;
  for (const InsertButton& insert : kInsertButtons) {
    Child<QPushButton>(*this, insert.name).setEnabled((mask & insert.input) != 0);
  }
  text_.SetVisible(text);
  Offer(Child<QWidget>(*this, "textInputs"), text);
  Offer(Child<QWidget>(*this, "fileInputs"), (mask & (kPathField | kPicturePreview)) != 0);
  form_.path.setVisible((mask & kPathField) != 0);
  form_.browse.setVisible((mask & kBrowseButton) != 0);
  form_.preview.setVisible((mask & kPicturePreview) != 0);
}

void ComposeWindow::ShowCounter(const std::string& counter) { form_.counter.setText(Qt8(counter)); }

void ComposeWindow::LimitPathTo(std::size_t characters) { LimitTyped(form_.path, characters); }

void ComposeWindow::ShowPath(const std::string& path) { form_.path.setText(Qt8(path)); }

void ComposeWindow::PreviewPicture(const std::string& path) {
  const auto preview = path.empty() ? std::nullopt : ReadPicture(path);
  form_.preview.setPixmap(preview ? Draw(*preview) : QPixmap());
}

void ComposeWindow::NameSendButton(const std::string& name) { form_.send.setText(Qt8(name)); }

void ComposeWindow::EnableSend(bool enabled) { form_.send.setEnabled(enabled); }

void ComposeWindow::EnableSchedule(bool enabled) { form_.schedule.setEnabled(enabled); }

void ComposeWindow::ShowBalance(const std::string& line, const std::string& hint) {
  form_.balance.setText(Qt8(line));
  form_.balance.setToolTip(Qt8(hint));
}

std::optional<std::string> ComposeWindow::PickFile(const std::string& pattern,
                                                   const std::string& filter) {
  return kit_.files.PickFile(window(), pattern, filter);
}

UpdateTiming ComposeWindow::AskUpdateTiming(const std::string& time) {
  const auto text = kit_.texts.Format(kUpdateTimingTextId, {time}).value_or(std::string());
  QMessageBox box(QMessageBox::Question, Qt8(kit_.texts.Load(kUpdateTimingCaptionId)), Qt8(text),
                  QMessageBox::NoButton, window());
  box.setObjectName(QStringLiteral("updateTiming"));
  box.setTextFormat(Qt::PlainText);
  const auto add = [&](int text_id, QMessageBox::ButtonRole role, const char* name) {
    QPushButton* button = box.addButton(Qt8(kit_.texts.Load(text_id)), role);
    button->setObjectName(QLatin1String(name));
    return button;
  };
  QPushButton* at_its_time = add(kAtItsTimeId, QMessageBox::AcceptRole, "updateAtItsTime");
  const QPushButton* now = add(kSendNowId, QMessageBox::DestructiveRole, "updateNow");
  box.setEscapeButton(add(kGoBackId, QMessageBox::RejectRole, "updateGoBack"));
  box.setDefaultButton(at_its_time);
  at_its_time->setProperty("primary", true);  // else its size would not allow for the bold text
  at_its_time->style()->polish(at_its_time);
  ShowTestIds(box);
  box.exec();
  if (box.clickedButton() == at_its_time) return UpdateTiming::kAtItsTime;
  return box.clickedButton() == now ? UpdateTiming::kNow : UpdateTiming::kGoBack;
}

std::optional<Schedule> ComposeWindow::AskSchedule() { return seams_.ask_schedule(*window()); }

ComposeView::Focus ComposeWindow::FocusedInput() const {
  const QWidget* focused = QApplication::focusWidget();
  if (focused == nullptr) return Focus::kElsewhere;
  if (focused == recipients_.Numbers().Editor()) return Focus::kNumberEditor;
  if (text_.HasFocus()) return Focus::kText;
  if (focused == &form_.search) return Focus::kSearch;
  return recipients_.Numbers().HasFocus() ? Focus::kNumbers : Focus::kElsewhere;
}

std::optional<std::size_t> ComposeWindow::SelectedNumber() const {
  return recipients_.Numbers().Selected();
}

void ComposeWindow::RunEditCommand(Focus input, EditCommand command) {
  switch (input) {
    case Focus::kText:
      return text_.Run(command);
    case Focus::kSearch:
      return RunIn(form_.search, command);
    case Focus::kNumberEditor:
      if (command == EditCommand::kPaste) {
        return recipients_.Numbers().PasteIntoField(QApplication::clipboard()->text());
      }
      return RunIn(*recipients_.Numbers().Editor(), command);
    default:
      return;
  }
}

std::string ComposeWindow::ClipboardText() const {
  return QApplication::clipboard()->text().toStdString();
}

void ComposeWindow::SetClipboardText(const std::string& text) {
  QApplication::clipboard()->setText(Qt8(text));
}

}  // namespace orvalo::ui
