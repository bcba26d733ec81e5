#pragma once
#include <atomic>
#include <optional>
#include <string>
#include <thread>

#include "platform/http_download.h"
#include "platform/mailbox.h"

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class AppSettings;
class Texts;

// The size of the main window's banner, in pixels.
inline constexpr std::uint32_t kBannerWidth = 648;
inline constexpr std::uint32_t kBannerHeight = 81;

// The banner's picture, a PNG of exactly that size: the entry "images/101.png" of the container
// "XInfo.rcc" in the data folder. Nothing when there is no such file, or it is damaged or holds
// something else. Any thread.
std::optional<std::string> ReadBanner(const std::string& data_folder);

// Fetches a new banner container into the data folder, where the setting "bg_image_path" is a web
// address; any other value fetches nothing. Works on a thread of its own and posts kWmBanner to the
// main window when the file stands there; whether it is any good, ReadBanner says. A failure leaves
// the old one. Main thread.
class BannerDownload {
 public:
  struct Parts {
    const AppSettings& settings;
    const Texts& texts;
    platform::MessageBoxes& boxes;
    platform::Mailbox& main_window;
    std::string data_folder;
    platform::HttpDownload::Options download;
  };

  // All of it must outlive the object.
  explicit BannerDownload(Parts parts) : parts_(std::move(parts)) {}
  ~BannerDownload();  // cuts the download off
  BannerDownload(const BannerDownload&) = delete;
  BannerDownload& operator=(const BannerDownload&) = delete;

  void Start();  // after each login; while a download runs, that one serves

 private:
  bool Fetch(const std::string& url);

  Parts parts_;
  std::atomic<bool> cancel_ = false;
  std::atomic<bool> running_ = false;
  std::thread thread_;
};

}  // namespace orvalo
