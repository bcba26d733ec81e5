#pragma once
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "messages/outbox_page.h"
#include "ui/kit.h"
#include "ui/outbox_model.h"

QT_BEGIN_NAMESPACE
class QItemSelection;
class QLabel;
class QMenu;
class QTableView;
QT_END_NAMESPACE

namespace orvalo::ui {

// The "Outbox" page (dialog 133): the list of messages and the buttons above it. What it does
// stands in OutboxPage. Owned by OutboxArea; main thread.
class OutboxWindowPage : public QWidget, public OutboxWindow {
 public:
  // What lies outside the page.
  struct Links {
    std::function<void(const std::string&)> set_tab_caption;
    std::function<bool()> is_on_show;
    std::function<void(std::vector<std::int32_t>)> open_export;
    std::function<void()> open_help;
  };

  OutboxWindowPage(const Kit& kit, Links links);  // throws FormError
  ~OutboxWindowPage() override;

  // The logic behind the window; set once, before anything is shown.
  void SetPage(OutboxPage* page);

  // --- OutboxWindow
  bool IsOnShow() const override { return links_.is_on_show(); }
  void SetRowCount(std::size_t rows) override;
  void SetUnreadable(bool unreadable) override;
  void Redraw() override;
  void ShowSelection() override;
  void ScrollToTop() override;
  void SetTabCaption(const std::string& caption) override { links_.set_tab_caption(caption); }
  void SetStatusLine(const std::string& text) override;
  void OpenExport(std::vector<std::int32_t> selected) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  // More runs of selected lines than this are not shown one by one: each costs time in every
  // drawing of the list.
  static constexpr std::size_t kMostRuns = 10'000;

  void WireButtons();
  void WireList();
  void MakeEmptyNotice();
  void DrawEmptyPicture();
  void MakeMenu();
  void SizeColumns();
  void TakeSelection(const QItemSelection& selected, const QItemSelection& deselected);
  void OpenMenuByMouse(const QPoint& global);
  void OpenMenuByKey();
  void ShowMenu(std::int64_t position, const QPoint& global);

  const Kit& kit_;
  const Links links_;
  OutboxPage* page_ = nullptr;
  OutboxModel model_;
  QTableView* list_ = nullptr;
  QLabel* status_ = nullptr;
  QWidget* empty_ = nullptr;  // stands in the list while there is no message
  QLabel* empty_picture_ = nullptr;
  QLabel* empty_title_ = nullptr;
  QLabel* empty_text_ = nullptr;
  bool unreadable_ = false;
  std::unique_ptr<QMenu> menu_;
  bool showing_selection_ = false;
};

}  // namespace orvalo::ui
