#include "ui/member_model.h"

#include <QMimeData>
#include <algorithm>
#include <limits>

#include "app/texts.h"
#include "contacts/contacts_page.h"

namespace orvalo::ui {

namespace {

constexpr std::size_t kMostMemberLines = 1'000;  // kept at a time

}  // namespace

void MemberModel::SetRowCount(std::size_t rows) {
  beginResetModel();
  Forget();
  rows_ = static_cast<int>(std::min<std::size_t>(rows, std::numeric_limits<int>::max() - 1));
  endResetModel();
}

int MemberModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int MemberModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(kMemberColumnCount);
}

QVariant MemberModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rows_ || role != Qt::DisplayRole) return {};
  auto known = lines_.find(index.row());
  if (known == lines_.end()) {
    if (lines_.size() >= kMostMemberLines) lines_.clear();
    known = lines_.emplace(index.row(), source_.line(static_cast<std::size_t>(index.row()))).first;
  }
  return Qt8(known->second[static_cast<std::size_t>(index.column())]).simplified();
}

QVariant MemberModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  if (role == Qt::TextAlignmentRole) return int{Qt::AlignLeft | Qt::AlignVCenter};
  if (role != Qt::DisplayRole) return {};
  return Qt8(kit_.texts.Load(kMemberHeaders[static_cast<std::size_t>(section)].text_id));
}

Qt::ItemFlags MemberModel::flags(const QModelIndex& index) const {
  return QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
}

QStringList MemberModel::mimeTypes() const { return {QStringLiteral("text/plain")}; }

// One member is dragged, whatever is selected.
QMimeData* MemberModel::mimeData(const QModelIndexList& indexes) const {
  if (indexes.isEmpty()) return nullptr;
  auto* data = new QMimeData;
  data->setText(Qt8(source_.drag_text(source_.dragged())));
  return data;
}

}  // namespace orvalo::ui
