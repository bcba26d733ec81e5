#pragma once
#include <atomic>
#include <functional>
#include <string>

#include "app/setting_rules.h"
#include "net/file_downloader.h"
#include "net/version_info.h"

namespace orvalo {

class AppSettings;

// The modeless window "Checking for updates ...": four steps and a "Cancel" button. Main thread.
class UpdateView : public DownloadView {
 public:
  enum Step { kContacting = 1, kLooking, kDownloading, kInstalling };
  static constexpr int kSteps = 4;

  virtual void Open() = 0;  // with no step marked
  virtual void MarkStep(Step step) = 0;
  virtual void EnableCancel(bool enabled) = 0;
  virtual void Hide() = 0;
  virtual void Close() = 0;  // for good; it may be opened anew
};

// The command "Check for latest updates": asks the update server for the newest version's number,
// and if it is newer than this program's downloads the installer, starts it and ends the program.
// Main thread; one object for the process.
//
// Where the setting "UpdatePublicKey" holds an Ed25519 key (64 hexadecimal digits), the installer
// is started only if the 64 bytes at the installer's address with ".sig" appended are the signature
// by that key of the offered version's number ("3.2.1.17"), a line feed and the installer's bytes.
// The installer stays unexecutable until it has been checked, and is removed when the check fails;
// the message then names no address, since whoever replaced the one file may have replaced others.
class UpdateCheck {
 public:
  // All of it must outlive the object.
  struct Parts {
    const AppSettings& settings;
    const Texts& texts;
    platform::MessageBoxes& boxes;
    UpdateView& view;
    std::string data_folder;
    std::function<bool(const std::string& path)> start_program;  // false: it cannot be started
    std::function<void()> end_program;                           // in the orderly way
    platform::HttpDownload::Options download;
  };

  explicit UpdateCheck(Parts parts) : parts_(std::move(parts)) {}
  UpdateCheck(const UpdateCheck&) = delete;
  UpdateCheck& operator=(const UpdateCheck&) = delete;

  // The command. Does nothing while a check runs, which may be below it on the stack.
  void CheckForUpdates();

  void Cancel() { cancel_ = true; }  // the button

  // The program ends, perhaps below a running check: it stops without further messages.
  void Stop() { stopped_ = cancel_ = true; }

 private:
  bool IsConfigured() const;
  void RunSteps();
  bool FetchInstaller(const FileVersion& version);
  bool IsSigned(const UpdateKey& key, const FileVersion& version);
  void Install();
  void BeginStep(UpdateView::Step step, std::int64_t wait);  // the windows live on meanwhile
  DownloadResult Fetch(const std::string& url, const std::string& target, bool show_progress,
                       std::int64_t limit);
  void Complain(int text_id, const std::string& link);
  void Warn(int text_id);  // without a link
  std::string Installer() const { return parts_.data_folder + "/temp/Update.exe"; }
  std::string VersionFile() const { return parts_.data_folder + "/update.ver"; }

  Parts parts_;
  bool running_ = false;
  bool stopped_ = false;
  std::atomic<bool> cancel_ = false;
};

}  // namespace orvalo
