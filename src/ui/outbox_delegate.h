#pragma once
#include <QStyledItemDelegate>

namespace orvalo::ui {

// Draws one cell of the outbox: an icon, one line of text, the ground where it is selected. It
// measures each text once, where the style's own drawing does so several times; the list is drawn
// with every message that the engine takes in hand. Main thread.
class OutboxDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  static constexpr int kMargin = 7;   // pixels left and right of what a cell shows
  static constexpr int kIconGap = 6;  // between an icon and the text
  static constexpr int kIconSize = 16;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
};

}  // namespace orvalo::ui
