#include "service/database.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "platform/disk_full.h"
#include "platform/file.h"
#include "platform/terminal.h"
#include "service/schema.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kLargestGroup = 128;
constexpr int kFoldPages = 512;  // 2 MB
constexpr int kBusyMs = 5'000;
constexpr std::chrono::milliseconds kFoldPatience(250);

// SQLite's allocation statistics are one lock that all connections would share.
void SwitchStatisticsOff() {
  static const int result = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  (void)result;
}

}  // namespace

void PrepareFolder(const std::string& folder) {
  if (platform::MakeFolder(folder)) return;
  std::error_code error;
  auto above = std::filesystem::absolute(folder, error);
  while (above.has_relative_path() && !std::filesystem::exists(above, error)) {
    above = above.parent_path();
  }
  if (platform::IsDiskFull(above.string())) throw DiskFull(folder);
  throw std::runtime_error("the folder " + folder + " cannot be made by the user " +
                           platform::UserName());
}

Database::Database(const std::string& folder)
    : folder_(folder), path_(folder + "/gateway.db"), fold_at_(kFoldPages) {
  SwitchStatisticsOff();
  PrepareFolder(folder);
  platform::FileError error;
  if (!platform::FileSize(path_) && !platform::ReplaceFile(path_, "", &error)) {
    if (error.kind == platform::FileError::Kind::kFull) throw DiskFull(folder);
    throw std::runtime_error("the file " + path_ + " cannot be made by the user " +
                             platform::UserName() + ": " + error.detail);
  }
  try {
    Open();
  } catch (const SQLite::Exception& failure) {
    ThrowIfFull(failure);
    throw;
  }
}

void Database::Open() {
  writer_ = std::make_unique<Connection>(path_, SQLite::OPEN_READWRITE);
  PrepareSchema(*writer_);
  // In place of SQLite's own folding, which never ends while others read one after the other.
  sqlite3_wal_hook(
      writer_->database().getHandle(),
      [](void* pages, sqlite3*, const char*, int count) {
        *static_cast<int*>(pages) = count;
        return SQLITE_OK;
      },
      &journal_pages_);
  NoticeForeignChanges();
}

Database::~Database() = default;

void Database::Write(const std::function<void(Connection&)>& work,
                     std::chrono::milliseconds patience) {
  Job job(work, patience.count() > 0);
  std::unique_lock lock(write_mutex_);
  waiting_.push_back(&job);
  const auto in_turn = [&] { return job.done || job.leads; };
  if (job.patient && !job.turn.wait_for(lock, patience, in_turn)) job.patient = false;
  if (leading_) job.turn.wait(lock, in_turn);
  if (!job.done) {
    leading_ = true;
    std::erase(waiting_, &job);
    const auto count = static_cast<std::ptrdiff_t>(std::min(waiting_.size(), kLargestGroup - 1));
    std::vector<Job*> group{&job};
    group.insert(group.end(), waiting_.begin(), waiting_.begin() + count);
    waiting_.erase(waiting_.begin(), waiting_.begin() + count);
    lock.unlock();
    RunGroup(group);
    if (journal_pages_ >= fold_at_) FoldJournal();
    lock.lock();
    for (Job* other : group) {
      other->done = true;
      other->turn.notify_one();
    }
    PassTheLead();
  }
  lock.unlock();
  if (!job.error) return;
  try {
    std::rethrow_exception(job.error);
  } catch (const SQLite::Exception& failure) {
    ThrowIfFull(failure);
    throw;
  }
}

// SQLite says so of the file itself only, not of what stands beside it.
void Database::ThrowIfFull(const SQLite::Exception& failure) const {
  const int code = failure.getErrorCode();
  const bool may_be = code == SQLITE_IOERR || code == SQLITE_CANTOPEN;
  if (code == SQLITE_FULL || (may_be && platform::IsDiskFull(folder_))) throw DiskFull(folder_);
}

// Every page of the journal can be folded once nobody reads an older state; those who come
// meanwhile wait. Where somebody reads for long, the next try is made when it has grown further.
void Database::FoldJournal() {
  std::unique_lock lock(readers_mutex_);
  folding_ = true;
  readers_changed_.wait_for(lock, kFoldPatience, [this] { return reading_ == 0; });
  auto* const file = writer_->database().getHandle();
  sqlite3_busy_timeout(file, 0);
  const int result =
      sqlite3_wal_checkpoint_v2(file, nullptr, SQLITE_CHECKPOINT_RESTART, nullptr, nullptr);
  sqlite3_busy_timeout(file, kBusyMs);
  fold_at_ = result == SQLITE_OK ? kFoldPages : journal_pages_ + kFoldPages;
  journal_pages_ = 0;  // until the next commit counts them
  folding_ = false;
  readers_changed_.notify_all();
}

// Patient jobs go with the next that leads, or lead when their patience is at its end.
void Database::PassTheLead() {
  const auto next = std::find_if(waiting_.begin(), waiting_.end(),
                                 [](const Job* waiting) { return !waiting->patient; });
  leading_ = next != waiting_.end();
  if (!leading_) return;
  (*next)->leads = true;
  (*next)->turn.notify_one();
}

void Database::RunGroup(const std::vector<Job*>& group) {
  try {
    Query(*writer_, "BEGIN IMMEDIATE").Run();
    NoticeForeignChanges();
    for (Job* job : group) RunJob(*job);
    Query(*writer_, "COMMIT").Run();
  } catch (...) {
    // The whole group is undone, so each of its jobs has failed.
    for (Job* job : group) {
      if (!job->error) job->error = std::current_exception();
    }
    if (writer_->InTransaction()) {
      try {
        Query(*writer_, "ROLLBACK").Run();
      } catch (const SQLite::Exception&) {
        // The next BEGIN reports what is wrong with the file.
      }
    }
  }
}

// Keeps one job's failure from undoing its neighbours.
void Database::RunJob(Job& job) {
  Query(*writer_, "SAVEPOINT job").Run();
  try {
    job.work(*writer_);
  } catch (...) {
    job.error = std::current_exception();
    // A full disk makes SQLite give the transaction up altogether.
    if (!writer_->InTransaction()) throw;
    Query(*writer_, "ROLLBACK TO job").Run();
  }
  Query(*writer_, "RELEASE job").Run();
}

void Database::NoticeForeignChanges() {
  Query version(*writer_, "PRAGMA data_version");
  if (!version.Step() || version.Int(0) == data_version_) return;
  data_version_ = version.Int(0);
  ++foreign_changes_;
}

Database::Lease::Lease(Database& owner) : database(owner) {
  {
    std::unique_lock lock(database.readers_mutex_);
    database.readers_changed_.wait(lock, [&] { return !database.folding_; });
    ++database.reading_;
    if (!database.readers_.empty()) {
      connection = std::move(database.readers_.back());
      database.readers_.pop_back();
    }
  }
  if (connection) return;
  try {
    connection = std::make_unique<Connection>(database.path_, SQLite::OPEN_READONLY);
  } catch (...) {
    std::lock_guard guard(database.readers_mutex_);
    --database.reading_;
    throw;
  }
}

Database::Lease::~Lease() {
  std::lock_guard guard(database.readers_mutex_);
  database.readers_.push_back(std::move(connection));
  if (--database.reading_ == 0 && database.folding_) database.readers_changed_.notify_all();
}

}  // namespace orvalo::service
