#pragma once
#include <QObject>
#include <QString>
#include <array>

#include "shell/options_page.h"

QT_BEGIN_NAMESPACE
class QLineEdit;
class QWidget;
QT_END_NAMESPACE

namespace orvalo::ui {

// The four fields of a voucher number, "voucher1" to "voucher4": a full one moves on to the next,
// and a number pasted in one piece spreads over them. Main thread; owned by the options window.
class VoucherFields : public QObject {
 public:
  // `after` gets the focus when the last field is full. Throws FormError.
  VoucherFields(QWidget& form, QWidget& after);

  void Show(const VoucherTexts& texts);
  VoucherTexts Texts() const;

 private:
  void MoveOn(std::size_t field);
  // More digits than a field holds have come in at once.
  void Spread(std::size_t field, const QString& digits);

  std::array<QLineEdit*, kVoucherFields> fields_;
  QWidget& after_;
};

}  // namespace orvalo::ui
