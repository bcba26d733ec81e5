#include "ui/system_desktop.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QLatin1String>
#include <QUrl>

namespace orvalo::ui {

namespace {

constexpr QLatin1String kFileScheme("file://");

}  // namespace

bool SystemClipboard::SetText(const std::string& text) {
  QGuiApplication::clipboard()->setText(QString::fromStdString(text));
  return QGuiApplication::clipboard()->ownsClipboard();
}

void SystemShell::OpenAddress(const std::string& address) {
  const QString text = QString::fromStdString(address);
  // A path is taken as it is: a "#" or "%" in it means nothing to an address.
  const QString path = text.startsWith(kFileScheme) ? text.mid(kFileScheme.size()) : QString();
  QDesktopServices::openUrl(QFile::exists(path) ? QUrl::fromLocalFile(path)
                                                : QUrl::fromUserInput(text));
}

}  // namespace orvalo::ui
