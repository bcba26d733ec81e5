#pragma once
#include <QDialog>
#include <memory>
#include <optional>
#include <string>

#include "contacts/csv_export.h"
#include "contacts/csv_import_dialog.h"
#include "ui/kit.h"

QT_BEGIN_NAMESPACE
class QLineEdit;
class QProgressDialog;
class QPushButton;
QT_END_NAMESPACE

namespace orvalo::ui {

// UPLOAD CSV FILE (153), for one showing of its logic. Main thread.
class ImportWindow : public QDialog, private CsvImportWindow {
 public:
  ImportWindow(const Kit& kit, CsvImportDialog& dialog, QWidget* parent);  // throws FormError
  ~ImportWindow() override;

 private:
  class HeldMessages;

  std::optional<std::string> PickFileToOpen(const std::string& filter,
                                            const std::string& default_pattern) override;
  std::optional<std::string> PickFileToSave(const std::string& default_name,
                                            const std::string& filter,
                                            const std::string& default_pattern) override;
  void ShowPath(const std::string& path) override;
  void ShowEnclosesFields(bool enclose) override;
  bool ShowProgress(std::uint64_t done, std::uint64_t size) override;
  void EndProgress() override;

  void WireChoices();
  void ShowState();

  const Kit& kit_;
  CsvImportDialog& dialog_;
  QLineEdit* file_ = nullptr;
  QPushButton* ok_ = nullptr;
  bool importing_ = false;
  std::unique_ptr<HeldMessages> held_messages_;  // these two while a long import runs
  std::unique_ptr<QProgressDialog> progress_;
};

// EXPORT CONTACTS (154), for one showing of its logic. Main thread.
class ExportContactsWindow : public QDialog, private CsvExportWindow {
 public:
  ExportContactsWindow(const Kit& kit, CsvExportDialog& dialog, QWidget* parent);  // FormError

 private:
  std::optional<std::string> PickFileToSave(const std::string& default_name,
                                            const std::string& filter,
                                            const std::string& default_pattern) override;
  void ShowPath(const std::string& path) override;
  void ShowState();

  const Kit& kit_;
  CsvExportDialog& dialog_;
  QLineEdit* file_ = nullptr;
  QWidget* groups_ = nullptr;
  QWidget* associate_ = nullptr;
  QPushButton* ok_ = nullptr;
};

}  // namespace orvalo::ui
