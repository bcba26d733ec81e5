#include "ui/options_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyle>
#include <QToolButton>
#include <utility>

#include "ui/character_limit.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/wheel_guard.h"

namespace orvalo::ui {

namespace {

constexpr int kOptionsDialogId = 134;
constexpr int kBalanceMenuId = 251;

// Loads the form before the members that look for its controls.
QWidget& WithOptionsForm(const Kit& kit, QWidget& window) {
  kit.forms.LoadInto(window, kOptionsDialogId);
  return window;
}

// Ticks one of two exclusive choices without telling anyone.
void ShowChoice(QRadioButton& first, QRadioButton& second, bool is_first) {
  const QSignalBlocker no_first(first), no_second(second);
  (is_first ? first : second).setChecked(true);
}

}  // namespace

OptionsWindow::OptionsWindow(const Kit& kit, QWidget* parent)
    : QWidget(parent),
      prefix_(Child<QLineEdit>(WithOptionsForm(kit, *this), "optionPrefix")),
      signature_(Child<QLineEdit>(*this, "optionSignature")),
      sender_(Child<QLineEdit>(*this, "optionSenderId")),
      profile_(Child<QLineEdit>(*this, "optionProfile")),
      profile_password_(Child<QLineEdit>(*this, "optionProfilePassword")),
      write_log_(Child<QCheckBox>(*this, "optionWriteLog")),
      acks_(Child<QCheckBox>(*this, "optionDeliveryAcks")),
      track_(Child<QCheckBox>(*this, "optionTrackFailed")),
      span_(Child<QCheckBox>(*this, "optionSpanSms")),
      minimised_(Child<QCheckBox>(*this, "optionStartMinimised")),
      online_(Child<QRadioButton>(*this, "optionOnline")),
      offline_(Child<QRadioButton>(*this, "optionOffline")),
      upload_(Child<QRadioButton>(*this, "optionUploadToServer")),
      keep_(Child<QRadioButton>(*this, "optionKeepLocal")),
      days_(Child<QComboBox>(*this, "optionUploadDays")),
      mapi_(Child<QRadioButton>(*this, "optionMapi")),
      wab_(Child<QRadioButton>(*this, "optionWab")),
      proxy_(*this),
      voucher_(*this, Child<QPushButton>(*this, "redeemVoucher")),
      balance_(Child<QToolButton>(*this, "optionBalance")),
      balance_menu_(kit.forms.LoadMenu(kBalanceMenuId, this)) {
  balance_.setIcon(kit.images.Icon("balance", IconTint::kMuted));
  balance_.setMenu(balance_menu_.get());
  GuardFromWheel(days_);
  LimitTexts();
  // The style decides how wide the groups are, before the page is first shown.
  for (QWidget* control : findChildren<QWidget*>()) control->ensurePolished();
}

OptionsWindow::~OptionsWindow() = default;

void OptionsWindow::LimitTexts() {
  LimitTyped(prefix_, OptionsPage::kPrefixLength);
  LimitTyped(signature_, OptionsPage::kSignatureLength);
  LimitTyped(sender_, OptionsPage::kSenderLength);
  LimitTyped(profile_, OptionsPage::kTextLength);
  LimitTyped(profile_password_, OptionsPage::kTextLength);
}

void OptionsWindow::Connect(OptionsPage& page, ProxyForm& proxy,
                            std::function<void()> update_balance) {
  proxy_.Connect(proxy);
  ConnectChoices(page);
  connect(&Child<QPushButton>(*this, "redeemVoucher"), &QPushButton::clicked, this,
          [&page] { page.RedeemVoucher(); });
  connect(&Child<QPushButton>(*this, "buyCredits"), &QPushButton::clicked, this,
          [&page] { page.BuyCredits(); });
  connect(&Child<QPushButton>(*this, "clearVoucher"), &QPushButton::clicked, this,
          [&page] { page.ClearVoucher(); });
  connect(balance_menu_.get(), &QMenu::triggered, this,
          [update = std::move(update_balance)] { update(); });
}

// Toggled, not clicked: assistive tools choose without a click.
void OptionsWindow::ConnectChoices(OptionsPage& page) {
  connect(&online_, &QRadioButton::toggled, this, [&page](bool online) {
    if (online) page.OnlineChosen();
  });
  connect(&offline_, &QRadioButton::toggled, this, [&page](bool offline) {
    if (offline) page.OfflineChosen();
  });
  connect(&mapi_, &QRadioButton::toggled, this, [&page](bool on) { page.DataSourceChosen(on); });
  connect(&upload_, &QRadioButton::toggled, this, [&page](bool on) { page.UploadChosen(on); });
}

void OptionsWindow::ListUploadDays(const std::vector<std::string>& days) {
  days_.clear();
  for (const std::string& day : days) days_.addItem(Qt8(day));
}

void OptionsWindow::ShowValues(const OptionsValues& values) {
  prefix_.setText(Qt8(values.prefix));
  signature_.setText(Qt8(values.signature));
  sender_.setText(Qt8(values.sender_id));
  profile_.setText(Qt8(values.outlook_name));
  profile_password_.setText(Qt8(values.outlook_password));
  write_log_.setChecked(values.write_log);
  acks_.setChecked(values.delivery_acks);
  track_.setChecked(values.track_failed);
  span_.setChecked(values.span_sms);
  minimised_.setChecked(values.start_minimised);
  ShowOnlineChoice(values.online);
  ShowChoice(mapi_, wab_, values.mapi);
  ShowChoice(upload_, keep_, values.schedule_to_server);
  days_.setCurrentIndex(values.upload_entry ? static_cast<int>(*values.upload_entry) : -1);
}

OptionsValues OptionsWindow::Values() const {
  OptionsValues values;
  values.prefix = prefix_.text().toStdString();
  values.signature = signature_.text().toStdString();
  values.sender_id = sender_.text().toStdString();
  values.outlook_name = profile_.text().toStdString();
  values.outlook_password = profile_password_.text().toStdString();
  values.write_log = write_log_.isChecked();
  values.delivery_acks = acks_.isChecked();
  values.track_failed = track_.isChecked();
  values.span_sms = span_.isChecked();
  values.start_minimised = minimised_.isChecked();
  values.online = online_.isChecked();
  values.mapi = mapi_.isChecked();
  values.schedule_to_server = upload_.isChecked();
  if (days_.currentIndex() >= 0)
    values.upload_entry = static_cast<std::size_t>(days_.currentIndex());
  return values;
}

void OptionsWindow::ShowOnlineChoice(bool online) { ShowChoice(online_, offline_, online); }

void OptionsWindow::EnableProfileFields(bool enabled) {
  profile_.setEnabled(enabled);
  profile_password_.setEnabled(enabled);
}

void OptionsWindow::EnableUploadDays(bool enabled) { days_.setEnabled(enabled); }

void OptionsWindow::ShowBalance(const std::string& line, const std::string& hint) {
  balance_.setText(Qt8(line));
  balance_.setToolTip(Qt8(hint));
}

void OptionsWindow::LightBalance(bool lit) {
  balance_.setProperty("lit", lit);
  balance_.style()->unpolish(&balance_);
  balance_.style()->polish(&balance_);
}

QSize OptionsWindow::minimumSizeHint() const {
  const auto& scroll = Child<QScrollArea>(*this, "optionsScroll");
  return {
      scroll.widget()->minimumSizeHint().width() + scroll.verticalScrollBar()->sizeHint().width(),
      QWidget::minimumSizeHint().height()};
}

void OptionsWindow::contextMenuEvent(QContextMenuEvent* event) {
  balance_menu_->popup(event->globalPos());
}

}  // namespace orvalo::ui
