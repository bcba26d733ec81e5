#include "ui/character_limit.h"

#include <QLineEdit>
#include <algorithm>
#include <memory>

namespace orvalo::ui {

namespace {

// The second half of a character beyond the first 65,536.
bool IsSecondHalf(QStringView text, qsizetype unit) {
  return unit > 0 && text[unit].isLowSurrogate() && text[unit - 1].isHighSurrogate();
}

}  // namespace

std::size_t CountCharacters(QStringView text) {
  std::size_t count = 0;
  for (qsizetype unit = 0; unit < text.size(); ++unit) count += IsSecondHalf(text, unit) ? 0 : 1;
  return count;
}

qsizetype UnitsOf(QStringView text, std::size_t characters) {
  qsizetype units = 0;
  for (; units < text.size(); ++units) {
    if (IsSecondHalf(text, units)) continue;
    if (characters-- == 0) break;
  }
  return units;
}

qsizetype UnitsTooMany(QStringView text, qsizetype caret, std::size_t limit, std::size_t before) {
  const std::size_t count = CountCharacters(text);
  const std::size_t allowed = std::max(limit, before);
  if (count <= allowed) return 0;
  const QStringView left = text.first(caret);
  const std::size_t characters = CountCharacters(left);
  return caret - UnitsOf(left, characters - std::min(characters, count - allowed));
}

void LimitTyped(QLineEdit& field, std::size_t characters) {
  const auto before = std::make_shared<std::size_t>(0);
  QObject::connect(&field, &QLineEdit::textEdited, &field, [&field, before, characters] {
    const int caret = field.cursorPosition();
    const auto excess = static_cast<int>(UnitsTooMany(field.text(), caret, characters, *before));
    if (excess == 0) return;
    field.setSelection(caret - excess, excess);
    field.del();
  });
  // Not the text that the signal tells: after a cut above, that is the one before the cut.
  QObject::connect(&field, &QLineEdit::textChanged, &field,
                   [&field, before] { *before = CountCharacters(field.text()); });
}

}  // namespace orvalo::ui
