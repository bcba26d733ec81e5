#pragma once
#include <QDialog>
#include <array>
#include <string>

#include "ui/kit.h"

namespace orvalo::ui {

// The "Version information" window (dialog 139). Main thread.
class VersionDialog : public QDialog {
 public:
  // The program's name, its version, the gateway component's: see VersionLines. Throws FormError.
  VersionDialog(const Kit& kit, const std::array<std::string, 3>& lines, QWidget* parent);
};

}  // namespace orvalo::ui
