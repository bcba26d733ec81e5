#include "ui/shutdown_window.h"

#include <QCloseEvent>
#include <QLabel>
#include <QStyle>

#include "app/texts.h"
#include "ui/form_loader.h"
#include "ui/images.h"

namespace orvalo::ui {

namespace {

constexpr int kShutdownForm = 238;
constexpr int kStepIconSize = 20;

// How a step stands, and how that is said to those who do not see it.
struct StepLook {
  const char* icon;
  IconTint tint;
  const char* role;
  int spoken_id;
};
constexpr StepLook kDone{"step-done", IconTint::kAccent, "", 2152};
constexpr StepLook kCurrent{"step-current", IconTint::kAccent, "heading", 2153};
constexpr StepLook kWaiting{"step-waiting", IconTint::kMuted, "muted", 2154};

}  // namespace

ShutdownWindow::ShutdownWindow(const Kit& kit)
    : QWidget(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), kit_(kit) {
  kit_.forms.LoadInto(*this, kShutdownForm);
  Mark(kSending);
}

void ShutdownWindow::Mark(int row) {
  for (int i = 0; i < kRows; ++i) {
    const StepLook& look = i < row ? kDone : i == row ? kCurrent : kWaiting;
    auto& icon = Child<QLabel>(*this, ("shutdownIcon" + std::to_string(i)).c_str());
    icon.setPixmap(kit_.images.Pixmap(look.icon, {kStepIconSize, kStepIconSize},
                                      devicePixelRatioF(), look.tint));
    auto& text = Child<QLabel>(*this, ("shutdownRow" + std::to_string(i)).c_str());
    text.setEnabled(i <= row);
    text.setProperty("role", QString::fromLatin1(look.role));
    text.setAccessibleName(
        QStringLiteral("%1: %2").arg(text.text(), Qt8(kit_.texts.Load(look.spoken_id))));
    text.style()->unpolish(&text);
    text.style()->polish(&text);
  }
}

void ShutdownWindow::closeEvent(QCloseEvent* event) { event->ignore(); }

}  // namespace orvalo::ui
