#pragma once
#include <QObject>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "messages/recipient_view.h"
#include "ui/kit.h"
#include "ui/number_input.h"

QT_BEGIN_NAMESPACE
class QLabel;
class QLineEdit;
class QMenu;
class QModelIndex;
class QPushButton;
class QTreeView;
QT_END_NAMESPACE

namespace orvalo {
class RecipientSelection;
namespace platform {
class Clock;
}
}  // namespace orvalo

namespace orvalo::ui {

class RecipientModel;
class WaitWindow;

// The recipient inputs of the compose page: the typed numbers, the recipient tree, the quick search
// and the counter, over the controls of the page's form. Owned by ComposeWindow; main thread.
class RecipientInputs : public QObject, public RecipientView {
 public:
  // Runs what may meet a store that refuses; false when it did.
  using Guard = std::function<bool(const std::function<void()>& work)>;

  // Throws FormError when the form lacks a control, or the container the tree's menu.
  RecipientInputs(const Kit& kit, QWidget& form, platform::Clock& clock, Guard guard);
  ~RecipientInputs() override;

  // The logic behind the inputs, once; the window goes before it.
  void Connect(RecipientSelection& selection);

  NumberInput& Numbers() { return numbers_; }
  const NumberInput& Numbers() const { return numbers_; }

  // --- RecipientView
  void ChildrenChanging(const RecipientNode& node, std::size_t count) override;
  void ChildrenChanged(const RecipientNode& node) override;
  void Collapse(const RecipientNode& node) override;
  void Reveal(const RecipientNode& node) override;
  void TicksChanged() override;
  void ShowWait(bool shown) override;
  void NumbersChanged() override { numbers_.ShowRows(); }
  void BringNumberIntoView(std::size_t row) override { numbers_.BringIntoView(row); }
  void EditNumber(std::size_t row, const std::optional<std::string>& text) override {
    numbers_.Edit(row, text);
  }
  void Beep() override;
  void EnableSearch(bool enabled) override;
  void ShowRecipientCount(std::size_t count) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void WireTree();
  void WireSearch();
  void Expanded(const QModelIndex& index);
  void OpenTreeMenu(QPoint place, bool by_keyboard);
  void Search();

  const Kit& kit_;
  platform::Clock& clock_;
  const Guard guard_;
  QTreeView& tree_;
  QLineEdit& search_;
  QPushButton& search_button_;
  QLabel& count_;
  NumberInput numbers_;
  std::unique_ptr<QMenu> tree_menu_;
  RecipientSelection* selection_ = nullptr;
  std::unique_ptr<RecipientModel> model_;
  std::unique_ptr<WaitWindow> wait_;
};

}  // namespace orvalo::ui
