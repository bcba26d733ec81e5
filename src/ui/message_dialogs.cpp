#include "ui/message_dialogs.h"

#include <QApplication>
#include <QCursor>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QThread>
#include <condition_variable>
#include <optional>
#include <utility>
#include <vector>

#include "ui/form_loader.h"

namespace orvalo::ui {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;

// What another thread waits for.
struct MessageDialogs::Question {
  explicit Question(std::function<BoxAnswer()> how) : ask(std::move(how)) {}

  const std::function<BoxAnswer()> ask;
  std::mutex mutex;  // guards what follows
  std::condition_variable answered;
  std::optional<BoxAnswer> answer;

  void Answer(BoxAnswer value) {
    const std::lock_guard lock(mutex);
    if (!answer) answer = value;
    answered.notify_all();
  }
  BoxAnswer Wait() {
    std::unique_lock lock(mutex);
    answered.wait(lock, [this] { return answer.has_value(); });
    return *answer;
  }
};

namespace {

constexpr int kMargin = 20;                 // pixels around a message
constexpr qsizetype kLongestAddress = 999;  // characters of a link that are opened

QMessageBox::Icon IconOf(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::kStop:
      return QMessageBox::Critical;
    case BoxIcon::kQuestion:
      return QMessageBox::Question;
    case BoxIcon::kWarning:
      return QMessageBox::Warning;
    case BoxIcon::kInformation:
      return QMessageBox::Information;
    case BoxIcon::kNone:
      break;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons ButtonsOf(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::kOkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case BoxButtons::kYesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case BoxButtons::kYesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case BoxButtons::kOkOnly:
      break;
  }
  return QMessageBox::Ok;
}

BoxAnswer AnswerOf(int button) {
  switch (button) {
    case QMessageBox::Ok:
      return BoxAnswer::kAccepted;
    case QMessageBox::Yes:
      return BoxAnswer::kYes;
    case QMessageBox::No:
      return BoxAnswer::kNo;
    default:
      return BoxAnswer::kCancel;
  }
}

// The window that a message stands over. A hidden main window must not hide its message.
QWidget* Owner() {
  QWidget* active = QApplication::activeModalWidget();
  if (active == nullptr) active = QApplication::activeWindow();
  return active;
}

QString OneKindOfBreak(const std::string& text) {
  return QString::fromStdString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

// The cursor of a wait does not hold while the operator answers: it would hide what can be clicked.
class NoWaitCursor {
 public:
  NoWaitCursor() {
    for (; const QCursor* cursor = QGuiApplication::overrideCursor();
         QGuiApplication::restoreOverrideCursor())
      cursors_.push_back(*cursor);
  }
  ~NoWaitCursor() {
    for (auto cursor = cursors_.rbegin(); cursor != cursors_.rend(); ++cursor)
      QGuiApplication::setOverrideCursor(*cursor);
  }
  NoWaitCursor(const NoWaitCursor&) = delete;
  NoWaitCursor& operator=(const NoWaitCursor&) = delete;

 private:
  std::vector<QCursor> cursors_;
};

BoxAnswer Ask(QMessageBox& box) {
  box.layout()->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  const NoWaitCursor no_wait;
  return AnswerOf(box.exec());
}

BoxAnswer ShowBox(const std::string& text, const std::string& caption, BoxIcon icon,
                  BoxButtons buttons) {
  QMessageBox box(IconOf(icon), QString::fromStdString(caption), OneKindOfBreak(text),
                  ButtonsOf(buttons), Owner());
  box.setObjectName(QStringLiteral("messageBox"));
  ShowTestIds(box);
  box.setTextFormat(Qt::PlainText);
  return Ask(box);
}

BoxAnswer ShowLinkBox(const std::string& text, const std::string& caption, const std::string& url,
                      platform::Shell& shell) {
  QMessageBox box(QMessageBox::Warning, QString::fromStdString(caption),
                  QString::fromStdString(caption), QMessageBox::Ok | QMessageBox::Cancel, Owner());
  box.setObjectName(QStringLiteral("linkMessage"));
  ShowTestIds(box);
  const auto escaped = [](const std::string& plain) {
    return QString::fromStdString(plain).toHtmlEscaped();
  };
  box.setTextFormat(Qt::RichText);
  box.setText(QStringLiteral("<b>%1</b>").arg(escaped(caption)));
  QString body = OneKindOfBreak(text).toHtmlEscaped();
  body.replace(u'\n', QStringLiteral("<br>"));
  box.setInformativeText(QStringLiteral("%1<p><a href=\"%2\">%2</a></p>").arg(body, escaped(url)));
  for (QLabel* label : box.findChildren<QLabel*>()) {
    label->setOpenExternalLinks(false);
    label->setTextInteractionFlags(Qt::TextBrowserInteraction);
    QObject::connect(label, &QLabel::linkActivated, &box, [&shell](const QString& address) {
      shell.OpenAddress(address.left(kLongestAddress).toStdString());
    });
  }
  return Ask(box);
}

}  // namespace

MessageDialogs::MessageDialogs(platform::Shell& shell)
    : shell_(shell), asked_([this](auto, auto, auto) { AskNext(); }) {}

MessageDialogs::~MessageDialogs() { StopAsking(); }

BoxAnswer MessageDialogs::Show(const std::string& text, const std::string& caption, BoxIcon icon,
                               BoxButtons buttons) {
  return OnMainThread([=] { return ShowBox(text, caption, icon, buttons); });
}

BoxAnswer MessageDialogs::ShowLink(const std::string& text, const std::string& caption,
                                   const std::string& url) {
  return OnMainThread([=, this] { return ShowLinkBox(text, caption, url, shell_); });
}

BoxAnswer MessageDialogs::OnMainThread(std::function<BoxAnswer()> ask) {
  if (QThread::currentThread() == qApp->thread()) return ask();
  const auto question = std::make_shared<Question>(std::move(ask));
  {
    const std::lock_guard lock(mutex_);
    if (stopped_) return BoxAnswer::kCancel;
    to_ask_.push_back(question);
    waiting_.push_back(question);
  }
  asked_.Post(0, 0, 0);
  const BoxAnswer answer = question->Wait();
  const std::lock_guard lock(mutex_);
  waiting_.remove(question);
  return answer;
}

void MessageDialogs::AskNext() {
  std::shared_ptr<Question> question;
  {
    const std::lock_guard lock(mutex_);
    if (stopped_ || to_ask_.empty()) return;
    question = to_ask_.front();
    to_ask_.pop_front();
  }
  question->Answer(question->ask());
}

void MessageDialogs::StopAsking() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  for (const auto& question : waiting_) question->Answer(BoxAnswer::kCancel);
}

}  // namespace orvalo::ui
