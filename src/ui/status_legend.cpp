#include "ui/status_legend.h"

#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <algorithm>

#include "app/texts.h"
#include "store/sms_status.h"
#include "ui/form_loader.h"
#include "ui/images.h"

namespace orvalo::ui {

namespace {

constexpr int kLegendDialog = 138;
constexpr int kIconColumn = 20;  // pixels
constexpr int kDescriptionColumn = 900;
constexpr int kLegendLineSpace = 8;
constexpr int kLegendTextSpace = 24;  // beside the longest description

}  // namespace

StatusLegend::StatusLegend(const Kit& kit, const std::vector<std::string>& descriptions,
                           QWidget* parent)
    : QDialog(parent) {
  kit.forms.LoadInto(*this, kLegendDialog);
  auto& list = Child<QTableWidget>(*this, "legendList");
  list.horizontalHeader()->hide();
  list.horizontalHeader()->setMinimumSectionSize(kIconColumn);
  list.verticalHeader()->hide();
  list.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  const QFontMetrics metrics(list.font());
  list.verticalHeader()->setDefaultSectionSize(
      std::max(metrics.height(), list.iconSize().height()) + kLegendLineSpace);
  list.setColumnWidth(0, kIconColumn);
  list.setRowCount(static_cast<int>(descriptions.size()));
  int longest = 0;
  for (int status = 0; status < list.rowCount(); ++status) {
    auto* icon = new QTableWidgetItem(kit.images.Icon(StatusIconName(status)), QString());
    const QString name = Qt8(kit.texts.Load(kFirstStatusNameId + status));
    icon->setToolTip(name);
    icon->setData(Qt::AccessibleTextRole, name);
    list.setItem(status, 0, icon);
    const QString text = Qt8(descriptions[static_cast<std::size_t>(status)]);
    longest = std::max(longest, metrics.horizontalAdvance(text));
    list.setItem(status, 1, new QTableWidgetItem(text));
  }
  // The list shows the whole of its longest line, and all of its lines where the screen has room.
  list.setColumnWidth(1, std::max(kDescriptionColumn, longest + kLegendTextSpace));
  list.setMinimumWidth(kIconColumn + longest + kLegendTextSpace);
  list.setMinimumHeight(list.verticalHeader()->length() + 2 * list.frameWidth() + 4);
  list.setCurrentCell(0, 0);
  // A click on a description must not bring its whole column into view.
  QScrollBar* across = list.horizontalScrollBar();
  connect(across, &QScrollBar::valueChanged, across, [across] { across->setValue(0); });
  connect(&Child<QPushButton>(*this, "legendClose"), &QPushButton::clicked, this, &QDialog::accept);
}

}  // namespace orvalo::ui
