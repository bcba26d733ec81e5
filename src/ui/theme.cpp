#include "ui/theme.h"

#include <QApplication>
#include <QStyleFactory>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/resource_container.h"

namespace orvalo::ui {

namespace {

constexpr int kMiddleLightness = 128;

ThemeColors LightColors() {
  return {.window = QColor(0xF3F5F7),
          .surface = QColor(0xFFFFFF),
          .field = QColor(0xFFFFFF),
          .border = QColor(0xD3D9E0),
          .text = QColor(0x17212B),
          .muted = QColor(0x5B6875),
          .accent = QColor(0x0B6E6E),
          .accent_hover = QColor(0x095858),
          .accent_text = QColor(0xFFFFFF),
          .accent_soft = QColor(0xDCEEED),
          .danger = QColor(0xB3261E),
          .warning = QColor(0x8A5300),
          .success = QColor(0x1B6E3C),
          .brand = QColor(0x12807C),
          .brand_deep = QColor(0x0A4A57),
          .brand_text = QColor(0xFFFFFF)};
}

ThemeColors DarkColors() {
  return {.window = QColor(0x14191F),
          .surface = QColor(0x1D242C),
          .field = QColor(0x161C23),
          .border = QColor(0x36414D),
          .text = QColor(0xE7ECF1),
          .muted = QColor(0x9FACB9),
          .accent = QColor(0x4FC3BD),
          .accent_hover = QColor(0x74D4CF),
          .accent_text = QColor(0x08211F),
          .accent_soft = QColor(0x1F3B3C),
          .danger = QColor(0xFF8A80),
          .warning = QColor(0xF0B65A),
          .success = QColor(0x6FCF97),
          .brand = QColor(0x1C5557),
          .brand_deep = QColor(0x15303B),
          .brand_text = QColor(0xE7F3F2)};
}

}  // namespace

Theme::Theme(const QPalette& system)
    : dark_(system.color(QPalette::Window).lightness() < kMiddleLightness),
      colors_(dark_ ? DarkColors() : LightColors()) {}

QPalette Theme::Palette() const {
  QPalette palette;
  const auto set = [&palette](QPalette::ColorRole role, const QColor& color) {
    palette.setColor(role, color);
  };
  set(QPalette::Window, colors_.window);
  set(QPalette::Base, colors_.field);
  set(QPalette::AlternateBase, colors_.window);
  set(QPalette::Button, colors_.surface);
  set(QPalette::Mid, colors_.border);
  set(QPalette::ToolTipBase, colors_.surface);
  set(QPalette::WindowText, colors_.text);
  set(QPalette::Text, colors_.text);
  set(QPalette::ButtonText, colors_.text);
  set(QPalette::ToolTipText, colors_.text);
  set(QPalette::PlaceholderText, colors_.muted);
  set(QPalette::Highlight, colors_.accent);
  set(QPalette::HighlightedText, colors_.accent_text);
  set(QPalette::Link, colors_.accent);
  set(QPalette::LinkVisited, colors_.accent);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    QColor faint = colors_.muted;
    faint.setAlphaF(0.65F);
    palette.setColor(QPalette::Disabled, role, faint);
  }
  return palette;
}

QString Theme::StyleSheet() const {
  QString sheet = QString::fromStdString(
      platform::ResourceContainer::BuiltIn().Read("style/orvalo.qss").value_or(std::string()));
  sheet.replace(QLatin1String("@shade"), QLatin1String(dark_ ? "dark" : "light"));
  // Longer names first: "@accent" is the beginning of others.
  const std::array<std::pair<const char*, QColor>, 16> values{
      {{"@accent_hover", colors_.accent_hover},
       {"@accent_text", colors_.accent_text},
       {"@accent_soft", colors_.accent_soft},
       {"@accent", colors_.accent},
       {"@brand_deep", colors_.brand_deep},
       {"@brand_text", colors_.brand_text},
       {"@brand", colors_.brand},
       {"@window", colors_.window},
       {"@surface", colors_.surface},
       {"@field", colors_.field},
       {"@border", colors_.border},
       {"@text", colors_.text},
       {"@muted", colors_.muted},
       {"@danger", colors_.danger},
       {"@warning", colors_.warning},
       {"@success", colors_.success}}};
  for (const auto& [name, color] : values) sheet.replace(QLatin1String(name), color.name());
  return sheet;
}

void ApplyTheme(const Theme& theme) {
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  QApplication::setPalette(theme.Palette());
  qApp->setStyleSheet(theme.StyleSheet());
}

StyleHold::StyleHold() : sheet_(qApp->styleSheet()) { qApp->setStyleSheet(QString()); }

StyleHold::~StyleHold() { qApp->setStyleSheet(sheet_); }

}  // namespace orvalo::ui
