#include "ui/group_model.h"

#include <QGuiApplication>
#include <QPalette>
#include <utility>

#include "ui/images.h"

namespace orvalo::ui {

GroupModel::GroupModel(const Kit& kit)
    : everybody_(kit.images.Icon("address-book")), group_(kit.images.Icon("group")) {}

void GroupModel::SetGroups(const std::vector<GroupDisplayList::Entry>& groups) {
  beginResetModel();
  labels_.clear();
  labels_.reserve(groups.size());
  for (const auto& group : groups) labels_.push_back(Qt8(group.label).simplified());
  drop_target_ = -1;
  endResetModel();
}

void GroupModel::SetDropTarget(int row) {
  if (row == drop_target_) return;
  Redraw(std::exchange(drop_target_, row));
  Redraw(row);
}

void GroupModel::Redraw(int row) {
  if (row >= 0 && row < rowCount()) Q_EMIT dataChanged(index(row), index(row));
}

int GroupModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(labels_.size());
}

QVariant GroupModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  switch (role) {
    case Qt::DisplayRole:
      return labels_[static_cast<std::size_t>(index.row())];
    case Qt::DecorationRole:
      return index.row() == 0 ? everybody_ : group_;
    case Qt::BackgroundRole:
      return index.row() == drop_target_ ? QGuiApplication::palette().brush(QPalette::Mid)
                                         : QVariant();
    default:
      return {};
  }
}

}  // namespace orvalo::ui
