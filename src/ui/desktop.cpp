#include "ui/desktop.h"

#include <QImage>

#include "app/startup/program.h"
#include "net/version_info.h"
#include "platform/new_file.h"
#include "shell/shell_messages.h"
#include "ui/guarded.h"
#include "ui/version_dialog.h"

namespace orvalo::ui {

namespace {

constexpr int kProductNameId = 1024;
constexpr int kStoreRefusedTextId = 2193;
constexpr int kSendingWaitsTextId = 2360;
constexpr int kStatusQueryFailedId = 1412;

QImage Banner(const std::string& data_folder) {
  const auto picture = ReadBanner(data_folder);
  return picture ? QImage::fromData(QByteArray::fromStdString(*picture), "PNG") : QImage();
}

}  // namespace

Desktop::Desktop(Program& program, const Surroundings& around)
    : program_(program),
      around_(around),
      forms_(program.GetResources()),
      images_(program.GetResources()),
      kit_{forms_, images_, program.GetTexts(), around.files},
      window_(kit_, [this] { return Banner(program_.DataFolder()); }),
      balances_(program.GetAccount(), [this] { ShowBalances(); }),
      login_(program, kit_, around.shell, [this] { shell_.LoggedIn(); }),
      outbox_(
          program, kit_, around.clipboard, mailbox_,
          [this](const std::string& caption) { window_.SetTabCaption(ShellTab::kOutbox, caption); },
          [this] { return shell_.Page() == ShellPage::kOutbox; }),
      compose_(program, kit_, outbox_.Page(), program.GetExternalAddressBook()),
      contacts_(program, kit_, mailbox_, compose_.Recipients()),
      options_(program, kit_, around.shell, mailbox_, balances_),
      banner_({program.GetSettings(),
               program.GetTexts(),
               program.GetMessageBoxes(),
               mailbox_,
               program.DataFolder(),
               {}}),
      update_window_(kit_, window_, around.pause),
      update_({program.GetSettings(),
               program.GetTexts(),
               program.GetMessageBoxes(),
               update_window_,
               program.DataFolder(),
               platform::StartProgram,
               [this] { shell_.End(); },
               {}}),
      shell_({program.GetSettings(), program.GetTexts(), program.GetClock(),
              program.GetMessageBoxes(), mailbox_, balance_mailbox_, *this, window_}) {
  outbox_.Page().SetMessageLoader(&compose_.Page());
  mailbox_.SetHandler([this](auto... message) { Handle(message...); });
  balance_mailbox_.SetHandler([this](std::uint32_t message, auto...) {
    if (message == kWmQueryBalance) RefreshBalance();
  });
  window_.SetShell(&shell_);
  window_.SetPageShown([this](ShellPage page) { PageShown(page); });
  window_.SetClosed([this] {
    update_.Stop();
    late_dialogs_.emplace();
    loop_.quit();
  });
  update_window_.SetCancelled([this] { update_.Cancel(); });
  window_.SetBalanceLight([this](bool lit) {
    compose_.Window().LightBalance(lit);
    options_.Window().LightBalance(lit);
  });
  window_.AddPage(ShellPage::kLogin, login_.Window());
  window_.AddPage(ShellPage::kCompose, compose_.Window());
  window_.AddPage(ShellPage::kContacts, contacts_.Window());
  window_.AddPage(ShellPage::kOutbox, outbox_.Window());
  window_.AddPage(ShellPage::kOptions, options_.Window());
  style_hold_.reset();
  window_.FixSize();
  program_.GetNotices().SetMainWindow(&mailbox_);
}

Desktop::~Desktop() { program_.GetNotices().SetMainWindow(nullptr); }

void Desktop::Open() {
  shell_.SetUp();
  window_.ShowAtStart(program_.GetSettings().Flag(FlagSetting::kStartMinimized));
}

void Desktop::Run() {
  if (around_.set_end_handler) around_.set_end_handler([this] { shell_.End(); });
  loop_.exec();
  late_dialogs_.reset();
  if (around_.set_end_handler) around_.set_end_handler({});
}

void Desktop::Handle(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) {
  shell_.Handle(message, wparam, lparam);
  if (message == kWmLoggedIn) banner_.Start();
  if (message == kWmStoreRefused) ShowStoreProblem();
  if (message == kWmQueryFailed) ShowQueryProblem();
  if (message == kWmSendingWaits) ShowWaiting();
}

void Desktop::ShowStoreProblem() {
  const std::string problem = program_.GetNotices().TakeStoreProblem();
  if (problem.empty()) return;
  program_.GetMessageBoxes().Show(
      program_.GetTexts().Format(kStoreRefusedTextId, {problem}).value_or(problem),
      program_.GetTexts().Load(kProductNameId), platform::BoxIcon::kStop);
}

void Desktop::ShowWaiting() {
  const std::string reason = program_.GetNotices().TakeWaitingReason();
  if (reason.empty()) return;
  program_.GetMessageBoxes().Show(
      program_.GetTexts().Format(kSendingWaitsTextId, {reason}).value_or(reason),
      program_.GetTexts().Load(kProductNameId), platform::BoxIcon::kWarning);
}

void Desktop::ShowQueryProblem() {
  const std::string problem = program_.GetNotices().TakeQueryProblem();
  if (problem.empty()) return;
  program_.GetMessageBoxes().Show(problem, program_.GetTexts().Load(kStatusQueryFailedId),
                                  platform::BoxIcon::kStop);
}

void Desktop::StartEngine() { program_.GetEngine().StartEngine(); }

void Desktop::CommitStore() { program_.GetDatabase().Commit(); }

void Desktop::ShowVersionInfo() {
  VersionDialog(kit_,
                VersionLines(program_.GetSettings(), program_.GetTexts(), program_.GetGateway()),
                &window_)
      .exec();
}

void Desktop::CheckForUpdates() { update_.CheckForUpdates(); }

void Desktop::OpenProxySettings() { options_.OpenProxySettings(&window_); }

void Desktop::RunComposeCommand(ShellCommand command) { compose_.Window().Run(command); }

void Desktop::ApplyOptions() { options_.Page().Apply(); }

void Desktop::ShowWorkingMode() {
  options_.Page().ShowWorkingMode(program_.GetSettings().Flag(FlagSetting::kWorkingOnLine));
  ShowBalances();
}

void Desktop::SetOutboxActivity(const std::string& text) { outbox_.Page().SetActivity(text); }

void Desktop::PageShown(ShellPage page) {
  Guarded(program_.GetMessageBoxes(), program_.GetTexts(), [this, page] {
    if (page == ShellPage::kCompose) compose_.PageShown();
    if (page == ShellPage::kContacts) contacts_.PageShown();
    if (page == ShellPage::kOutbox) outbox_.Page().BroughtToFront();
  });
}

void Desktop::RefreshBalance() {
  Guarded(program_.GetMessageBoxes(), program_.GetTexts(),
          [this] { compose_.Page().RefreshBalance(); });
  options_.Page().ShowBalance();
}

void Desktop::ShowBalances() {
  compose_.Page().ShowBalance();
  options_.Page().ShowBalance();
}

}  // namespace orvalo::ui
