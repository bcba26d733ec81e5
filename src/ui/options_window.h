#pragma once
#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "shell/options_page.h"
#include "ui/kit.h"
#include "ui/proxy_controls.h"
#include "ui/voucher_fields.h"

QT_BEGIN_NAMESPACE
class QCheckBox;
class QComboBox;
class QLineEdit;
class QMenu;
class QRadioButton;
class QToolButton;
QT_END_NAMESPACE

namespace orvalo::ui {

// The options page (dialog 134). Main thread; made by OptionsArea.
class OptionsWindow : public QWidget, public OptionsView {
 public:
  // Throws FormError.
  explicit OptionsWindow(const Kit& kit, QWidget* parent = nullptr);
  ~OptionsWindow() override;

  // The logic that this is the window of; alive as long as the window. `update_balance` asks for
  // a refresh of the balance.
  void Connect(OptionsPage& page, ProxyForm& proxy, std::function<void()> update_balance);

  // As wide as the groups need, so that they only ever scroll up and down.
  QSize minimumSizeHint() const override;

  ProxyControls& Proxy() { return proxy_; }
  // The half of the balance line's blinking.
  void LightBalance(bool lit);

  void ListUploadDays(const std::vector<std::string>& days) override;
  void ShowValues(const OptionsValues& values) override;
  OptionsValues Values() const override;
  void ShowOnlineChoice(bool online) override;
  void EnableProfileFields(bool enabled) override;
  void EnableUploadDays(bool enabled) override;
  void ShowVoucher(const VoucherTexts& fields) override { voucher_.Show(fields); }
  VoucherTexts Voucher() const override { return voucher_.Texts(); }
  void ShowBalance(const std::string& line, const std::string& hint) override;

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void LimitTexts();
  void ConnectChoices(OptionsPage& page);

  // Texts and ticks.
  QLineEdit& prefix_;
  QLineEdit& signature_;
  QLineEdit& sender_;
  QLineEdit& profile_;
  QLineEdit& profile_password_;
  QCheckBox& write_log_;
  QCheckBox& acks_;
  QCheckBox& track_;
  QCheckBox& span_;
  QCheckBox& minimised_;
  // Choices.
  QRadioButton& online_;
  QRadioButton& offline_;
  QRadioButton& upload_;
  QRadioButton& keep_;
  QComboBox& days_;
  QRadioButton& mapi_;
  QRadioButton& wab_;
  // Groups with rules of their own.
  ProxyControls proxy_;
  VoucherFields voucher_;
  QToolButton& balance_;
  std::unique_ptr<QMenu> balance_menu_;
};

}  // namespace orvalo::ui
