#include "app/startup/program.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include "app/file_texts.h"
#include "app/startup/data_folder.h"
#include "net/link_message.h"
#include "net/proxy_settings.h"
#include "platform/code_page.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr std::size_t kShortestFolder = 2;
constexpr int kFailedToStartId = 1360;
constexpr int kSettingsCaptionId = 2172;

// Before any text could be loaded from a container, and for the message that must work when nothing
// else does.
constexpr char kNoFolderText[] =
    "Can't find data file.\nThe application is not installed correctly.  Please reinstall!";
constexpr char kNoFolderCaption[] = "Critical error...";
constexpr char kUnexpectedText[] =
    "An unexpected error has terminated the application. Please contact support via the URL below.";
constexpr char kUnexpectedCaption[] = "Unexpected error ...";

}  // namespace

Program::Program(platform::MessageBoxes& boxes, platform::Clock& clock,
                 const platform::ClassRegistry& registry)
    : boxes_(boxes), clock_(clock), registry_(registry) {}

Program::~Program() { Close(); }

Program::Result Program::Run(const Options& options, const Launcher& launcher) {
  Result result;
  look_only_ = options.look_only;
  std::string problem;
  data_folder_ =
      options.data_folder.empty() ? ConfiguredFolder(texts_, &problem) : options.data_folder;
  if (!problem.empty()) {
    Refuse(problem);
    return {End::kNoDataFolder, 0, problem};
  }
  if (data_folder_.size() < kShortestFolder) {
    boxes_.Show(kNoFolderText, kNoFolderCaption, platform::BoxIcon::kStop);
    result.end = End::kNoDataFolder;
    return result;
  }
  std::error_code ignored;
  data_folder_ = std::filesystem::absolute(data_folder_, ignored).string();
  if (IsTooLong(data_folder_, texts_, &problem)) {
    Refuse(problem);
    result.end = End::kNoDataFolder;
    return result;
  }
  if (!TakeLock(&result)) return result;
  if (OpenSettings(options, &result)) {
    OpenObjects();
    Guarded(options, launcher, &result);
  }
  CloseDatabase();
  if (!result.settings_saved) SaveSettingsAgain(&result);
  Close();
  return result;
}

// A folder that is missing or cannot be written yields no lock; it is left to the database to say
// what is wrong with it.
bool Program::TakeLock(Result* result) {
  if (look_only_) return true;
  FolderLock lock = TakeFolder(data_folder_, texts_);
  lock_ = std::move(lock.held);
  if (lock.in_use) result->end = End::kInUse;
  if (!lock.problem.empty()) {
    Refuse(lock.problem);
    result->end = End::kNoLock;
  }
  return result->end == End::kRan;
}

// Without its settings, the program would send to another gateway, under another name.
bool Program::OpenSettings(const Options& options, Result* result) {
  std::error_code ignored;
  if (options.enter_data_folder) std::filesystem::current_path(data_folder_, ignored);
  export_places_ = ExportPlaces(
      data_folder_, options.enter_data_folder ? platform::DocumentsFolder() : std::string());
  data_file_ = std::make_unique<DataFile>(data_folder_ + "/SMS.dat", !look_only_);
  settings_.SetRecent({});
  settings_.Load(*data_file_, true);
  ChooseTexts();  // before the database, which names the first group of a new folder
  const std::string problem = ProblemOf(*data_file_, look_only_, texts_);
  if (problem.empty()) return true;
  if (data_file_->state() == DataFile::State::kUnreadable) {
    Refuse(problem);
    result->end = End::kNoSettings;
    return false;
  }
  boxes_.Show(problem, texts_.Load(kSettingsCaptionId), platform::BoxIcon::kStop);
  if (!options.sound_settings_only) return true;
  data_file_->ForgetAutoSave();
  result->end = End::kDamagedSettings;
  return false;
}

void Program::Refuse(const std::string& text) {
  boxes_.Show(text, texts_.Load(kFailedToStartId), platform::BoxIcon::kStop);
}

void Program::OpenObjects() {
  database_ = std::make_unique<SmsDatabase>(data_folder_, texts_, clock_, look_only_);
  if (!look_only_) {
    log_ = std::make_unique<LogFile>(data_folder_ + "/SMS.log", settings_, clock_);
    database_->AttachLog(log_.get());
  }
  outside_address_books_ = std::make_unique<OutsideAddressBooks>(
      settings_, texts_, boxes_, log_.get(), OutsideAddressBooks::PlacesOf(data_folder_));
  external_address_book_ =
      std::make_unique<ExternalAddressBook>(settings_, outside_address_books_.get());
}

void Program::ChooseTexts() {
  if (!settings_.Flag(FlagSetting::kI18n)) return;
  std::string problem;
  language_ = platform::ResourceContainer::Load(data_folder_ + "/Language.rcc", &problem);
  if (language_ != nullptr && !texts_.UseContainer(*language_)) language_.reset();
}

