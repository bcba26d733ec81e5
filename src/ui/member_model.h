#pragma once
#include <QAbstractTableModel>
#include <cstddef>
#include <functional>
#include <unordered_map>

#include "contacts/member_rows.h"
#include "ui/kit.h"

namespace orvalo::ui {

// The members for their list, which may have many: each is asked for when it is drawn or read out.
// Owned by the contacts page's window; main thread.
class MemberModel : public QAbstractTableModel {
 public:
  struct Source {
    std::function<MemberLine(std::size_t)> line;
    std::function<std::string(std::size_t)> drag_text;  // of the member at a position
    std::function<std::size_t()> dragged;               // which one a drag takes
  };

  explicit MemberModel(const Kit& kit) : kit_(kit) {}

  void SetSource(Source source) { source_ = std::move(source); }
  void SetRowCount(std::size_t rows);  // all new
  void Forget() { lines_.clear(); }    // what was read so far

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  Qt::DropActions supportedDragActions() const override { return Qt::CopyAction | Qt::MoveAction; }

 private:
  const Kit& kit_;
  Source source_;
  int rows_ = 0;
  mutable std::unordered_map<int, MemberLine> lines_;
};

}  // namespace orvalo::ui
