#include "ui/main_window.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QCloseEvent>
#include <QCursor>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>
#include <QWindow>
#include <array>
#include <utility>

#include "ui/form_loader.h"
#include "ui/images.h"

namespace orvalo::ui {

namespace {

constexpr int kMainDialog = 129;
constexpr int kTrayMenuId = 221;
constexpr int kAcceleratorTable = 128;
constexpr QRect kBannerPlace(4, 4, 648, 81);
constexpr int kDragHeight = 80;
constexpr QSize kLeastSize(920, 664);
constexpr int kLogoSize = 40;

struct TabControl {
  ShellTab tab;
  const char* name;
  const char* icon;
};
constexpr std::array<TabControl, 4> kTabControls{
    {{ShellTab::kCompose, "tabSms", "tab-sms"},
     {ShellTab::kContacts, "tabAddresses", "tab-addresses"},
     {ShellTab::kOutbox, "tabOutbox", "tab-outbox"},
     {ShellTab::kOptions, "tabOptions", "tab-options"}}};

// An indicator that blinks keeps its place while it is dark.
void ShowIndicator(QLabel& label, bool shown, bool lit, const char* state) {
  label.setProperty("state", QString::fromLatin1(lit ? state : "off"));
  label.style()->unpolish(&label);
  label.style()->polish(&label);
  label.setVisible(shown);
}

}  // namespace

MainWindow::MainWindow(const Kit& kit, std::function<QImage()> banner)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowMinimizeButtonHint),
      kit_(kit),
      load_banner_(std::move(banner)),
      tray_([this] { shell_->TrayLeftClick(); }, [this] { shell_->TrayRightClick(); }) {
  kit_.forms.LoadInto(*this, kMainDialog);
  pages_ = &Child<QStackedWidget>(*this, "pages");
  busy_ = &Child<QLabel>(*this, "busyIndicator");
  offline_ = &Child<QLabel>(*this, "offlineIndicator");
  tray_menu_ = kit_.forms.LoadMenu(kTrayMenuId, this);
  connect(tray_menu_.get(), &QMenu::triggered, this, [this](const QAction* action) {
    shell_->Run(static_cast<ShellCommand>(action->data().toInt()));
  });
  WireHeader();
  WireTabs();
  WireAccelerators();
}

MainWindow::~MainWindow() = default;

void MainWindow::WireHeader() {
  for (QLabel* indicator : {busy_, offline_}) {
    QSizePolicy policy = indicator->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    policy.setVerticalPolicy(QSizePolicy::Fixed);
    indicator->setSizePolicy(policy);
    indicator->hide();
  }
  auto& close = Child<QPushButton>(*this, "closeApp");
  close.setIcon(kit_.images.Icon("close"));
  connect(&close, &QPushButton::clicked, this, [this] { shell_->Run(ShellCommand::kCloseApp); });
  auto& menu = Child<QToolButton>(*this, "appMenu");
  menu.setIcon(kit_.images.Icon("menu"));
  connect(&menu, &QToolButton::clicked, this, [this] { OpenAppMenu(); });
}

void MainWindow::WireTabs() {
  auto* group = new QButtonGroup(this);
  group->setExclusive(true);
  for (const TabControl& control : kTabControls) {
    auto& button = Child<QPushButton>(*this, control.name);
    button.setIcon(kit_.images.Icon(control.icon, IconTint::kMuted));
    group->addButton(&button, static_cast<int>(control.tab));
    tabs_[control.tab] = &button;
  }
  // Toggled, not clicked: assistive tools toggle a tab without a click.
  connect(group, &QButtonGroup::idToggled, this, [this](int tab, bool on) {
    if (on) shell_->TabClicked(static_cast<ShellTab>(tab));
  });
  Child<QWidget>(*this, "tabs").hide();
}

