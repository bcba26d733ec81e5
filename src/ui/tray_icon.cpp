#include "ui/tray_icon.h"

#include <utility>

namespace orvalo::ui {

TrayIcon::TrayIcon(std::function<void()> left_click, std::function<void()> right_click) {
  QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_,
                   [left = std::move(left_click), right = std::move(right_click)](auto reason) {
                     if (reason == QSystemTrayIcon::Trigger) left();
                     if (reason == QSystemTrayIcon::Context) right();
                   });
}

void TrayIcon::Add(const QIcon& icon, const std::string& tip) {
  icon_.setIcon(icon);
  icon_.setToolTip(QString::fromStdString(tip));
  icon_.show();
}

}  // namespace orvalo::ui
