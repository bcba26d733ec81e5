#include "ui/version_dialog.h"

#include <QLabel>
#include <QPushButton>

#include "ui/form_loader.h"

namespace orvalo::ui {

namespace {

constexpr int kVersionForm = 139;

}  // namespace

VersionDialog::VersionDialog(const Kit& kit, const std::array<std::string, 3>& lines,
                             QWidget* parent)
    : QDialog(parent) {
  kit.forms.LoadInto(*this, kVersionForm);
  Child<QLabel>(*this, "versionProgram").setText(Qt8(lines[0]));
  Child<QLabel>(*this, "versionNumber").setText(Qt8(lines[1]));
  Child<QLabel>(*this, "versionComms").setText(Qt8(lines[2]));
  connect(&Child<QPushButton>(*this, "versionOk"), &QPushButton::clicked, this, &QDialog::accept);
}

}  // namespace orvalo::ui
