#include "shell/banner.h"

#include <string_view>
#include <system_error>

#include "app/settings.h"
#include "net/file_downloader.h"
#include "platform/collation.h"
#include "platform/resource_check.h"
#include "platform/resource_container.h"
#include "shell/shell_messages.h"

namespace orvalo {

namespace {

constexpr char kEntry[] = "images/101.png";

std::string BannerFile(const std::string& data_folder) { return data_folder + "/XInfo.rcc"; }

bool IsWebAddress(std::string_view path) {
  constexpr std::string_view kBeginning = "http";
  return platform::EqualNoCaseAscii(path.substr(0, kBeginning.size()), kBeginning);
}

// A PNG begins with its signature and a chunk of 13 bytes, "IHDR", with width and height first. So
// nothing that claims another size ever reaches a decoder.
bool IsBannerPicture(std::string_view bytes) {
  constexpr std::string_view kBeginning("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16);
  constexpr std::size_t kSizes = 8;
  if (!bytes.starts_with(kBeginning) || bytes.size() < kBeginning.size() + kSizes) return false;
  const auto number = [&](std::size_t at) {
    std::uint32_t value = 0;
    for (const char c : bytes.substr(kBeginning.size() + at, 4))
      value = value << 8 | static_cast<unsigned char>(c);
    return value;
  };
  return number(0) == kBannerWidth && number(4) == kBannerHeight;
}

}  // namespace

std::optional<std::string> ReadBanner(const std::string& data_folder) {
  auto picture = platform::ResourceContainer::ReadEntry(BannerFile(data_folder), kEntry, nullptr);
  if (picture && !IsBannerPicture(*picture)) picture.reset();
  return picture;
}

BannerDownload::~BannerDownload() {
  cancel_ = true;
  if (thread_.joinable()) thread_.join();
}

void BannerDownload::Start() {
  std::string url = parts_.settings.Text(TextSetting::kBackgroundImagePath);
  if (running_ || !IsWebAddress(url)) return;
  if (thread_.joinable()) thread_.join();
  running_ = true;
  try {
    thread_ = std::thread([this, url = std::move(url)] {
      const bool fetched = Fetch(url);
      running_ = false;
      if (fetched) parts_.main_window.Post(kWmBanner, 0, 0);
    });
  } catch (const std::system_error&) {
    running_ = false;  // no thread to be had: the banner stays
  }
}

bool BannerDownload::Fetch(const std::string& url) {
  FileDownloader downloader(parts_.texts, parts_.boxes, parts_.download);
  downloader.SetLimit(platform::kMaxContainer);
  return downloader.Download(url, BannerFile(parts_.data_folder), false, nullptr, cancel_) ==
         DownloadResult::kDone;
}

}  // namespace orvalo
