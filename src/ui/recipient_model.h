#pragma once
#include <QAbstractItemModel>
#include <QIcon>
#include <array>
#include <cstddef>
#include <functional>

#include "messages/recipient_tree.h"

namespace orvalo::ui {

class Images;

// The recipient tree as Qt's views read it; the nodes are the tree's own. What the tree announces
// of its nodes must be passed on here. Main thread.
class RecipientModel : public QAbstractItemModel {
 public:
  // Called when the operator ticks or clears a box. True when the choice was taken.
  using Tick = std::function<bool(const RecipientNode& node, bool ticked)>;

  RecipientModel(RecipientTree& tree, const Images& images, Tick tick);

  const RecipientNode& NodeOf(const QModelIndex& index) const;
  QModelIndex IndexOf(const RecipientNode& node) const;

  // See RecipientTreeView.
  void ChildrenChanging(const RecipientNode& node, std::size_t count);
  void ChildrenChanged(const RecipientNode& node);
  // A node has turned out to have no children, and can no longer be expanded.
  void FoundEmpty(const RecipientNode& node);

  // --- QAbstractItemModel
  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex&) const override { return 1; }
  bool hasChildren(const QModelIndex& parent = {}) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 private:
  RecipientTree& tree_;
  const Tick tick_;
  std::array<QIcon, 9> icons_;  // by kind
  bool filling_ = false;        // between ChildrenChanging and ChildrenChanged
};

}  // namespace orvalo::ui
