#pragma once
#include <QHeaderView>

namespace orvalo::ui {

// The outbox's column headers, for the keyboard as well: they take the focus, the arrows go from
// one to the next, Space and Enter click. Main thread.
class OutboxHeader : public QHeaderView {
 public:
  explicit OutboxHeader(QWidget* parent);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void paintSection(QPainter* painter, const QRect& rect, int section) const override;

 private:
  void MoveTo(int section);

  int focused_ = 0;
};

}  // namespace orvalo::ui
