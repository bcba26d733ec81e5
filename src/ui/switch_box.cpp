#include "ui/switch_box.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>

namespace orvalo::ui {

namespace {

constexpr int kMargin = 4;  // above and below; to the right it takes the ring of the focus
constexpr int kGap = 12;    // between the text and the switch
constexpr int kKnobInset = 3;

}  // namespace

SwitchBox::SwitchBox(QWidget* parent) : QCheckBox(parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize SwitchBox::TrackSize() const {
  const int height = std::max(18, fontMetrics().height());
  return {height * 2 - 2, height};
}

QSize SwitchBox::sizeHint() const {
  const QSize track = TrackSize();
  const QSize words = fontMetrics().size(Qt::TextShowMnemonic, text());
  return {words.width() + kGap + track.width() + kMargin,
          std::max(words.height(), track.height()) + 2 * kMargin};
}

void SwitchBox::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
  const auto color = [&](QPalette::ColorRole role) { return palette().color(group, role); };

  // The switch stands where the text's lines end: on the left where one writes to the left.
  const bool to_left = layoutDirection() == Qt::RightToLeft;
  const QRect inner = to_left ? rect().adjusted(kMargin, kMargin, 0, -kMargin)
                              : rect().adjusted(0, kMargin, -kMargin, -kMargin);
  const auto alignment = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft);
  style()->drawItemText(&painter, inner, alignment | Qt::AlignVCenter | Qt::TextShowMnemonic,
                        palette(), isEnabled(), text(), QPalette::WindowText);

  QRectF track(QPointF(0, 0), QSizeF(TrackSize()));
  const qreal middle =
      to_left ? inner.left() + track.width() / 2 : inner.right() + 1 - track.width() / 2;
  track.moveCenter(QPointF(middle, QRectF(rect()).center().y()));
  const qreal radius = track.height() / 2;
  const QColor off = color(QPalette::PlaceholderText);
  painter.setPen(isChecked() ? QPen(Qt::NoPen) : QPen(off, 1.5));
  painter.setBrush(isChecked() ? color(QPalette::Highlight) : color(QPalette::Base));
  painter.drawRoundedRect(track.adjusted(1, 1, -1, -1), radius, radius);
  QRectF knob(0, 0, track.height() - 2 * kKnobInset - 2, track.height() - 2 * kKnobInset - 2);
  knob.moveCenter({isChecked() != to_left ? track.right() - radius : track.left() + radius,
                   track.center().y()});
  painter.setPen(Qt::NoPen);
  painter.setBrush(isChecked() ? color(QPalette::HighlightedText) : off);
  painter.drawEllipse(knob);

  if (!hasFocus()) return;
  painter.setPen(QPen(color(QPalette::Highlight), 2));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(track.adjusted(-2, -2, 2, 2), radius + 2, radius + 2);
}

}  // namespace orvalo::ui
