#include "shell/login_page.h"

#include "app/file_texts.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/account.h"
#include "net/version_info.h"
#include "platform/code_page.h"
#include "platform/shell.h"

namespace orvalo {

namespace {

constexpr int kPasswordSentTextId = 1056;
constexpr int kPasswordNotSentTextId = 1057;
constexpr int kUnknownLoginTextId = 1058;

// Holds more than spaces.
bool IsFilled(std::string_view text) {
  return text.find_first_not_of(' ') != std::string_view::npos;
}

std::string Limited(std::string_view text, std::size_t length) {
  return std::string(platform::FirstCharacters(text, length));
}

}  // namespace

void RecoveryDialog::SetView(RecoveryView* view) {
  view_ = view;
  view_->EnableOk(OkEnabled());
}

void RecoveryDialog::UserTyped(std::string_view text) {
  user_ = Limited(text, kUserLength);
  view_->EnableOk(OkEnabled());
}

void RecoveryDialog::EmailTyped(std::string_view text) {
  email_ = Limited(text, kEmailLength);
  view_->EnableOk(OkEnabled());
}

void RecoveryDialog::Ok() {
  if (!OkEnabled()) return;
  sent_ = account_.RecoverPassword(user_, email_, &why_not_sent_);
  view_->Close();
}

bool RecoveryDialog::OkEnabled() const { return IsFilled(user_) && IsFilled(email_); }

void LoginPage::SetUp() {
  const AppSettings& settings = parts_.settings;
  values_ = {};
  if (settings.Flag(FlagSetting::kRememberPassword)) {
    values_.remember = true;
    values_.user = Limited(settings.Text(TextSetting::kLogin), kFieldLength);
    values_.password = Limited(settings.Text(TextSetting::kPassword), kFieldLength);
    values_.offline = !values_.user.empty() && !values_.password.empty() &&
                      !settings.Flag(FlagSetting::kWorkingOnLine);
  }
  parts_.view.ShowValues(values_);
  ShowOk();
}

void LoginPage::UserTyped(std::string_view text) {
  values_.user = Limited(text, kFieldLength);
  ShowOk();
}

void LoginPage::PasswordTyped(std::string_view text) {
  values_.password = Limited(text, kFieldLength);
  ShowOk();
}

void LoginPage::ToggleRemember() {
  values_.remember = !values_.remember;
  parts_.view.ShowTicks(values_.remember, values_.offline);
}

void LoginPage::ToggleOffline() {
  values_.offline = !values_.offline;
  parts_.view.ShowTicks(values_.remember, values_.offline);
}

void LoginPage::EnterInUser() {
  if (!values_.user.empty()) parts_.view.FocusPassword();
}

void LoginPage::EnterInPassword() {
  if (!values_.password.empty()) Ok();
}

void LoginPage::Ok() {
  AppSettings& settings = parts_.settings;
  settings.SetFlag(FlagSetting::kRememberPassword, values_.remember);
  settings.SetFlag(FlagSetting::kWorkingOnLine, false);
  if (!IsAccepted()) {
    parts_.view.ShowMessage(values_.offline ? parts_.texts.Load(kUnknownLoginTextId)
                                            : parts_.account.LoginFailure());
    return;
  }
  settings.SetFlag(FlagSetting::kWorkingOnLine, !values_.offline);
  parts_.view.ShowMessage(std::string());
  settings.SetText(TextSetting::kLogin, values_.user);
  settings.SetText(TextSetting::kPassword, values_.password);
  if (!settings.SaveLoginValues(parts_.data_file))
    TellSettingsNotSaved(parts_.data_file, false, parts_.texts, parts_.boxes);
  parts_.logged_in();
}

bool LoginPage::IsAccepted() {
  if (!values_.offline) return parts_.account.LoginToGateway(values_.user, values_.password);
  return values_.user == parts_.settings.Text(TextSetting::kLogin) &&
         values_.password == parts_.settings.Text(TextSetting::kPassword);
}

void LoginPage::ForgotPassword() {
  if (!IsOwnInstallation(parts_.settings)) {
    parts_.shell.OpenAddress(parts_.settings.Text(TextSetting::kHelpUrl));
    return;
  }
  RecoveryDialog dialog(parts_.account);
  parts_.view.OpenRecovery(dialog);
  if (!dialog.Sent()) return;
  parts_.view.ShowMessage(*dialog.Sent() ? parts_.texts.Load(kPasswordSentTextId)
                                         : parts_.texts.Load(kPasswordNotSentTextId) + "  " +
                                               dialog.WhyNotSent());
}

void LoginPage::ShowOk() {
  parts_.view.EnableOk(IsFilled(values_.user) && IsFilled(values_.password));
}

}  // namespace orvalo
