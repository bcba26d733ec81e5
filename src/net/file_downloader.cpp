#include "net/file_downloader.h"

#include <filesystem>
#include <system_error>

#include "app/texts.h"
#include "platform/message_box.h"
#include "platform/new_file.h"

namespace orvalo {

namespace {

namespace fs = std::filesystem;
using platform::HttpDownload;

constexpr std::size_t kBlock = 1024;  // bytes
constexpr std::int64_t kBytesPerKb = 1024;
constexpr std::int64_t kPumpTime = 20;     // milliseconds after each block with progress
constexpr std::int64_t kLongestWait = 50;  // milliseconds between two looks at the cancel flag

constexpr int kNoSessionTextId = 1264;
constexpr int kNotOpenedTextId = 1265;
constexpr int kNotCreatedTextId = 1266;
constexpr int kNotReadTextId = 1267;
constexpr int kNotWrittenTextId = 1268;
constexpr int kWrittenShortTextId = 1269;
constexpr int kNotDeletedTextId = 1270;
constexpr int kNotMovedTextId = 1271;

// A status that says that the data are what was asked for; 0 is that of a file.
bool IsGoodStatus(int status) { return status == 0 || status / 10 == 20; }

}  // namespace

struct FileDownloader::Job {
  const std::string& url;
  const std::string& target;
  const std::string temporary;
  const bool show_progress;
  DownloadView* const view;
  const std::atomic<bool>& cancel;

  void LetMessagesRun(std::int64_t milliseconds) const {
    if (view != nullptr) view->RunMessages(milliseconds);
  }
};

DownloadResult FileDownloader::Download(const std::string& url, const std::string& target,
                                        bool show_progress, DownloadView* view,
                                        const std::atomic<bool>& cancel) {
  std::error_code ignored;
  const fs::path folder = fs::path(target).parent_path();
  if (fs::create_directory(folder, ignored)) fs::permissions(folder, fs::perms::owner_all, ignored);
  Job job{url, target, target + ".tmp", show_progress, view, cancel};
  const DownloadResult fetched = Fetch(job);
  if (fetched != DownloadResult::kDone) return fetched;
  return Replace(job) ? DownloadResult::kDone : DownloadResult::kFailed;
}

DownloadResult FileDownloader::Fetch(Job& job) {
  HttpDownload source(options_);
  if (!source.IsUsable()) {
    Fail(kNoSessionTextId, "");
    return DownloadResult::kFailed;
  }
  const bool opened =
      source.Open(job.url) != HttpDownload::State::kFailed && AwaitAnswer(job, source);
  if (job.cancel) return DownloadResult::kCancelled;
  if (!opened) {
    Fail(kNotOpenedTextId, job.url);
    return DownloadResult::kFailed;
  }
  const auto file = platform::NewFile::Create(job.temporary);
  if (file == nullptr) {
    Fail(kNotCreatedTextId, job.temporary);
    return DownloadResult::kFailed;
  }
  const bool complete = Copy(job, source, *file);
  // Bytes may turn out to be lost at the closing only.
  const bool kept = file->Close();
  if (job.cancel) return DownloadResult::kCancelled;
  if (complete && !kept) Fail(kNotWrittenTextId, job.target);
  return complete && kept ? DownloadResult::kDone : DownloadResult::kFailed;
}

bool FileDownloader::AwaitAnswer(Job& job, HttpDownload& source) {
  for (;;) {
    const auto state = source.AwaitAnswer(kLongestWait);
    if (state != HttpDownload::State::kWaiting) return state == HttpDownload::State::kOpen;
    job.LetMessagesRun(0);
    if (job.cancel) return false;
  }
}

// False with the error text set, or when cancelled.
bool FileDownloader::Copy(Job& job, HttpDownload& source, platform::NewFile& file) {
  std::string block;
  ShowProgress(job);
  while (!job.cancel) {
    const auto state = source.Read(&block, kBlock, kLongestWait);
    if (state == HttpDownload::State::kWaiting) {
      job.LetMessagesRun(0);
      continue;
    }
    if (state == HttpDownload::State::kFailed || !IsGoodStatus(source.status()))
      return Fail(kNotReadTextId, job.url);
    if (state == HttpDownload::State::kEnd) return true;
    if (!Write(job, file, block)) return false;
    ShowProgress(job);
    if (job.show_progress) job.LetMessagesRun(kPumpTime);
  }
  return false;
}

bool FileDownloader::Write(Job& job, platform::NewFile& file, std::string_view block) {
  const auto length = static_cast<std::ptrdiff_t>(block.size());
  if (length > limit_ - bytes_so_far_) return Fail(kNotReadTextId, job.url);
  const std::ptrdiff_t written = file.Write(block);
  if (written < 0) return Fail(kNotWrittenTextId, job.target);
  if (written < length) return Fail(kWrittenShortTextId, job.url, job.target);
  bytes_so_far_ += written;
  return true;
}

void FileDownloader::ShowProgress(const Job& job) const {
  if (!job.show_progress || job.view == nullptr) return;
  job.view->ShowProgress(std::to_string(bytes_so_far_ / kBytesPerKb) + "KB");
}

bool FileDownloader::Replace(const Job& job) {
  const auto complain = [this](int id, std::initializer_list<platform::FormatInsert> inserts) {
    boxes_.Show(texts_.Format(id, inserts).value_or(""), "", platform::BoxIcon::kNone);
    return false;
  };
  std::error_code error;
  const bool is_folder = fs::is_directory(fs::symlink_status(job.target, error));
  error = is_folder ? std::make_error_code(std::errc::is_a_directory) : std::error_code();
  if (!is_folder) fs::remove(job.target, error);
  if (error) return complain(kNotDeletedTextId, {job.target, error.message()});
  fs::rename(job.temporary, job.target, error);
  if (error) return complain(kNotMovedTextId, {job.temporary, job.target, error.message()});
  return true;
}

bool FileDownloader::Fail(int text_id, const std::string& first, const std::string& second) {
  error_text_ = texts_.Format(text_id, {first, second}).value_or("");
  return false;
}

}  // namespace orvalo
