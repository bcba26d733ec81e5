#pragma once
#include <QIcon>
#include <QSystemTrayIcon>
#include <functional>
#include <string>

namespace orvalo::ui {

// The program's icon in the desktop's notification area; where the desktop has none it is not
// seen, and appears when one comes. Owned by the main window, main thread.
class TrayIcon {
 public:
  TrayIcon(std::function<void()> left_click, std::function<void()> right_click);

  void Add(const QIcon& icon, const std::string& tip);
  void Change(const QIcon& icon) { icon_.setIcon(icon); }
  void Remove() { icon_.hide(); }

  static bool HasArea() { return QSystemTrayIcon::isSystemTrayAvailable(); }

 private:
  QSystemTrayIcon icon_;
};

}  // namespace orvalo::ui
