#pragma once
#include <QDialog>
#include <string>
#include <vector>

#include "ui/kit.h"

namespace orvalo::ui {

// "Help" of the outbox (dialog 138): every status with its icon and what it means. Main thread.
class StatusLegend : public QDialog {
 public:
  // `descriptions` are in status order. Throws FormError.
  StatusLegend(const Kit& kit, const std::vector<std::string>& descriptions, QWidget* parent);
};

}  // namespace orvalo::ui
