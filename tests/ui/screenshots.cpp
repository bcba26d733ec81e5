// Draws the windows on demo data, for the documentation: screenshots FOLDER [whole] [dark] [rtl]
// [LANGUAGE.rcc]
#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QLineEdit>
#include <QPalette>
#include <QPlainTextEdit>
#include <QTimer>
#include <QTreeView>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>

#include "net/link_message.h"
#include "ui/contact_windows.h"
#include "ui/desktop_stage.h"
#include "ui/message_dialogs.h"
#include "ui/qt_texts.h"
#include "ui/shutdown_window.h"
#include "ui/theme.h"
#include "ui/update_window.h"
#include "ui/wait_window.h"

namespace orvalo::test {
namespace {

class Album {
 public:
  explicit Album(QString folder) : folder_(std::move(folder)) {}

  // False when the picture cannot be written.
  void Take(QWidget& window, const char* name) {
    QTest::qWait(50);
    const QString path = folder_ + QStringLiteral("/%1.png").arg(QString::fromLatin1(name));
    if (!window.grab().save(path)) failed_ = true;
  }
  bool Failed() const { return failed_; }

 private:
  QString folder_;
  bool failed_ = false;
};

void FillAddressBook(SmsDatabase& database) {
  const std::int32_t friends = database.AddGroup("Friends").gid;
  const std::int32_t staff = database.AddGroup("Shop staff").gid;
  const std::int32_t customers = database.AddGroup("Customers").gid;
  const auto add = [&](const char* title, const char* name, const char* surname, const char* mobile,
                       std::initializer_list<std::int32_t> groups) {
    ContactRecord contact{name, surname, title, "", mobile, groups};
    database.AddContact(contact);
  };
  add("Ms", "Ann", "Archer", "27821110001", {friends, customers});
  add("Mr", "Bob", "Brewer", "27821110002", {friends});
  add("Dr", "Cleo", "Carter", "27821119907", {friends, staff});
  add("Ms", "Dina", "Dlamini", "27835550104", {staff});
  add("Mr", "Émile", "Éluard", "33612345678", {customers});
  add("Ms", "Фаина", "Фёдорова", "79161234567", {customers});
  add("Mr", "Goran", "Gašić", "381601234567", {customers, staff});
}

void FillOutbox(Program& program) {
  const auto queue = [&](const char* to, const char* text, SmsStatus status = SmsStatus::kPending,
                         std::int32_t time = 0) {
    QueuedMessage message;
    message.to = to;
    message.text = text;
    message.status = status;
    message.time = time;
    program.GetEngine().QueueMessage(message);
  };
  queue(",27830000001,27830000002,27830009909", "The shop opens at nine tomorrow.");
  queue(",A1", "Dear <<FIRSTNAME>> <<SURNAME>>, your order is ready.");
  queue(",27840000001", "Doors open!");
  DesktopStage::Until([&] { return program.GetDatabase().CountWaitingSms() == 0; });
  IdList all;
  program.GetDatabase().ForEachSms([&](const MessageRow& row) {
    all.ids.push_back(row.id);
    return true;
  });
  program.GetEngine().RequestQuery(all);
  const auto now = static_cast<std::int32_t>(program.GetClock().Now());
  queue(",A2,A4", "Rehearsal at 18:30, please be there.", SmsStatus::kScheduled, now + 86'400);
  QTest::qWait(1500);
}

void Compose(ui::Desktop& desktop) {
  DesktopStage::Click(desktop, "tabSms");
  auto& text = DesktopStage::Find<QPlainTextEdit>(desktop, "messageText");
  text.setFocus();
  QTest::keyClicks(
      &text, QStringLiteral("Dear <<FIRSTNAME>>, the summer sale begins tomorrow at nine. Bring "
                            "this message and a friend!"));
  auto& tree = DesktopStage::Find<QTreeView>(desktop, "recipientTree");
  const QModelIndex book = tree.model()->index(0, 0);
  tree.expand(book);
  tree.setCurrentIndex(tree.model()->index(1, 0, book));
  QTest::keyClick(&tree, Qt::Key_Space);
  tree.expand(tree.currentIndex());
}

// Takes a picture of the dialog or menu that `open` opens, and closes it.
void TakeOpened(Album& album, const char* name, const std::function<void()>& open) {
  QTimer::singleShot(300, qApp, [&album, name] {
    QWidget* opened = QApplication::activePopupWidget();
    if (opened == nullptr) opened = QApplication::activeModalWidget();
    if (opened == nullptr) return;
    album.Take(*opened, name);
    opened->close();
  });
  open();
}

void TakeDialog(ui::Desktop& desktop, Album& album, const char* button, const char* name) {
  TakeOpened(album, name, [&] { DesktopStage::Click(desktop, button); });
}

void TakeUpdate(ui::Desktop& desktop, Album& album) {
  ui::UpdateWindow update(desktop.Kit(), desktop.Window(), {});
  update.Open();
  update.MarkStep(UpdateView::kDownloading);
  update.ShowProgress("1712KB");
  album.Take(*desktop.Window().findChild<QWidget*>(QStringLiteral("updateDialog")), "update");
  update.Close();
}

void TakeWaiting(ui::Desktop& desktop, Program& program, Album& album) {
  {
    ui::WaitWindow wait(desktop.Kit(), program.GetClock(), desktop.Window());
    album.Take(wait, "wait");
  }
  ui::ShutdownWindow shutdown(desktop.Kit());
  shutdown.Mark(ui::ShutdownWindow::kSaving);
  shutdown.show();
  album.Take(shutdown, "shutdown");
}

void TakeMessages(const Texts& texts, Album& album) {
  RecordingShell shell;
  ui::MessageDialogs boxes(shell);
  TakeOpened(album, "question", [&] {
    boxes.Show(texts.Format(1177, {"Customers", 3}).value_or(std::string()), texts.Load(1176),
               platform::BoxIcon::kQuestion, platform::BoxButtons::kYesNo);
  });
  TakeOpened(album, "no-connection", [&] {
    boxes.Show(texts.Load(1027), texts.Load(1028), platform::BoxIcon::kStop,
               platform::BoxButtons::kOkOnly);
  });
  TakeOpened(album, "link-message",
             [&] { ShowLinkMessage(boxes, texts.Load(1136), texts.Load(1137), {}, 0); });
}

void TakeEditMenu(ui::Desktop& desktop, Album& album) {
  auto& field = DesktopStage::Find<QLineEdit>(desktop, "quickSearch");
  field.setText(QStringLiteral("Ann"));
  field.selectAll();
  TakeOpened(album, "edit-menu", [&] {
    QContextMenuEvent wanted(QContextMenuEvent::Mouse, {}, field.mapToGlobal(QPoint()));
    QApplication::sendEvent(&field, &wanted);
    QTest::qWait(500);
  });
  field.clear();
}

// `whole`: with the messages and the windows that only show while one waits.
void TakeAll(ui::Desktop& desktop, Program& program, Album& album, bool whole) {
  auto& window = desktop.Window();
  const ui::QtTexts qt_texts(program.GetTexts());
  album.Take(window, "login");
  TakeDialog(desktop, album, "forgotPassword", "recovery");
  DesktopStage::LogIn(desktop);
  FillOutbox(program);
  Compose(desktop);
  window.LightBalance(true);
  album.Take(window, "sms");
  TakeDialog(desktop, album, "scheduleButton", "schedule");
  if (whole) TakeEditMenu(desktop, album);
  DesktopStage::Click(desktop, "tabAddresses");
  album.Take(window, "addresses");
  TakeDialog(desktop, album, "newContact", "contact");
  TakeDialog(desktop, album, "newGroup", "group");
  TakeDialog(desktop, album, "uploadContacts", "import");
  TakeDialog(desktop, album, "exportContacts", "export-contacts");
  TakeOpened(album, "delete-contact", [&] { ui::AskDeleteScope(desktop.Kit(), &window); });
  DesktopStage::Click(desktop, "tabOutbox");
  album.Take(window, "outbox");
  TakeDialog(desktop, album, "outboxExport", "export");
  TakeDialog(desktop, album, "outboxHelp", "legend");
  DesktopStage::Click(desktop, "tabOptions");
  window.LightBalance(true);
  album.Take(window, "options");
  TakeOpened(album, "version", [&] { desktop.ShowVersionInfo(); });
  TakeOpened(album, "proxy", [&] { desktop.OpenProxySettings(); });
  TakeUpdate(desktop, album);
  if (!whole) return;
  TakeMessages(program.GetTexts(), album);
  TakeWaiting(desktop, program, album);
}

}  // namespace
}  // namespace orvalo::test

int main(int count, char** values) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(count, values);
  if (count < 2) {
    std::fprintf(stderr, "usage: screenshots FOLDER [whole] [dark] [rtl] [LANGUAGE.rcc]\n");
    return 2;
  }
  std::string language;
  bool whole = false;
  for (const std::string& option : std::vector<std::string>(values + 2, values + count)) {
    if (option == "dark") QApplication::setPalette(QPalette(QColor(0x20, 0x20, 0x20)));
    if (option == "rtl") QApplication::setLayoutDirection(Qt::RightToLeft);
    if (option == "whole") whole = true;
    if (option.ends_with(".rcc")) language = option;
  }
  orvalo::ui::ApplyTheme(orvalo::ui::Theme(QApplication::palette()));
  QDir().mkpath(QString::fromLocal8Bit(values[1]));
  orvalo::test::Album album(QString::fromLocal8Bit(values[1]));
  orvalo::test::DesktopStage stage;
  if (!language.empty()) stage.Speak(language);
  // Once for the address book, so that the window finds it at its start.
  stage.Run([&](orvalo::ui::Desktop&, orvalo::Program& program) {
    orvalo::test::FillAddressBook(program.GetDatabase());
  });
  stage.Run([&](orvalo::ui::Desktop& desktop, orvalo::Program& program) {
    orvalo::test::TakeAll(desktop, program, album, whole);
  });
  return album.Failed() ? 1 : 0;
}
