#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/http_download.h"

namespace orvalo::platform {
class MessageBoxes;
class NewFile;
}  // namespace orvalo::platform

namespace orvalo {

class Texts;

// The window of a download, as far as the download needs it. Main thread.
class DownloadView {
 public:
  virtual ~DownloadView() = default;
  virtual void ShowProgress(const std::string& text) = 0;  // "17KB"
  // Lets waiting window messages run, and those that come within so many milliseconds.
  virtual void RunMessages(std::int64_t milliseconds) = 0;
};

enum class DownloadResult : int { kDone = 0, kFailed = -1, kCancelled = -2 };

// Fetches one file to a path. The data go to the path with ".tmp" appended; only a complete file
// replaces the target. One object for one download; any one thread, the main thread if there is a
// view. Blocks until the end; a server that is silent for half a minute ends it.
class FileDownloader {
 public:
  // `texts` and `boxes` must outlive the object. The options are the system's proxy and
  // authorities unless a test has its own.
  FileDownloader(const Texts& texts, platform::MessageBoxes& boxes,
                 const platform::HttpDownload::Options& options = {})
      : texts_(texts), boxes_(boxes), options_(options) {}

  // An answer of more bytes fails.
  void SetLimit(std::int64_t bytes) { limit_ = bytes; }

  // `url` is an http, https or file address; an HTTP answer counts with a status of 200 to 209
  // only. The last folder of `target` is made if it is missing. Every block (1 KB at most) is
  // followed by a look at `cancel`; the temporary file of a cancelled download stays as it is.
  // With `show_progress` and a view, the view is told the whole kilobytes so far after each block.
  // A view may be null; it lets messages run while nothing arrives.
  //
  // Failures are kept in error_text(), but those of replacing the target, which are shown.
  DownloadResult Download(const std::string& url, const std::string& target, bool show_progress,
                          DownloadView* view, const std::atomic<bool>& cancel);

  const std::string& error_text() const { return error_text_; }

 private:
  struct Job;

  DownloadResult Fetch(Job& job);
  bool AwaitAnswer(Job& job, platform::HttpDownload& source);
  bool Copy(Job& job, platform::HttpDownload& source, platform::NewFile& file);
  bool Write(Job& job, platform::NewFile& file, std::string_view block);
  void ShowProgress(const Job& job) const;
  bool Replace(const Job& job);
  bool Fail(int text_id, const std::string& first, const std::string& second = "");

  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  platform::HttpDownload::Options options_;
  std::int64_t limit_ = INT64_MAX;
  std::int64_t bytes_so_far_ = 0;
  std::string error_text_;
};

}  // namespace orvalo
