#include "ui/images.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <map>
#include <tuple>
#include <utility>

namespace orvalo::ui {

namespace {

QColor ColorOf(IconTint tint, QIcon::Mode mode, QIcon::State state) {
  const QPalette palette = QGuiApplication::palette();
  if (mode == QIcon::Disabled) return palette.color(QPalette::Disabled, QPalette::ButtonText);
  if (tint == IconTint::kOnAccent) return palette.color(QPalette::HighlightedText);
  if (state == QIcon::On || tint == IconTint::kAccent) return palette.color(QPalette::Link);
  return palette.color(tint == IconTint::kMuted ? QPalette::PlaceholderText : QPalette::ButtonText);
}

constexpr std::size_t kMostDrawn = 16;  // sizes and colours of one picture that are kept

}  // namespace

// Draws an SVG picture anew for every size and colour, and keeps what it has drawn.
class Images::Picture {
 public:
  explicit Picture(QByteArray svg) : svg_(std::move(svg)) {}

  const QPixmap& In(const QSize& size, const QColor& color) {
    const auto key = std::tuple(size.width(), size.height(), color.rgba());
    const auto known = drawn_.find(key);
    if (known != drawn_.end()) return known->second;
    if (drawn_.size() >= kMostDrawn) drawn_.clear();
    return drawn_[key] = Draw(size, color);
  }

 private:
  QPixmap Draw(const QSize& size, const QColor& color) const {
    QByteArray svg = svg_;
    svg.replace("currentColor", color.name().toLatin1());
    QSvgRenderer renderer(svg);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QPixmap picture(size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    if (renderer.isValid()) renderer.render(&painter, QRectF(QPointF(0, 0), size));
    return picture;
  }

  const QByteArray svg_;
  std::map<std::tuple<int, int, QRgb>, QPixmap> drawn_;
};

namespace {

// One picture in the colours that a tint stands for.
template <typename Picture>
class SvgIconEngine : public QIconEngine {
 public:
  SvgIconEngine(std::shared_ptr<Picture> picture, IconTint tint)
      : picture_(std::move(picture)), tint_(tint) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const qreal scale = painter->device()->devicePixelRatioF();
    QPixmap picture = pixmap((QSizeF(rect.size()) * scale).toSize(), mode, state);
    picture.setDevicePixelRatio(scale);
    painter->drawPixmap(rect, picture);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return picture_->In(size, ColorOf(tint_, mode, state));
  }

  QIconEngine* clone() const override { return new SvgIconEngine(picture_, tint_); }

 private:
  const std::shared_ptr<Picture> picture_;
  const IconTint tint_;
};

}  // namespace

Images::Images(const platform::ResourceContainer& container) : container_(container) {}

Images::~Images() = default;

QIcon Images::Icon(const std::string& name, IconTint tint) const {
  std::shared_ptr<Picture>& picture = pictures_[name];
  if (picture == nullptr) {
    const auto bytes = container_.Read("images/" + name + ".svg");
    if (!bytes) return {};
    picture = std::make_shared<Picture>(QByteArray::fromStdString(*bytes));
  }
  return QIcon(new SvgIconEngine<Picture>(picture, tint));
}

QPixmap Images::Pixmap(const std::string& name, QSize size, qreal scale, IconTint tint) const {
  const QIcon icon = Icon(name, tint);
  return icon.isNull() ? QPixmap() : icon.pixmap(size, scale);
}

}  // namespace orvalo::ui
