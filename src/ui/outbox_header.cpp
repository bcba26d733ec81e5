#include "ui/outbox_header.h"

#include <QKeyEvent>
#include <QPainter>
#include <algorithm>

namespace orvalo::ui {

namespace {

// The mark of the column sorted by.
constexpr qreal kArrowMargin = 10;
constexpr qreal kArrowWidth = 3.5;
constexpr qreal kArrowRise = 2;

}  // namespace

OutboxHeader::OutboxHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
  setFocusPolicy(Qt::TabFocus);
  setSectionsClickable(true);
  setHighlightSections(false);
  setStretchLastSection(true);
  setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

void OutboxHeader::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
      return MoveTo(focused_ - 1);
    case Qt::Key_Right:
      return MoveTo(focused_ + 1);
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      Q_EMIT sectionClicked(focused_);
      return;
    default:
      event->ignore();
  }
}

void OutboxHeader::focusInEvent(QFocusEvent* event) {
  QHeaderView::focusInEvent(event);
  MoveTo(focused_);
}

void OutboxHeader::focusOutEvent(QFocusEvent* event) {
  QHeaderView::focusOutEvent(event);
  viewport()->update();
}

void OutboxHeader::MoveTo(int section) {
  if (count() == 0) return;
  focused_ = std::clamp(section, 0, count() - 1);
  setAccessibleName(model()->headerData(focused_, Qt::Horizontal).toString());
  viewport()->update();
}

void OutboxHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
  painter->save();
  QHeaderView::paintSection(painter, rect, section);
  painter->restore();
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  if (section == sortIndicatorSection()) {
    const QPointF tip(rect.right() - kArrowMargin, rect.center().y() + 0.5);
    const qreal rise = sortIndicatorOrder() == Qt::AscendingOrder ? -kArrowRise : kArrowRise;
    painter->setPen(
        QPen(palette().color(QPalette::Link), 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPolyline(QPolygonF({tip + QPointF(-kArrowWidth, -rise), tip + QPointF(0, rise),
                                     tip + QPointF(kArrowWidth, -rise)}));
  }
  if (hasFocus() && section == focused_) {
    painter->setPen(QPen(palette().color(QPalette::Link), 2));
    painter->drawRoundedRect(QRectF(rect).adjusted(2, 2, -2, -2), 3, 3);
  }
  painter->restore();
}

}  // namespace orvalo::ui
