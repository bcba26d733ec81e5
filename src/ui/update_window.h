#pragma once
#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "net/update_check.h"
#include "ui/kit.h"

namespace orvalo::ui {

// The modeless window "Checking for updates ..." (dialog 142), there while a check runs. Owned by
// Desktop; main thread.
class UpdateWindow : public UpdateView {
 public:
  // `pause` lets the windows live on for so many milliseconds; an empty one is over at once.
  UpdateWindow(const Kit& kit, QWidget& owner, std::function<void(int)> pause);
  ~UpdateWindow() override;

  // What "Cancel", and closing the window, do.
  void SetCancelled(std::function<void()> cancelled) { cancelled_ = std::move(cancelled); }

  // --- UpdateView; Open throws FormError.
  void Open() override;
  void MarkStep(Step step) override;
  void ShowProgress(const std::string& text) override;
  void EnableCancel(bool enabled) override;
  void Hide() override;
  void Close() override;
  void RunMessages(std::int64_t milliseconds) override;

 private:
  class Form;

  const Kit& kit_;
  QWidget& owner_;
  const std::function<void(int)> pause_;
  std::function<void()> cancelled_;
  std::unique_ptr<Form> form_;  // while the window is open
};

}  // namespace orvalo::ui
