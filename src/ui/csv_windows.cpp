#include "ui/csv_windows.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <utility>
#include <vector>

#include "app/texts.h"
#include "ui/character_limit.h"
#include "ui/file_dialogs.h"
#include "ui/form_loader.h"
#include "ui/group_checks.h"
#include "ui/window_mailbox.h"

namespace orvalo::ui {

namespace {

constexpr int kImportForm = 153;
constexpr int kExportContactsForm = 154;
constexpr int kImportingId = 1445;
constexpr int kCancelId = 2016;
constexpr int kProgressSteps = 1000;
constexpr int kProgressWidth = 420;               // pixels
constexpr std::uint64_t kShortFile = 512u << 10;  // bytes; read before a progress would be seen

}  // namespace

// Holds back what is posted to mailboxes and hands it on afterwards. What a message sets off (a
// balance query, a box of the engine's) may wait for a server or for the operator, and the engine's
// writes would wait with the import for so long.
class ImportWindow::HeldMessages : public QObject {
 public:
  HeldMessages() { qApp->installEventFilter(this); }
  ~HeldMessages() override {
    for (const auto& [mailbox, type] : held_)
      if (mailbox != nullptr) QCoreApplication::postEvent(mailbox, new QEvent(type));
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() < QEvent::User || dynamic_cast<WindowMailbox*>(watched) == nullptr)
      return false;
    held_.emplace_back(watched, event->type());
    return true;
  }

 private:
  std::vector<std::pair<QPointer<QObject>, QEvent::Type>> held_;
};

ImportWindow::ImportWindow(const Kit& kit, CsvImportDialog& dialog, QWidget* parent)
    : QDialog(parent), kit_(kit), dialog_(dialog) {
  kit_.forms.LoadInto(*this, kImportForm);
  file_ = &Child<QLineEdit>(*this, "csvImportFile");
  ok_ = &Child<QPushButton>(*this, "csvImportOk");
  LimitTyped(*file_, CsvImportDialog::kPathWidth);
  WireChoices();
  connect(file_, &QLineEdit::textChanged, this, [this](const QString& path) {
    dialog_.EditPath(path.toStdString());
    ShowState();
  });
  connect(&Child<QPushButton>(*this, "csvImportBrowse"), &QPushButton::clicked, this,
          [this] { dialog_.Browse(*this); });
  connect(ok_, &QPushButton::clicked, this, [this] {
    if (importing_) return;  // assistive tools press it behind the progress too
    const QScopedValueRollback<bool> importing(importing_, true);
    if (dialog_.Ok(*this)) accept();
  });
  connect(&Child<QPushButton>(*this, "csvImportCancel"), &QPushButton::clicked, this,
          &QDialog::reject);
  ShowState();
  file_->setFocus();
}

ImportWindow::~ImportWindow() = default;

void ImportWindow::WireChoices() {
  auto& separators = Child<QComboBox>(*this, "csvImportSeparator");
  for (const auto& separator : dialog_.Separators()) separators.addItem(Qt8(separator.name));
  separators.setCurrentIndex(static_cast<int>(dialog_.ChosenSeparator()));
  connect(&separators, &QComboBox::currentIndexChanged, this,
          [this](int chosen) { dialog_.ChooseSeparator(static_cast<std::size_t>(chosen)); });
  connect(&Child<QCheckBox>(*this, "csvImportQuotes"), &QCheckBox::toggled, this,
          [this](bool on) { dialog_.EncloseFields(on); });
  connect(&Child<QCheckBox>(*this, "csvImportNoDuplicates"), &QCheckBox::toggled, this,
          [this](bool on) { dialog_.PreventDuplicates(on); });
  connect(&Child<QCheckBox>(*this, "csvImportAutoCreate"), &QCheckBox::toggled, this,
          [this](bool on) { dialog_.AutoCreate(on); });
  ShowGroupChoices(Child<QListWidget>(*this, "csvImportGroups"), dialog_.Groups(),
                   [this](std::size_t group, bool checked) {
                     dialog_.CheckGroup(group, checked);
                     ShowState();
                   });
}

void ImportWindow::ShowState() { ok_->setEnabled(dialog_.OkEnabled()); }

std::optional<std::string> ImportWindow::PickFileToOpen(const std::string& filter,
                                                        const std::string& default_pattern) {
  return kit_.files.PickFile(this, default_pattern, filter);
}

