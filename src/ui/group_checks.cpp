#include "ui/group_checks.h"

#include <QListWidget>
#include <utility>

#include "ui/kit.h"

namespace orvalo::ui {

void ShowGroupChoices(QListWidget& list, const GroupChoices& groups,
                      std::function<void(std::size_t, bool)> checked) {
  for (const GroupChoices::Choice& group : groups.Groups()) {
    auto* item = new QListWidgetItem(Qt8(group.name).simplified(), &list);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(group.checked ? Qt::Checked : Qt::Unchecked);
  }
  QObject::connect(&list, &QListWidget::itemChanged, &list,
                   [&list, checked = std::move(checked)](QListWidgetItem* item) {
                     checked(static_cast<std::size_t>(list.row(item)),
                             item->checkState() == Qt::Checked);
                   });
}

}  // namespace orvalo::ui
