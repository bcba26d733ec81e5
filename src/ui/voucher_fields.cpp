#include "ui/voucher_fields.h"

#include <QLineEdit>
#include <QTimer>
#include <QValidator>
#include <algorithm>
#include <functional>
#include <utility>

#include "ui/form_loader.h"
#include "ui/kit.h"

namespace orvalo::ui {

namespace {

constexpr int kFieldDigits = static_cast<int>(OptionsPage::kVoucherFieldLength);

QString DigitsOf(const QString& text) {
  QString digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
               [](QChar c) { return c >= u'0' && c <= u'9'; });
  return digits;
}

// Refuses what may not stand in a field, but tells of what was pasted: text that has grown by more
// than a keystroke.
class VoucherValidator : public QValidator {
 public:
  VoucherValidator(QLineEdit& field, std::function<void(QString)> pasted)
      : QValidator(&field), field_(field), pasted_(std::move(pasted)) {
    connect(&field, &QLineEdit::textChanged, this,
            [this](const QString& text) { held_ = text.size(); });
  }

  State validate(QString& text, int&) const override {
    if (OptionsPage::AcceptsVoucher(text.toStdString())) return Acceptable;
    // Once the field is done with refusing the text.
    if (text.size() > held_ + 1)
      QTimer::singleShot(0, &field_, [this, text] { pasted_(DigitsOf(text)); });
    return Invalid;
  }

 private:
  QLineEdit& field_;
  const std::function<void(QString)> pasted_;
  qsizetype held_ = 0;  // characters; while asked, the field holds the text in question already
};

}  // namespace

VoucherFields::VoucherFields(QWidget& form, QWidget& after) : after_(after) {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    const QByteArray name = "voucher" + QByteArray::number(static_cast<int>(i) + 1);
    fields_.at(i) = &Child<QLineEdit>(form, name.constData());
    QLineEdit& field = *fields_.at(i);
    field.setValidator(
        new VoucherValidator(field, [this, i](const QString& digits) { Spread(i, digits); }));
    connect(&field, &QLineEdit::textEdited, this, [this, i] { MoveOn(i); });
  }
}

void VoucherFields::MoveOn(std::size_t field) {
  const QLineEdit& full = *fields_.at(field);
  if (full.text().size() < kFieldDigits || full.cursorPosition() < kFieldDigits) return;
  if (field + 1 == fields_.size()) {
    after_.setFocus();
    return;
  }
  fields_.at(field + 1)->setFocus();
  fields_.at(field + 1)->selectAll();
}

void VoucherFields::Spread(std::size_t field, const QString& digits) {
  // A whole number fills all fields, wherever it was pasted.
  std::size_t i =
      digits.size() > kFieldDigits * static_cast<int>(fields_.size() - field) ? 0 : field;
  for (QString rest = digits; !rest.isEmpty() && i < fields_.size(); ++i) {
    fields_.at(i)->setText(rest.left(kFieldDigits));
    rest.remove(0, kFieldDigits);
    fields_.at(i)->setFocus();
    MoveOn(i);
  }
}

void VoucherFields::Show(const VoucherTexts& texts) {
  for (std::size_t i = 0; i < fields_.size(); ++i) fields_.at(i)->setText(Qt8(texts.at(i)));
}

VoucherTexts VoucherFields::Texts() const {
  VoucherTexts texts;
  std::transform(fields_.begin(), fields_.end(), texts.begin(),
                 [](const QLineEdit* field) { return field->text().toStdString(); });
  return texts;
}

}  // namespace orvalo::ui