std::optional<std::string> ImportWindow::PickFileToSave(const std::string& default_name,
                                                        const std::string& filter,
                                                        const std::string& default_pattern) {
  return kit_.files.PickFileToSave(this, default_name, filter, default_pattern);
}

void ImportWindow::ShowPath(const std::string& path) { file_->setText(Qt8(path)); }

void ImportWindow::ShowEnclosesFields(bool enclose) {
  Child<QCheckBox>(*this, "csvImportQuotes").setChecked(enclose);
}

// The progress is modal: it runs the events that it needs and holds back keys and clicks elsewhere.
bool ImportWindow::ShowProgress(std::uint64_t done, std::uint64_t size) {
  if (size < kShortFile) return true;
  if (progress_ == nullptr) {
    held_messages_ = std::make_unique<HeldMessages>();
    progress_ = std::make_unique<QProgressDialog>(this);
    progress_->setObjectName(QStringLiteral("csvImportProgress"));
    progress_->setWindowTitle(Qt8(kit_.texts.Load(kImportingId)));
    progress_->setLabelText(
        progress_->fontMetrics().elidedText(file_->text(), Qt::ElideMiddle, kProgressWidth));
    progress_->setCancelButtonText(Qt8(kit_.texts.Load(kCancelId)));
    progress_->setWindowModality(Qt::ApplicationModal);
    progress_->setMinimumWidth(kProgressWidth);
    progress_->setMinimumDuration(0);
    progress_->setRange(0, kProgressSteps + 1);  // never reached: the end is EndProgress
    progress_->setValue(0);
  }
  progress_->setValue(static_cast<int>(done * kProgressSteps / size));
  return !progress_->wasCanceled();
}

void ImportWindow::EndProgress() {
  progress_.reset();
  held_messages_.reset();
}

ExportContactsWindow::ExportContactsWindow(const Kit& kit, CsvExportDialog& dialog, QWidget* parent)
    : QDialog(parent), kit_(kit), dialog_(dialog) {
  kit_.forms.LoadInto(*this, kExportContactsForm);
  file_ = &Child<QLineEdit>(*this, "csvExportFile");
  ok_ = &Child<QPushButton>(*this, "csvExportOk");
  groups_ = &Child<QListWidget>(*this, "csvExportGroups");
  associate_ = &Child<QCheckBox>(*this, "csvExportAssociate");
  auto& selection = Child<QRadioButton>(*this, "csvExportSelection");
  auto& by_group = Child<QRadioButton>(*this, "csvExportByGroup");
  LimitTyped(*file_, CsvExportDialog::kPathWidth);
  selection.setEnabled(dialog_.SelectionOffered());
  (dialog_.SelectionChosen() ? selection : by_group).setChecked(true);
  connect(&selection, &QRadioButton::toggled, this, [this](bool chosen) {
    dialog_.ChooseSelection(chosen);
    ShowState();
  });
  connect(&Child<QCheckBox>(*this, "csvExportAssociate"), &QCheckBox::toggled, this,
          [this](bool on) { dialog_.Associate(on); });
  ShowGroupChoices(Child<QListWidget>(*this, "csvExportGroups"), dialog_.Groups(),
                   [this](std::size_t group, bool checked) {
                     dialog_.CheckGroup(group, checked);
                     ShowState();
                   });
  connect(file_, &QLineEdit::textChanged, this, [this](const QString& path) {
    dialog_.EditPath(path.toStdString());
    ShowState();
  });
  connect(&Child<QPushButton>(*this, "csvExportBrowse"), &QPushButton::clicked, this,
          [this] { dialog_.Browse(*this); });
  connect(ok_, &QPushButton::clicked, this, [this] {
    dialog_.Ok();
    accept();
  });
  connect(&Child<QPushButton>(*this, "csvExportCancel"), &QPushButton::clicked, this,
          &QDialog::reject);
  ShowState();
  file_->setFocus();
}

std::optional<std::string> ExportContactsWindow::PickFileToSave(
    const std::string& default_name, const std::string& filter,
    const std::string& default_pattern) {
  return kit_.files.PickFileToSave(this, default_name, filter, default_pattern);
}

void ExportContactsWindow::ShowPath(const std::string& path) { file_->setText(Qt8(path)); }

void ExportContactsWindow::ShowState() {
  groups_->setEnabled(dialog_.GroupsEnabled());
  associate_->setEnabled(dialog_.GroupsEnabled());
  ok_->setEnabled(dialog_.OkEnabled());
}

}  // namespace orvalo::ui
