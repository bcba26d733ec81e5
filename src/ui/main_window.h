#pragma once
#include <QImage>
#include <QPoint>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "shell/main_shell.h"
#include "shell/shell_messages.h"
#include "ui/kit.h"
#include "ui/tray_icon.h"

QT_BEGIN_NAMESPACE
class QAction;
class QLabel;
class QMenu;
class QPushButton;
class QStackedWidget;
QT_END_NAMESPACE

namespace orvalo::ui {

// The main window (dialog 129): fixed in size, without a caption, dragged by its top, with the
// banner, the tab buttons, the pages, the two indicators and the icon in the notification area.
// What it does stands in MainShell. Owned by Desktop; main thread.
class MainWindow : public QWidget, public MainShellView {
 public:
  // `banner` gives the banner picture of the data folder, or a null image. Throws FormError.
  MainWindow(const Kit& kit, std::function<QImage()> banner);
  ~MainWindow() override;

  // The logic behind the window; set once, before anything is shown.
  void SetShell(MainShell* shell) { shell_ = shell; }
  // Called for each page that comes to the front.
  void SetPageShown(std::function<void(ShellPage)> shown) { page_shown_ = std::move(shown); }
  // Called when the window is closed for good.
  void SetClosed(std::function<void()> closed) { closed_ = std::move(closed); }
  void SetBalanceLight(std::function<void(bool)> light) { balance_light_ = std::move(light); }

  void AddPage(ShellPage page, QWidget& widget);  // takes it over
  void SetTabCaption(ShellTab tab, const std::string& caption);

  // Fixes the size once all pages are there: at least as large as each of them wants to be.
  void FixSize();
  // Shows the window as at the start of the program: not at all when it starts minimised and the
  // desktop has a notification area.
  void ShowAtStart(bool minimised);

  // --- MainShellView
  void SetTitle(const std::string& title) override;
  void AddTrayIcon(orvalo::TrayIcon icon, const std::string& tip) override;
  void SetTrayIcon(orvalo::TrayIcon icon) override;
  void OpenTrayMenu(std::uint32_t mask, std::size_t default_position) override;
  void ShowTabs() override;
  void DrawTab(ShellTab tab, bool selected) override;
  void ShowPage(ShellPage page) override;
  void ShowBusy(bool shown, bool lit) override;
  void SetBusyTip(const std::string& text) override;
  void ShowOffline(bool shown, bool lit) override;
  void LightBalance(bool lit) override;
  bool IsOnScreen() const override { return isVisible(); }
  void BringToFront() override;
  void Hide() override;
  void ReloadBanner() override;
  void Close() override;
  void StartTimer(ShellTimer timer, std::int64_t milliseconds) override;
  void StopTimer(ShellTimer timer) override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void WireHeader();
  void WireTabs();
  void WireAccelerators();
  void OpenAppMenu();
  QIcon IconOf(orvalo::TrayIcon icon) const;

  const Kit& kit_;
  const std::function<QImage()> load_banner_;
  MainShell* shell_ = nullptr;
  std::function<void(ShellPage)> page_shown_;
  std::function<void()> closed_;
  std::function<void(bool)> balance_light_;

  QStackedWidget* pages_ = nullptr;
  QLabel* busy_ = nullptr;
  QLabel* offline_ = nullptr;
  std::map<ShellTab, QPushButton*> tabs_;
  std::map<ShellPage, int> page_index_;
  std::map<ShellTimer, std::unique_ptr<QTimer>> timers_;
  QList<QAction*> accelerators_;
  std::unique_ptr<QMenu> tray_menu_;
  TrayIcon tray_;
  QImage banner_;
  QPoint grab_;  // where the pointer holds the window while it is dragged by hand
  bool dragging_ = false;
  bool ended_ = false;
};

}  // namespace orvalo::ui
