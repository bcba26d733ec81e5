#include "ui/system_desktop.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

namespace orvalo::ui {

bool SystemClipboard::SetText(const std::string& text) {
  QGuiApplication::clipboard()->setText(QString::fromStdString(text));
  return QGuiApplication::clipboard()->ownsClipboard();
}

void SystemShell::OpenAddress(const std::string& address) {
  QDesktopServices::openUrl(QUrl(QString::fromStdString(address)));
}

}  // namespace orvalo::ui