// The one catch-all handler around the whole run.
void Program::Guarded(const Options& options, const Launcher& launcher, Result* result) {
  try {
    Launch(options, launcher, result);
  } catch (const std::exception& problem) {
    result->end = End::kUnexpected;
    result->reason = problem.what();
  } catch (...) {
    result->end = End::kUnexpected;
  }
  if (result->end != End::kUnexpected) return;
  if (log_ != nullptr && log_->Enabled())
    log_->Write("Unexpected error: %s", result->reason.c_str());
  ShowUnexpectedError(boxes_, settings_);
}

void Program::ShowUnexpectedError(platform::MessageBoxes& boxes, const AppSettings& settings) {
  ShowLinkMessage(boxes, kUnexpectedText, kUnexpectedCaption, settings.Text(TextSetting::kHelpUrl),
                  0);
}

void Program::Launch(const Options& options, const Launcher& launcher, Result* result) {
  status_names_.LoadFrom(texts_);
  type_names_.LoadFrom(texts_);
  OutsideAddressBooks::EnsureMapiRouting(false);
  if (options.with_gateway && !ConnectGateway(options, result)) return;
  if (DatabaseIsReady(result)) result->exit_code = launcher(*this);
  StopEngine();
  outside_address_books_->CloseAddressBookSession();
  if (!look_only_) result->settings_saved = settings_.Save(*data_file_);
}

// A database that has been closed may have left room on the disk.
void Program::SaveSettingsAgain(Result* result) {
  result->settings_saved = data_file_->Save();
  data_file_->ForgetAutoSave();  // what is told now is to stay true
  if (result->settings_saved || result->end != End::kRan) return;  // it has been told worse
  TellSettingsNotSaved(*data_file_, true, texts_, boxes_);
}

bool Program::DatabaseIsReady(Result* result) {
  std::string reason = database_->Problem();
  if (database_->IsUsable()) {
    try {
      if (!look_only_) LogInterrupted();
      return true;
    } catch (const StoreError& failure) {
      reason = failure.InWords(texts_);
    }
  }
  std::string text = texts_.Load(1361);
  if (!reason.empty()) text += "\n\n" + reason;
  if (log_ != nullptr && log_->Enabled())
    log_->Write("The database cannot be used: %s", reason.c_str());
  boxes_.Show(text, texts_.Load(1360), platform::BoxIcon::kStop);
  result->end = End::kNoDatabase;
  result->reason = reason;
  return false;
}

bool Program::ConnectGateway(const Options& options, Result* result) {
  if (GetGateway() == nullptr) {
    boxes_.Show(texts_.Load(1362), texts_.Load(1360), platform::BoxIcon::kStop);
    result->end = End::kNoGateway;
    return false;
  }
  std::u16string reply;
  gateway_->SetBaseUrl(platform::ToWide(settings_.Text(TextSetting::kComBaseUrl)), &reply);
  ProxySettings(settings_, *gateway_, texts_, boxes_)
      .ApplyProxySettings(options.test_connection && settings_.Flag(FlagSetting::kWorkingOnLine));
  account_ = std::make_unique<Account>(settings_, *gateway_, texts_, boxes_, log_.get(),
                                       options.wait_cursor,
                                       [this] { notices_.ToMainWindow(kWmLoggedIn); });
  if (log_ != nullptr) {
    engine_ = std::make_unique<SendEngine>(
        EngineParts{settings_, *database_, *log_, texts_, *gateway_, boxes_, clock_, notices_},
        settings_, *account_);
  }
  return true;
}

GatewayClient* Program::GetGateway() {
  if (gateway_ == nullptr) {
    gateway_ = std::make_unique<GatewayClient>(registry_);
    if (!gateway_->IsConnected()) gateway_.reset();
  }
  return gateway_.get();
}

void Program::LogInterrupted() {
  const auto interrupted = database_->TakeUpInterruptedSms();
  if (!log_->Enabled()) return;
  for (const std::int32_t id : interrupted.failed)
    log_->Write("Sending was interrupted, not sent again: SMS_ID (%d)", id);
  for (const std::int32_t id : interrupted.going_on)
    log_->Write("Sending was interrupted and goes on: SMS_ID (%d)", id);
}

void Program::StopEngine() {
  if (engine_ != nullptr) engine_->WaitForEnd();
}

// Also runs for what an early end has left. The engine goes first: it waits for a message that is
// on the wire, so that its outcome is still recorded.
void Program::Close() {
  CloseDatabase();
  data_file_.reset();
  log_.reset();
  gateway_.reset();
  lock_.reset();
  language_.reset();
}

void Program::CloseDatabase() {
  engine_.reset();
  account_.reset();
  external_address_book_.reset();
  outside_address_books_.reset();
  if (database_ != nullptr) database_->AttachLog(nullptr);
  database_.reset();
}

}  // namespace orvalo
