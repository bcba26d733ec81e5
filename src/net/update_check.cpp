#include "net/update_check.h"

#include <fmt/format.h>
#include <sodium.h>

#include <array>
#include <cstdio>
#include <fstream>

#include "app/settings.h"
#include "app/texts.h"
#include "net/link_message.h"
#include "platform/file.h"
#include "platform/message_box.h"
#include "platform/new_file.h"

namespace orvalo {

namespace {

constexpr int kVisitTextId = 1200;
constexpr int kVisitCaptionId = 1201;
constexpr int kFailedCaptionId = 1202;
constexpr int kNotStartedTextId = 1203;
constexpr int kNotDownloadedTextId = 1204;
constexpr int kFailedTextId = 1205;
constexpr int kUpToDateTextId = 1206;
constexpr int kUpToDateCaptionId = 1207;
constexpr int kNotSignedTextId = 2310;
constexpr int kNoKeyTextId = 2311;

constexpr std::size_t kShortestUrl = 8;
constexpr std::int64_t kStepWait = 1000;  // milliseconds, as all of these
constexpr std::int64_t kInstallWait = 800;
constexpr std::int64_t kEndWait = 500;

constexpr std::int64_t kLargestVersionFile = 1 << 20;  // bytes, as all of these
constexpr std::int64_t kLargestInstaller = 256 << 20;
constexpr std::int64_t kVersionLength = 64;

// What a signature covers besides the installer, so that an older one of the same publisher cannot
// pass as the new version: the version's number and a line feed, before the installer's bytes.
std::string SignedBytes(const FileVersion& version, const std::string& installer) {
  const auto [major, minor, build, revision] = version.Parts();
  return fmt::format("{}.{}.{}.{}\n", major, minor, build, revision) + installer;
}

const unsigned char* Raw(const std::string& bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

// The beginning of a file; empty when it cannot be opened.
std::string Beginning(const std::string& path) {
  std::string text(kVersionLength, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(text.data(), kVersionLength);
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

}  // namespace

void UpdateCheck::CheckForUpdates() {
  if (running_ || stopped_) return;
  if (!IsConfigured()) {
    ShowLinkMessage(parts_.boxes, parts_.texts.Load(kVisitTextId),
                    parts_.texts.Load(kVisitCaptionId), parts_.settings.Text(TextSetting::kHelpUrl),
                    0);
    return;
  }
  cancel_ = false;
  parts_.view.Open();
  running_ = true;
  RunSteps();
  parts_.view.Hide();
  parts_.view.Close();
  running_ = false;
}

bool UpdateCheck::IsConfigured() const {
  const AppSettings& settings = parts_.settings;
  return settings.Text(TextSetting::kUpdateVersionUrl).size() >= kShortestUrl &&
         settings.Text(TextSetting::kUpdateFileUrl).size() >= kShortestUrl &&
         !settings.Text(TextSetting::kUpdateUrl).empty();
}

void UpdateCheck::RunSteps() {
  BeginStep(UpdateView::kContacting, kStepWait);
  if (Fetch(parts_.settings.Text(TextSetting::kUpdateVersionUrl), VersionFile(), false,
            kLargestVersionFile) != DownloadResult::kDone) {
    Complain(kFailedTextId, parts_.settings.Text(TextSetting::kUpdateUrl));
    return;
  }
  BeginStep(UpdateView::kLooking, kStepWait);
  const FileVersion offered = ParseFileVersion(Beginning(VersionFile()));
  if (offered <= ProgramVersion()) {
    if (stopped_) return;
    parts_.boxes.Show(parts_.texts.Load(kUpToDateTextId), parts_.texts.Load(kUpToDateCaptionId),
                      platform::BoxIcon::kNone);
    return;
  }
  BeginStep(UpdateView::kDownloading, kStepWait);
  if (cancel_ || !FetchInstaller(offered)) return;
  Install();
}

// True when the installer stands there, checked.
bool UpdateCheck::FetchInstaller(const FileVersion& version) {
  const std::string digits = parts_.settings.Text(TextSetting::kUpdatePublicKey);
  const auto key = ReadUpdateKey(digits);
  if (!digits.empty() && !key) {
    Warn(kNoKeyTextId);
    return false;
  }
  if (Fetch(parts_.settings.Text(TextSetting::kUpdateFileUrl), Installer(), true,
            kLargestInstaller) != DownloadResult::kDone) {
    if (!cancel_) Complain(kNotDownloadedTextId, parts_.settings.Text(TextSetting::kUpdateUrl));
    return false;
  }
  if (!key || IsSigned(*key, version)) return true;
  std::remove(Installer().c_str());  // so that nobody runs it by hand
  if (!cancel_) Warn(kNotSignedTextId);
  return false;
}

bool UpdateCheck::IsSigned(const UpdateKey& key, const FileVersion& version) {
  const std::string file = Installer() + ".sig";
  if (sodium_init() < 0 || Fetch(parts_.settings.Text(TextSetting::kUpdateFileUrl) + ".sig", file,
                                 false, crypto_sign_BYTES) != DownloadResult::kDone)
    return false;
  const auto signature = platform::ReadFile(file, crypto_sign_BYTES);
  const auto installer = platform::ReadFile(Installer(), kLargestInstaller);
  if (!signature || signature->size() != crypto_sign_BYTES || !installer) return false;
  const std::string bytes = SignedBytes(version, *installer);
  return crypto_sign_verify_detached(Raw(*signature), Raw(bytes), bytes.size(), key.data()) == 0;
}

void UpdateCheck::Install() {
  parts_.view.EnableCancel(false);
  BeginStep(UpdateView::kInstalling, kInstallWait);
  parts_.view.Hide();
  parts_.view.RunMessages(0);
  if (!cancel_ && (!platform::MakeExecutable(Installer()) || !parts_.start_program(Installer())))
    Complain(kNotStartedTextId, "file://" + Installer());
  parts_.view.RunMessages(kEndWait);
  if (!cancel_) parts_.end_program();
}

void UpdateCheck::BeginStep(UpdateView::Step step, std::int64_t wait) {
  parts_.view.MarkStep(step);
  parts_.view.RunMessages(wait);
}

DownloadResult UpdateCheck::Fetch(const std::string& url, const std::string& target,
                                  bool show_progress, std::int64_t limit) {
  FileDownloader downloader(parts_.texts, parts_.boxes, parts_.download);
  downloader.SetLimit(limit);
  return downloader.Download(url, target, show_progress, &parts_.view, cancel_);
}

void UpdateCheck::Complain(int text_id, const std::string& link) {
  if (stopped_) return;
  ShowLinkMessage(parts_.boxes, parts_.texts.Load(text_id), parts_.texts.Load(kFailedCaptionId),
                  link, 0);
}

void UpdateCheck::Warn(int text_id) {
  if (stopped_) return;
  parts_.boxes.Show(parts_.texts.Load(text_id), parts_.texts.Load(kFailedCaptionId),
                    platform::BoxIcon::kStop);
}

}  // namespace orvalo
