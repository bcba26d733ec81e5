#include "ui/outbox_delegate.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QStyle>
#include <QWidget>

namespace orvalo::ui {

namespace {

constexpr int kNarrowestCharacter = 2;  // pixels: what cannot be seen is not measured

}  // namespace

void OutboxDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
  const QPalette palette = QGuiApplication::palette();
  if (option.state.testFlag(QStyle::State_Selected)) {
    option.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter,
                                          option.widget);
  }
  QRect room = option.rect.adjusted(kMargin, 0, -kMargin, 0);
  const QVariant decoration = index.data(Qt::DecorationRole);
  if (decoration.isValid()) {
    const QRect icon(room.left(), room.center().y() - kIconSize / 2 + 1, kIconSize, kIconSize);
    decoration.value<QIcon>().paint(painter, icon);
    room.setLeft(icon.right() + 1 + kIconGap);
  }
  painter->setPen(palette.color(QPalette::Text));
  const QString text =
      index.data(Qt::DisplayRole).toString().left(room.width() / kNarrowestCharacter);
  painter->drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                    option.fontMetrics.elidedText(text, Qt::ElideRight, room.width()));
  if (option.state.testFlag(QStyle::State_HasFocus)) {
    painter->setPen(palette.color(QPalette::Link));
    painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
  }
}

}  // namespace orvalo::ui
