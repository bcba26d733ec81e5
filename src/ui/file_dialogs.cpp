#include "ui/file_dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStringList>

#include "platform/machine_config.h"

namespace orvalo::ui {

namespace {

// "Text Files (*.txt)\n*.txt\nAll Files (*.*)\n*.*\n\n" as Qt writes filters; a file without a dot
// is one of all files too.
QStringList QtFilters(const std::string& filter) {
  const QStringList parts = QString::fromStdString(filter).split(u'\n', Qt::SkipEmptyParts);
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    const QString name = parts[i].section(u'(', 0, 0).trimmed();
    const QString pattern =
        parts[i + 1] == QStringLiteral("*.*") ? QStringLiteral("*") : parts[i + 1];
    filters.append(QStringLiteral("%1 (%2)").arg(name, pattern));
  }
  return filters;
}

// The program's current directory is its data folder, where nobody's lists belong.
QString Documents() { return QString::fromStdString(platform::DocumentsFolder()); }

QString Wanted(const QStringList& filters, const std::string& pattern) {
  const QStringList fitting =
      filters.filter(QStringLiteral("(%1)").arg(QString::fromStdString(pattern)));
  return fitting.isEmpty() ? QString() : fitting.front();
}

}  // namespace

std::optional<std::string> SystemFileDialogs::Answer(const QString& path) {
  if (path.isEmpty()) return std::nullopt;
  last_folder_ = QFileInfo(path).absolutePath();
  return path.toStdString();
}

QString SystemFileDialogs::Start(const std::string& name) const {
  const QString folder = last_folder_.isEmpty() ? Documents() : last_folder_;
  return QDir(folder).filePath(QString::fromStdString(name));
}

std::optional<std::string> SystemFileDialogs::PickFile(QWidget* owner, const std::string& pattern,
                                                       const std::string& filter) {
  const QStringList filters = QtFilters(filter);
  QString wanted = Wanted(filters, pattern);
  return Answer(QFileDialog::getOpenFileName(owner, {}, Start({}),
                                             filters.join(QStringLiteral(";;")), &wanted));
}

std::optional<std::string> SystemFileDialogs::PickFileToSave(QWidget* owner,
                                                             const std::string& default_name,
                                                             const std::string& filter,
                                                             const std::string& pattern) {
  const QStringList filters = QtFilters(filter);
  QString wanted = Wanted(filters, pattern);
  return Answer(QFileDialog::getSaveFileName(owner, {}, Start(default_name),
                                             filters.join(QStringLiteral(";;")), &wanted));
}

}  // namespace orvalo::ui
