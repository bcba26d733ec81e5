#pragma once
#include <cstddef>
#include <functional>

#include "contacts/group_choices.h"

QT_BEGIN_NAMESPACE
class QListWidget;
QT_END_NAMESPACE

namespace orvalo::ui {

// Fills a list with the groups of a dialog, a check box each, and hands on every change of one.
void ShowGroupChoices(QListWidget& list, const GroupChoices& groups,
                      std::function<void(std::size_t, bool)> checked);

}  // namespace orvalo::ui
