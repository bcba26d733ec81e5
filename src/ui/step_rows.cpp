#include "ui/step_rows.h"

#include <QLabel>
#include <QStyle>

#include "app/texts.h"
#include "ui/form_loader.h"
#include "ui/images.h"

namespace orvalo::ui {

namespace {

constexpr int kStepIconSize = 20;

// How a step stands, and how that is said.
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

void MarkSteps(const Kit& kit, QWidget& form, const std::string& name, int count, int current) {
  for (int i = 0; i < count; ++i) {
    const StepLook& look = i < current ? kDone : i == current ? kCurrent : kWaiting;
    auto& icon = Child<QLabel>(form, (name + "Icon" + std::to_string(i)).c_str());
    icon.setPixmap(kit.images.Pixmap(look.icon, {kStepIconSize, kStepIconSize},
                                     form.devicePixelRatioF(), look.tint));
    auto& text = Child<QLabel>(form, (name + "Row" + std::to_string(i)).c_str());
    text.setEnabled(i <= current);
    text.setProperty("role", QString::fromLatin1(look.role));
    text.setAccessibleName(
        QStringLiteral("%1: %2").arg(text.text(), Qt8(kit.texts.Load(look.spoken_id))));
    text.style()->unpolish(&text);
    text.style()->polish(&text);
  }
}

}  // namespace orvalo::ui
