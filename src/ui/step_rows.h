#pragma once
#include <QWidget>

#include "ui/kit.h"

namespace orvalo::ui {

// Shows how far the steps of a form have come: the `count` pairs of labels "<name>Icon<i>" and
// "<name>Row<i>", counted from 0. Those before `current` are done, `current` is in progress, those
// after it are greyed; said as well to those who do not see it. Main thread; throws FormError when
// the form lacks a label.
void MarkSteps(const Kit& kit, QWidget& form, const std::string& name, int count, int current);

}  // namespace orvalo::ui