void MainWindow::WireAccelerators() {
  accelerators_ = kit_.forms.LoadAccelerators(kAcceleratorTable, *this);
  for (QAction* action : accelerators_) {
    action->setEnabled(false);
    connect(action, &QAction::triggered, this,
            [this, action] { shell_->Run(static_cast<ShellCommand>(action->data().toInt())); });
  }
}

void MainWindow::AddPage(ShellPage page, QWidget& widget) {
  page_index_[page] = pages_->addWidget(&widget);
}

void MainWindow::SetTabCaption(ShellTab tab, const std::string& caption) {
  tabs_.at(tab)->setText(Qt8(caption));
}

void MainWindow::FixSize() {
  auto& tabs = Child<QWidget>(*this, "tabs");
  const bool hidden = tabs.isHidden();
  tabs.show();
  ensurePolished();
  setFixedSize(kLeastSize.expandedTo(minimumSizeHint()));
  tabs.setHidden(hidden);
}

void MainWindow::ShowAtStart(bool minimised) {
  if (!minimised) {
    show();
  } else if (!TrayIcon::HasArea()) {
    showMinimized();
  }
}

void MainWindow::SetTitle(const std::string& title) {
  setWindowTitle(Qt8(title));
  update();
}

QIcon MainWindow::IconOf(orvalo::TrayIcon icon) const {
  return kit_.images.Icon(icon == orvalo::TrayIcon::kNormal ? "tray-online" : "tray-offline");
}

void MainWindow::AddTrayIcon(orvalo::TrayIcon icon, const std::string& tip) {
  setWindowIcon(IconOf(orvalo::TrayIcon::kNormal));
  tray_.Add(IconOf(icon), tip);
}

void MainWindow::SetTrayIcon(orvalo::TrayIcon icon) { tray_.Change(IconOf(icon)); }

void MainWindow::OpenTrayMenu(std::uint32_t mask, std::size_t default_position) {
  // Behind an open dialog only the end of the program is offered: the dialog may be at work.
  if (QApplication::activeModalWidget() != nullptr) mask &= 1U << default_position;
  const auto actions = tray_menu_->actions();
  for (qsizetype i = 0; i < actions.size(); ++i) actions[i]->setEnabled((mask >> i & 1U) != 0);
  if (static_cast<qsizetype>(default_position) < actions.size()) {
    tray_menu_->setDefaultAction(actions[static_cast<qsizetype>(default_position)]);
  }
  tray_menu_->popup(QCursor::pos());
}

// The same commands for desktops without a notification area, and for the keyboard.
void MainWindow::OpenAppMenu() {
  const auto mask = static_cast<std::uint32_t>(shell_->Handle(kWmTrayMask, 0, 0));
  const auto& button = Child<QToolButton>(*this, "appMenu");
  const auto actions = tray_menu_->actions();
  QMenu menu(this);
  menu.setObjectName(QStringLiteral("appMenuCommands"));
  for (qsizetype i = 0; i < actions.size(); ++i) {
    if (actions[i]->isSeparator()) {
      const auto& close = Child<QPushButton>(*this, "closeApp");
      menu.addSeparator();
      menu.addAction(close.text())->setData(static_cast<int>(ShellCommand::kCloseApp));
      continue;
    }
    QAction* action = menu.addAction(actions[i]->text());
    action->setData(actions[i]->data());
    action->setEnabled((mask >> i & 1U) != 0);
  }
  const QAction* chosen = menu.exec(button.mapToGlobal(QPoint(0, button.height())));
  if (chosen != nullptr) shell_->Run(static_cast<ShellCommand>(chosen->data().toInt()));
}

void MainWindow::ShowTabs() { Child<QWidget>(*this, "tabs").show(); }

void MainWindow::DrawTab(ShellTab tab, bool selected) {
  if (selected) tabs_.at(tab)->setChecked(true);  // the group takes the mark from the other
}

void MainWindow::ShowPage(ShellPage page) {
  pages_->setCurrentIndex(page_index_.at(page));
  for (QAction* action : accelerators_) action->setEnabled(page == ShellPage::kCompose);
  if (page_shown_) page_shown_(page);
}

