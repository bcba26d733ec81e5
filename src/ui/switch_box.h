#pragma once
#include <QCheckBox>

namespace orvalo::ui {

// A tick box drawn as its text with a switch at the right edge. It is a QCheckBox in all but looks:
// dialogs that name it may be loaded where it is not known.
class SwitchBox : public QCheckBox {
 public:
  explicit SwitchBox(QWidget* parent = nullptr);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool hitButton(const QPoint& position) const override { return rect().contains(position); }

 private:
  QSize TrackSize() const;  // follows the size of the text
};

}  // namespace orvalo::ui
