#include "ui/export_dialog.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <utility>

#include "ui/character_limit.h"
#include "ui/file_dialogs.h"
#include "ui/form_loader.h"

namespace orvalo::ui {

namespace {

constexpr int kExportForm = 137;

}  // namespace

ExportDialog::ExportDialog(const Kit& kit, OutboxExport& writer, std::vector<std::int32_t> selected,
                           QWidget* parent)
    : QDialog(parent), kit_(kit), logic_(std::move(selected), writer, kit.texts, *this) {
  kit_.forms.LoadInto(*this, kExportForm);
  file_ = &Child<QLineEdit>(*this, "exportFile");
  LimitTyped(*file_, OutboxExportDialog::kPathWidth);
  ok_ = &Child<QPushButton>(*this, "exportOk");
  EnableOk(logic_.OkEnabled());
  auto& some = Child<QRadioButton>(*this, "exportSelected");
  auto& all = Child<QRadioButton>(*this, "exportAll");
  some.setEnabled(logic_.SelectedOffered());
  (logic_.SelectedChosen() ? some : all).setChecked(true);
  connect(&some, &QRadioButton::toggled, this,
          [this](bool chosen) { logic_.ChooseSelected(chosen); });
  connect(file_, &QLineEdit::textChanged, this,
          [this](const QString& path) { logic_.EditPath(path.toStdString()); });
  connect(&Child<QPushButton>(*this, "exportBrowse"), &QPushButton::clicked, this,
          [this] { logic_.Browse(); });
  connect(ok_, &QPushButton::clicked, this, [this] { logic_.Ok(); });
  connect(&Child<QPushButton>(*this, "exportCancel"), &QPushButton::clicked, this,
          &QDialog::reject);
  file_->setFocus();
}

std::optional<std::string> ExportDialog::PickFileToSave(const std::string& default_name,
                                                        const std::string& filter,
                                                        const std::string& default_pattern) {
  return kit_.files.PickFileToSave(this, default_name, filter, default_pattern);
}

void ExportDialog::ShowPath(const std::string& path) { file_->setText(Qt8(path)); }

void ExportDialog::EnableOk(bool enabled) { ok_->setEnabled(enabled); }

}  // namespace orvalo::ui
