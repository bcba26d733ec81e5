#pragma once
#include <QStringView>
#include <cstddef>

QT_BEGIN_NAMESPACE
class QLineEdit;
QT_END_NAMESPACE

namespace orvalo::ui {

// The pages' limits and positions count characters (code points); Qt's fields count UTF-16 units.
std::size_t CountCharacters(QStringView text);
// The units that the first so many characters take: all of them when the text is shorter.
qsizetype UnitsOf(QStringView text, std::size_t characters);

// How many units before the caret are too many after something was typed or pasted there: the
// excess over the limit, or over what the field held already when the program had put more into it.
qsizetype UnitsTooMany(QStringView text, qsizetype caret, std::size_t limit, std::size_t before);

// Holds what is typed and pasted into a field to so many characters, cutting off the end of what is
// added. What the program puts into it is not cut.
void LimitTyped(QLineEdit& field, std::size_t characters);

}  // namespace orvalo::ui
