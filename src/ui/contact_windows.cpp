#include "ui/contact_windows.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>

#include "ui/character_limit.h"
#include "ui/form_loader.h"
#include "ui/group_checks.h"

namespace orvalo::ui {

namespace {

constexpr int kGroupForm = 150;
constexpr int kContactForm = 151;
constexpr int kDeleteScopeForm = 152;

}  // namespace

GroupWindow::GroupWindow(const Kit& kit, GroupDialog& dialog, QWidget* parent) : QDialog(parent) {
  kit.forms.LoadInto(*this, kGroupForm);
  setWindowTitle(Qt8(dialog.Caption()));
  auto& name = Child<QLineEdit>(*this, "groupName");
  auto& ok = Child<QPushButton>(*this, "groupDialogOk");
  name.setText(Qt8(dialog.Name()));
  name.selectAll();
  LimitTyped(name, GroupDialog::kNameWidth);
  ok.setEnabled(dialog.OkEnabled());
  connect(&name, &QLineEdit::textChanged, this, [&dialog, &ok](const QString& text) {
    dialog.EditName(text.toStdString());
    ok.setEnabled(dialog.OkEnabled());
  });
  connect(&ok, &QPushButton::clicked, this, &QDialog::accept);
  connect(&Child<QPushButton>(*this, "groupDialogCancel"), &QPushButton::clicked, this,
          &QDialog::reject);
  name.setFocus();
}

ContactWindow::ContactWindow(const Kit& kit, ContactDialog& dialog, QWidget* parent)
    : QDialog(parent), dialog_(dialog) {
  kit.forms.LoadInto(*this, kContactForm);
  setWindowTitle(Qt8(dialog.Caption()));
  ok_ = &Child<QPushButton>(*this, "contactDialogOk");
  WireField("contactName", ContactField::kName);
  WireField("contactSurname", ContactField::kSurname);
  WireField("contactTitle", ContactField::kTitle);
  WireField("contactCustom", ContactField::kCustom);
  WireField("contactMobile", ContactField::kMobile);
  mobile_ = &Child<QLineEdit>(*this, "contactMobile");
  mobile_->installEventFilter(this);
  ShowGroupChoices(Child<QListWidget>(*this, "contactGroups"), dialog_.Groups(),
                   [this](std::size_t group, bool checked) {
                     dialog_.CheckGroup(group, checked);
                     ShowState();
                   });
  connect(ok_, &QPushButton::clicked, this, &QDialog::accept);
  connect(&Child<QPushButton>(*this, "contactDialogCancel"), &QPushButton::clicked, this,
          &QDialog::reject);
  ShowState();
  Child<QLineEdit>(*this, "contactName").setFocus();
}

void ContactWindow::WireField(const char* name, ContactField field) {
  auto& edit = Child<QLineEdit>(*this, name);
  edit.setText(Qt8(dialog_.Text(field)));
  LimitTyped(edit, kContactFieldWidths[static_cast<std::size_t>(field)]);
  connect(&edit, &QLineEdit::textChanged, this, [this, field](const QString& text) {
    dialog_.EditText(field, text.toStdString());
    ShowState();
  });
}

void ContactWindow::ShowState() { ok_->setEnabled(dialog_.OkEnabled()); }

bool ContactWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == mobile_ && event->type() == QEvent::KeyPress) {
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool typed = !key.text().isEmpty() && key.text().front().isPrint() &&
                       (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) == 0;
    if (typed && !ContactDialog::MobileAccepts(key.text().toUcs4().front())) return true;
  }
  return QDialog::eventFilter(watched, event);
}

std::optional<DeleteScope> AskDeleteScope(const Kit& kit, QWidget* parent) {
  QDialog dialog(parent);
  kit.forms.LoadInto(dialog, kDeleteScopeForm);
  QObject::connect(&Child<QPushButton>(dialog, "deleteScopeOk"), &QPushButton::clicked, &dialog,
                   &QDialog::accept);
  QObject::connect(&Child<QPushButton>(dialog, "deleteScopeCancel"), &QPushButton::clicked, &dialog,
                   &QDialog::reject);
  const auto& all = Child<QRadioButton>(dialog, "deleteFromAll");
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return all.isChecked() ? DeleteScope::kAllGroups : DeleteScope::kThisGroup;
}

}  // namespace orvalo::ui
