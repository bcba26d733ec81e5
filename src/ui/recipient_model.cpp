#include "ui/recipient_model.h"

#include <utility>

#include "ui/images.h"
#include "ui/kit.h"

namespace orvalo::ui {

namespace {

constexpr std::array<const char*, 9> kIconOfKind{"",        "address-book", "group",
                                                 "contact", "address-book", "folder",
                                                 "contact", "recent",       "contact"};

Qt::CheckState CheckStateOf(TickState state) {
  switch (state) {
    case TickState::kTicked:
      return Qt::Checked;
    case TickState::kPartly:
      return Qt::PartiallyChecked;
    default:
      return Qt::Unchecked;
  }
}

}  // namespace

RecipientModel::RecipientModel(RecipientTree& tree, const Images& images, Tick tick)
    : tree_(tree), tick_(std::move(tick)) {
  for (std::size_t kind = 1; kind < icons_.size(); ++kind) {
    icons_[kind] = images.Icon(kIconOfKind[kind], IconTint::kMuted);
  }
}

const RecipientNode& RecipientModel::NodeOf(const QModelIndex& index) const {
  return index.isValid() ? *static_cast<const RecipientNode*>(index.internalPointer())
                         : tree_.root();
}

QModelIndex RecipientModel::IndexOf(const RecipientNode& node) const {
  if (node.parent == nullptr) return {};
  return createIndex(static_cast<int>(node.row), 0, &node);
}

void RecipientModel::ChildrenChanging(const RecipientNode& node, std::size_t count) {
  filling_ = count != 0;
  if (filling_) {
    beginInsertRows(IndexOf(node), 0, static_cast<int>(count) - 1);
  } else {
    beginRemoveRows(IndexOf(node), 0, static_cast<int>(node.children.size()) - 1);
  }
}

void RecipientModel::ChildrenChanged(const RecipientNode&) {
  if (filling_) {
    endInsertRows();
  } else {
    endRemoveRows();
  }
}

void RecipientModel::FoundEmpty(const RecipientNode& node) {
  const QList<QPersistentModelIndex> parents{IndexOf(*node.parent)};
  Q_EMIT layoutAboutToBeChanged(parents);
  Q_EMIT layoutChanged(parents);
}

QModelIndex RecipientModel::index(int row, int column, const QModelIndex& parent) const {
  if (!hasIndex(row, column, parent)) return {};
  return IndexOf(*NodeOf(parent).children[static_cast<std::size_t>(row)]);
}

QModelIndex RecipientModel::parent(const QModelIndex& child) const {
  return child.isValid() ? IndexOf(*NodeOf(child).parent) : QModelIndex();
}

int RecipientModel::rowCount(const QModelIndex& parent) const {
  return static_cast<int>(NodeOf(parent).children.size());
}

bool RecipientModel::hasChildren(const QModelIndex& parent) const {
  return RecipientTree::CanExpand(NodeOf(parent));
}

Qt::ItemFlags RecipientModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = QAbstractItemModel::flags(index);
  if (index.isValid() && tree_.StateOf(NodeOf(index)) != TickState::kNoBox) {
    flags |= Qt::ItemIsUserCheckable;
  }
  return flags;
}

QVariant RecipientModel::data(const QModelIndex& index, int role) const {
  const RecipientNode& node = NodeOf(index);
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return Qt8(node.label);
    case Qt::DecorationRole:
      return icons_[static_cast<std::size_t>(node.kind)];
    case Qt::CheckStateRole: {
      const TickState state = tree_.StateOf(node);
      return state == TickState::kNoBox ? QVariant()
                                        : QVariant(static_cast<int>(CheckStateOf(state)));
    }
    default:
      return {};
  }
}

bool RecipientModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::CheckStateRole || !index.isValid()) return false;
  if (!tick_(NodeOf(index), value.toInt() == Qt::Checked)) return false;
  Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
  return true;
}

}  // namespace orvalo::ui
