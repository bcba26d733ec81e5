#pragma once
#include <QAbstractTableModel>
#include <QIcon>
#include <array>
#include <cstddef>
#include <functional>
#include <unordered_map>

#include "messages/outbox_page.h"
#include "store/sms_status.h"
#include "ui/kit.h"

namespace orvalo::ui {

// The outbox's lines for its list, which may have millions: each is asked for when it is drawn or
// read out, and kept until the list is drawn anew. Owned by the outbox's window; main thread.
class OutboxModel : public QAbstractTableModel {
 public:
  // Text that a cell shows: longer texts are cut (a message may be a file of many thousand digits).
  static constexpr std::size_t kShownText = 500;

  explicit OutboxModel(const Kit& kit) : kit_(kit) {}

  // Where the lines come from; until it is set there are none.
  void SetSource(std::function<OutboxLine(std::size_t)> source) { source_ = std::move(source); }
  void SetRowCount(std::size_t rows);
  void Forget() { lines_.clear(); }  // what was read so far
  void Changed();                    // any line may have: forgets, and tells the views

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  const OutboxLine& Line(int row) const;
  std::string StatusDetails(const OutboxLine& line) const;
  const QIcon& Icon(std::int32_t status) const;

  const Kit& kit_;
  std::function<OutboxLine(std::size_t)> source_;
  int rows_ = 0;
  mutable std::unordered_map<int, OutboxLine> lines_;
  mutable std::array<QIcon, kSmsStatusCount> icons_;
};

}  // namespace orvalo::ui
