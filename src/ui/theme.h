#pragma once
#include <QColor>
#include <QPalette>
#include <QString>

namespace orvalo::ui {

// The colours of the windows, light or dark as the system's palette is. One accent colour; the
// status colours always stand beside a shape or a word.
struct ThemeColors {
  QColor window, surface, field, border, text, muted;
  QColor accent, accent_hover, accent_text, accent_soft;
  QColor danger, warning, success;
  QColor brand, brand_deep, brand_text;  // the login page's panel: its gradient and its words
};

// How the windows look. Main thread.
class Theme {
 public:
  // Light or dark by the lightness of the palette's window colour.
  explicit Theme(const QPalette& system);

  bool IsDark() const { return dark_; }
  const ThemeColors& Colors() const { return colors_; }
  QPalette Palette() const;
  // The program's own style sheet, "style/orvalo.qss", its "@accent" and so on replaced;
  // "@shade" stands for "light" or "dark" in the names of pictures.
  QString StyleSheet() const;

 private:
  bool dark_;
  ThemeColors colors_;
};

// Gives the application style, palette and style sheet of `theme`.
void ApplyTheme(const Theme& theme);

// Holds the application's style sheet back while it lives: many windows are then made in a fraction
// of the time, and styled together at its end.
class StyleHold {
 public:
  StyleHold();
  ~StyleHold();
  StyleHold(const StyleHold&) = delete;
  StyleHold& operator=(const StyleHold&) = delete;

 private:
  const QString sheet_;
};

}  // namespace orvalo::ui