void MainWindow::ShowBusy(bool shown, bool lit) { ShowIndicator(*busy_, shown, lit, "busy"); }

void MainWindow::SetBusyTip(const std::string& text) {
  busy_->setToolTip(Qt8(text));
  busy_->setAccessibleName(Qt8(text));
}

void MainWindow::ShowOffline(bool shown, bool lit) {
  ShowIndicator(*offline_, shown, lit, "offline");
}

void MainWindow::LightBalance(bool lit) {
  if (balance_light_) balance_light_(lit);
}

void MainWindow::BringToFront() {
  showNormal();
  raise();
  activateWindow();
}

void MainWindow::Hide() {
  if (TrayIcon::HasArea()) {
    hide();
  } else {
    showMinimized();
  }
}

void MainWindow::ReloadBanner() {
  banner_ = load_banner_ ? load_banner_() : QImage();
  update();
}

// Whatever is open ends with the window, as when the operator cancels it: the run waits for each
// dialog's own event loop.
void MainWindow::Close() {
  ended_ = true;
  tray_.Remove();
  hide();
  if (closed_) closed_();
  if (QWidget* menu = QApplication::activePopupWidget()) menu->close();
  for (QWidget* open = QApplication::activeModalWidget(); open != nullptr && open->close();)
    open = QApplication::activeModalWidget();
  for (QWidget* other : QApplication::topLevelWidgets()) {
    if (other->isVisible() && other->windowType() == Qt::Dialog) other->close();
  }
}

void MainWindow::StartTimer(ShellTimer timer, std::int64_t milliseconds) {
  auto& running = timers_[timer];
  if (running == nullptr) {
    running = std::make_unique<QTimer>();
    connect(running.get(), &QTimer::timeout, this, [this, timer] { shell_->OnTimer(timer); });
  }
  running->start(static_cast<int>(milliseconds));
}

void MainWindow::StopTimer(ShellTimer timer) {
  if (const auto& running = timers_[timer]) running->stop();
}

void MainWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().window());
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
  if (!banner_.isNull()) {
    painter.drawImage(kBannerPlace, banner_);
    return;
  }
  painter.drawPixmap(kBannerPlace,
                     kit_.images.Pixmap("background", kBannerPlace.size(), devicePixelRatioF()));
  const QRect logo(kBannerPlace.x() + 20, kBannerPlace.center().y() - kLogoSize / 2, kLogoSize,
                   kLogoSize);
  painter.drawPixmap(logo, kit_.images.Pixmap("logo", logo.size(), devicePixelRatioF()));
  QFont title = font();
  title.setPointSizeF(title.pointSizeF() * 1.9);
  title.setWeight(QFont::DemiBold);
  painter.setFont(title);
  painter.setPen(Qt::white);
  painter.drawText(kBannerPlace.adjusted(76, 0, 0, 0),
                   Qt::AlignVCenter | Qt::AlignLeft | Qt::AlignAbsolute, windowTitle());
}

void MainWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || event->position().y() >= kDragHeight) return;
  if (windowHandle() != nullptr && windowHandle()->startSystemMove()) return;
  dragging_ = true;  // no window manager to do it
  grab_ = event->globalPosition().toPoint() - pos();
}

void MainWindow::mouseMoveEvent(QMouseEvent* event) {
  if (dragging_) move(event->globalPosition().toPoint() - grab_);
}

void MainWindow::mouseReleaseEvent(QMouseEvent*) { dragging_ = false; }

// The desktop's own way to close a window is "Close app", not the end of the program.
void MainWindow::closeEvent(QCloseEvent* event) {
  if (ended_) return;
  event->ignore();
  shell_->Run(ShellCommand::kCloseApp);
}

// Enter presses the button that has the focus, as it does in a dialog.
void MainWindow::keyPressEvent(QKeyEvent* event) {
  auto* button = qobject_cast<QAbstractButton*>(focusWidget());
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && button != nullptr) {
    button->click();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace orvalo::ui
