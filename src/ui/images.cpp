#include "ui/images.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <utility>

namespace orvalo::ui {

namespace {

QColor ColorOf(IconTint tint, QIcon::Mode mode, QIcon::State state) {
  const QPalette palette = QGuiApplication::palette();
  if (mode == QIcon::Disabled) return palette.color(QPalette::Disabled, QPalette::ButtonText);
  if (mode == QIcon::Selected) return palette.color(QPalette::HighlightedText);
  if (state == QIcon::On || tint == IconTint::kAccent) return palette.color(QPalette::Link);
  return palette.color(tint == IconTint::kMuted ? QPalette::PlaceholderText : QPalette::ButtonText);
}

// Draws an SVG picture anew for every size and colour.
class SvgIconEngine : public QIconEngine {
 public:
  SvgIconEngine(QByteArray svg, IconTint tint) : svg_(std::move(svg)), tint_(tint) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    QByteArray svg = svg_;
    svg.replace("currentColor", ColorOf(tint_, mode, state).name().toLatin1());
    QSvgRenderer renderer(svg);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    if (renderer.isValid()) renderer.render(painter, rect);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap picture(size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(&painter, QRect(QPoint(0, 0), size), mode, state);
    return picture;
  }

  QIconEngine* clone() const override { return new SvgIconEngine(svg_, tint_); }

 private:
  const QByteArray svg_;
  const IconTint tint_;
};

}  // namespace

QIcon Images::Icon(const std::string& name, IconTint tint) const {
  const auto bytes = container_.Read("images/" + name + ".svg");
  if (!bytes) return {};
  return QIcon(new SvgIconEngine(QByteArray::fromStdString(*bytes), tint));
}

QPixmap Images::Pixmap(const std::string& name, QSize size, qreal scale, IconTint tint) const {
  const QIcon icon = Icon(name, tint);
  return icon.isNull() ? QPixmap() : icon.pixmap(size, scale);
}

}  // namespace orvalo::ui
