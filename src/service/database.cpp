#include "service/database.h"

#include <sqlite3.h>

#include <algorithm>
#include <stdexcept>

#include "platform/file.h"
#include "service/schema.h"

namespace orvalo::service {
namespace {

constexpr std::size_t kLargestGroup = 128;

// SQLite's allocation statistics are one lock that all connections would share.
void SwitchStatisticsOff() {
  static const int result = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  (void)result;
}

}  // namespace

Database::Database(const std::string& folder) : folder_(folder), path_(folder + "/gateway.db") {
  SwitchStatisticsOff();
  if (!platform::MakeFolder(folder)) {
    throw std::runtime_error("the folder " + folder + " cannot be made");
  }
  if (!platform::FileSize(path_) && !platform::ReplaceFile(path_, "")) {
    throw std::runtime_error("the file " + path_ + " cannot be made");
  }
  writer_ = std::make_unique<Connection>(path_, SQLite::OPEN_READWRITE);
  PrepareSchema(*writer_);
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
    lock.lock();
    for (Job* other : group) {
      other->done = true;
      other->turn.notify_one();
    }
    PassTheLead();
  }
  lock.unlock();
  if (job.error) std::rethrow_exception(job.error);
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
    std::lock_guard guard(database.readers_mutex_);
    if (!database.readers_.empty()) {
      connection = std::move(database.readers_.back());
      database.readers_.pop_back();
    }
  }
  if (!connection) {
    connection = std::make_unique<Connection>(database.path_, SQLite::OPEN_READONLY);
  }
}

Database::Lease::~Lease() {
  std::lock_guard guard(database.readers_mutex_);
  database.readers_.push_back(std::move(connection));
}

}  // namespace orvalo::service
