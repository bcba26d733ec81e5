#include "net/update_check.h"

#include <sodium.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <optional>

#include "app/settings.h"
#include "app/texts.h"
#include "net/link_message.h"
#include "net/version_info.h"
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

constexpr std::size_t kShortestUrl = 8;
constexpr std::int64_t kStepWait = 1000;  // milliseconds, as all of these
constexpr std::int64_t kInstallWait = 800;
constexpr std::int64_t kEndWait = 500;

constexpr std::int64_t kLargestVersionFile = 1 << 20;  // bytes, as all of these
constexpr std::int64_t kLargestInstaller = 256 << 20;
constexpr std::int64_t kVersionLength = 64;

using PublicKey = std::array<unsigned char, crypto_sign_PUBLICKEYBYTES>;

std::optional<PublicKey> ReadKey(const std::string& digits) {
  PublicKey key;
  std::size_t length = 0;
  const char* end = nullptr;
  const bool read = sodium_hex2bin(key.data(), key.size(), digits.data(), digits.size(), nullptr,
                                   &length, &end) == 0;
  if (!read || length != key.size() || end != digits.data() + digits.size()) return std::nullopt;
  return key;
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
  if (!IsNewerOffered()) {
    if (stopped_) return;
    parts_.boxes.Show(parts_.texts.Load(kUpToDateTextId), parts_.texts.Load(kUpToDateCaptionId),
                      platform::BoxIcon::kNone);
    return;
  }
  BeginStep(UpdateView::kDownloading, kStepWait);
  if (cancel_ || !FetchInstaller()) return;
  Install();
}

bool UpdateCheck::IsNewerOffered() {
  return ParseFileVersion(Beginning(VersionFile())) > ProgramVersion();
}

// True when the installer stands there, checked.
bool UpdateCheck::FetchInstaller() {
  const std::string link = parts_.settings.Text(TextSetting::kUpdateUrl);
  const std::string url = parts_.settings.Text(TextSetting::kUpdateFileUrl);
  const DownloadResult fetched = Fetch(url, Installer(), true, kLargestInstaller);
  if (fetched == DownloadResult::kDone && IsSigned()) return true;
  if (!cancel_) {
    Complain(fetched == DownloadResult::kDone ? kFailedTextId : kNotDownloadedTextId, link);
  }
  return false;
}

// Removes an installer that has no good signature, so that nobody runs it by hand.
bool UpdateCheck::IsSigned() {
  const std::string digits = parts_.settings.Text(TextSetting::kUpdatePublicKey);
  if (digits.empty()) return true;
  const std::string file = Installer() + ".sig";
  const auto key = ReadKey(digits);
  if (key && sodium_init() >= 0 &&
      Fetch(parts_.settings.Text(TextSetting::kUpdateFileUrl) + ".sig", file, false,
            crypto_sign_BYTES) == DownloadResult::kDone) {
    const auto signature = platform::ReadFile(file, crypto_sign_BYTES);
    const auto bytes = platform::ReadFile(Installer(), kLargestInstaller);
    const auto raw = [](const std::string& text) {
      return reinterpret_cast<const unsigned char*>(text.data());
    };
    if (signature && bytes && signature->size() == crypto_sign_BYTES &&
        crypto_sign_verify_detached(raw(*signature), raw(*bytes), bytes->size(), key->data()) == 0)
      return true;
  }
  std::remove(Installer().c_str());
  return false;
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

}  // namespace orvalo
