#pragma once
#include <QDialog>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "messages/outbox_export.h"
#include "ui/kit.h"

QT_BEGIN_NAMESPACE
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

namespace orvalo::ui {

// The EXPORT OUTBOX dialog (137). What it does stands in OutboxExportDialog. Made for one showing;
// main thread.
class ExportDialog : public QDialog, private OutboxExportWindow {
 public:
  // `selected` are the messages selected in the outbox, in the order shown. Throws FormError.
  ExportDialog(const Kit& kit, OutboxExport& writer, std::vector<std::int32_t> selected,
               QWidget* parent);

 private:
  std::optional<std::string> PickFileToSave(const std::string& default_name,
                                            const std::string& filter,
                                            const std::string& default_pattern) override;
  void ShowPath(const std::string& path) override;
  void EnableOk(bool enabled) override;
  void Close() override { accept(); }

  const Kit& kit_;
  QLineEdit* file_ = nullptr;
  QPushButton* ok_ = nullptr;
  OutboxExportDialog logic_;
};

}  // namespace orvalo::ui
