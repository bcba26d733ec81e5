#pragma once
#include <QDialog>
#include <optional>

#include "contacts/contact_dialogs.h"
#include "ui/kit.h"

QT_BEGIN_NAMESPACE
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

namespace orvalo::ui {

// The windows of the contacts page's small dialogs, each for one showing of its logic. Main thread.

// ADD NEW GROUP, EDIT GROUP NAME (150).
class GroupWindow : public QDialog {
 public:
  GroupWindow(const Kit& kit, GroupDialog& dialog, QWidget* parent);  // throws FormError
};

// ADD NEW MEMBER, EDIT MEMBER DETAILS (151).
class ContactWindow : public QDialog {
 public:
  ContactWindow(const Kit& kit, ContactDialog& dialog, QWidget* parent);  // throws FormError

 protected:
  // What the mobile field refuses to have typed.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void WireField(const char* name, ContactField field);
  void ShowState();

  ContactDialog& dialog_;
  QLineEdit* mobile_ = nullptr;
  QPushButton* ok_ = nullptr;
};

// "Delete contact from ..." (152). Nothing when it is cancelled. Throws FormError.
std::optional<DeleteScope> AskDeleteScope(const Kit& kit, QWidget* parent);

}  // namespace orvalo::ui
