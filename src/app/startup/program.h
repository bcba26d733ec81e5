#pragma once
#include <functional>
#include <memory>
#include <string>

#include "app/data_file.h"
#include "app/export_places.h"
#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "contacts/external_address_book.h"
#include "contacts/outside_address_books.h"
#include "gateway/account.h"
#include "gateway/engine_notices.h"
#include "gateway/gateway_client.h"
#include "gateway/send_engine.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/message_box.h"
#include "platform/named_mutex.h"
#include "platform/resource_container.h"
#include "store/sms_database.h"

namespace orvalo {

// The process-wide objects, each reachable through one accessor of the Program that owns them. This
// is the composition root: whatever runs inside a Program takes from here what it needs and hands
// it on through constructors.
//
// A run creates them in a fixed order (lock, data folder, data file, settings, texts, database,
// log, address books, gateway client), calls the launcher, and takes them down in the reverse
// order: engine, address-book session, settings saved, database committed, data file, log, lock.
// Everything happens on the main thread.
class Program {
 public:
  struct Options {
    std::string data_folder;   // empty: ORVALO_DATA_PATH or the machine configuration
    bool look_only = false;    // beside a running program: no lock, nothing is created or written
    bool with_gateway = true;  // create the gateway client and hand it the proxy settings
    bool test_connection = true;            // with the proxy settings, when working online
    bool enter_data_folder = true;          // make it the process's current directory
    bool sound_settings_only = false;       // ends where a window would only warn of damaged ones
    std::function<void(bool)> wait_cursor;  // see Account: around calls the operator waits for
  };

  // How a run ended.
  enum class End {
    kRan,              // the launcher ran; the exit code is its own
    kInUse,            // another program holds the data folder
    kNoDataFolder,     // none is configured, as far as can be read, or its path is too long
    kNoLock,           // the folder's lock cannot be used, so that nobody must work on it
    kNoSettings,       // the settings cannot be read
    kDamagedSettings,  // they can be read in part, where that is not enough
    kNoGateway,        // the gateway component could not be created
    kNoDatabase,       // the database could not be opened
    kUnexpected,       // an exception ended the launcher
  };
  struct Result {
    End end = End::kRan;
    int exit_code = 0;
    std::string reason;  // in words, as far as it is known; a box has told it but for kUnexpected
    bool settings_saved = true;  // else the operator has been told
  };

  // The main window, or a command: runs with everything in place, returns the exit code.
  using Launcher = std::function<int(Program&)>;

  Program(platform::MessageBoxes& boxes, platform::Clock& clock,
          const platform::ClassRegistry& registry);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // The whole life of the program. May be called once.
  Result Run(const Options& options, const Launcher& launcher);

  // The message that an unexpected error has ended the program, with the help site of `settings`.
  static void ShowUnexpectedError(platform::MessageBoxes& boxes, const AppSettings& settings);

  // --- The process-wide objects; valid while the launcher runs. ---
  const std::string& DataFolder() const { return data_folder_; }
  const ExportPlaces& GetExportPlaces() const { return export_places_; }
  DataFile& GetDataFile() { return *data_file_; }
  AppSettings& GetSettings() { return settings_; }
  SmsDatabase& GetDatabase() { return *database_; }
  LogFile& GetLog() { return *log_; }
  // The container of every text, dialog, menu and picture: the one in the data folder, or our own.
  const platform::ResourceContainer& GetResources() const {
    return language_ != nullptr ? *language_ : platform::ResourceContainer::BuiltIn();
  }
  const Texts& GetTexts() const { return texts_; }
  ExternalAddressBook& GetExternalAddressBook() { return *external_address_book_; }
  const SmsStatusNames& GetStatusNames() const { return status_names_; }
  const MessageTypeNames& GetTypeNames() const { return type_names_; }
  platform::MessageBoxes& GetMessageBoxes() { return boxes_; }
  platform::Clock& GetClock() { return clock_; }

  // The gateway client, created on the first call; null when the component cannot be created.
  GatewayClient* GetGateway();
  // These need the gateway client (Options::with_gateway).
  Account& GetAccount() { return *account_; }
  EngineNotices& GetNotices() { return notices_; }
  SendEngine& GetEngine() { return *engine_; }

 private:
  bool TakeLock(Result* result);
  bool OpenSettings(const Options& options, Result* result);
  void OpenObjects();
  void ChooseTexts();
  void Refuse(const std::string& text);
  void Guarded(const Options& options, const Launcher& launcher, Result* result);
  void Launch(const Options& options, const Launcher& launcher, Result* result);
  // False, the operator having been told why, when nothing can be done with the database.
  bool DatabaseIsReady(Result* result);
  void SaveSettingsAgain(Result* result);
  bool ConnectGateway(const Options& options, Result* result);
  void LogInterrupted();
  void StopEngine();
  void CloseDatabase();
  void Close();

  platform::MessageBoxes& boxes_;
  platform::Clock& clock_;
  const platform::ClassRegistry& registry_;
  bool look_only_ = false;

  // In the order of creation.
  std::unique_ptr<platform::NamedMutex> lock_;
  std::string data_folder_;
  ExportPlaces export_places_;
  Texts texts_;
  std::unique_ptr<DataFile> data_file_;
  AppSettings settings_;
  std::unique_ptr<SmsDatabase> database_;
  std::unique_ptr<LogFile> log_;
  std::unique_ptr<platform::ResourceContainer> language_;
  std::unique_ptr<OutsideAddressBooks> outside_address_books_;
  std::unique_ptr<ExternalAddressBook> external_address_book_;
  SmsStatusNames status_names_;
  MessageTypeNames type_names_;
  std::unique_ptr<GatewayClient> gateway_;
  std::unique_ptr<Account> account_;
  EngineNotices notices_;
  std::unique_ptr<SendEngine> engine_;
};

}  // namespace orvalo
