#include "ui/update_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <utility>

#include "ui/form_loader.h"
#include "ui/step_rows.h"

namespace orvalo::ui {

namespace {

constexpr int kUpdateForm = 142;

}  // namespace

class UpdateWindow::Form : public QWidget {
 public:
  Form(const Kit& kit, QWidget& owner, std::function<void()> cancel)
      : QWidget(&owner, Qt::Dialog), cancel_(std::move(cancel)) {
    kit.forms.LoadInto(*this, kUpdateForm);
    button_ = &Child<QPushButton>(*this, "updateCancel");
    progress_ = &Child<QLabel>(*this, "updateProgress");
    connect(button_, &QPushButton::clicked, this, [this] { cancel_(); });
    MarkSteps(kit, *this, "update", kSteps, -1);
  }

  QPushButton& button() { return *button_; }
  QLabel& progress() { return *progress_; }

 protected:
  // The check closes the window when it has come to its end.
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    if (button_->isEnabled()) cancel_();
  }

 private:
  const std::function<void()> cancel_;
  QPushButton* button_;
  QLabel* progress_;
};

UpdateWindow::UpdateWindow(const Kit& kit, QWidget& owner, std::function<void(int)> pause)
    : kit_(kit), owner_(owner), pause_(std::move(pause)) {}

UpdateWindow::~UpdateWindow() = default;

void UpdateWindow::Open() {
  form_ = std::make_unique<Form>(kit_, owner_, [this] {
    if (cancelled_) cancelled_();
  });
  form_->show();
}

void UpdateWindow::MarkStep(Step step) {
  MarkSteps(kit_, *form_, "update", kSteps, step - kContacting);
}

void UpdateWindow::ShowProgress(const std::string& text) { form_->progress().setText(Qt8(text)); }

void UpdateWindow::EnableCancel(bool enabled) { form_->button().setEnabled(enabled); }

void UpdateWindow::Hide() { form_->hide(); }

void UpdateWindow::Close() { form_.reset(); }

void UpdateWindow::RunMessages(std::int64_t milliseconds) {
  QCoreApplication::processEvents();
  if (milliseconds > 0 && pause_) pause_(static_cast<int>(milliseconds));
}

}  // namespace orvalo::ui
