#pragma once
#include <QAbstractListModel>
#include <QIcon>
#include <vector>

#include "store/group_list.h"
#include "ui/kit.h"

namespace orvalo::ui {

// The groups for their list, with their member counts. Owned by the contacts page's window; main
// thread.
class GroupModel : public QAbstractListModel {
 public:
  explicit GroupModel(const Kit& kit);

  void SetGroups(const std::vector<GroupDisplayList::Entry>& groups);  // all new
  // The group that a drag would be dropped on; -1: none.
  void SetDropTarget(int row);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  void Redraw(int row);

  QIcon everybody_;
  QIcon group_;
  std::vector<QString> labels_;
  int drop_target_ = -1;
};

}  // namespace orvalo::ui
