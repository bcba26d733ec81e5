#pragma once
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "service/connection.h"

namespace orvalo::service {

// There is no room left on a disk of the service's; the text says on which, and what to do.
class DiskFull : public std::runtime_error {
 public:
  explicit DiskFull(const std::string& folder)
      : std::runtime_error("the disk that holds " + folder + " is full: make room there") {}
};

// Makes a folder (0700) and those above it; throws when it cannot be had, DiskFull when for that.
void PrepareFolder(const std::string& folder);

// The service's data file, `<folder>/gateway.db`: one connection that writes, and as many that read
// as there are readers at a time, which never wait for the writer. Any thread.
//
// What a Write did is on the disk (flushed) before Write returns. Writes that arrive while another
// is being flushed share the next flush.
//
// The journal is folded into the file before it grows past a few MB: readers wait for that a
// moment. Only a read that goes on for long, here or in another process, puts it off.
//
// Another process may work on the same file (the administration commands do, beside a running
// service); ForeignChanges tells that caches must be read again.
//
// Failures throw: SQLite::Exception, DiskFull, or std::runtime_error when the file cannot be used
// at all.
class Database {
 public:
  // Makes the folder (0700), the file (0600) and the tables when they are missing.
  explicit Database(const std::string& folder);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  const std::string& folder() const { return folder_; }

  // Runs `work` on a reading connection and returns its result.
  template <class Work>
  auto Read(Work&& work) {
    try {
      const Lease lease(*this);
      return std::forward<Work>(work)(*lease.connection);
    } catch (const SQLite::Exception& failure) {
      ThrowIfFull(failure);
      throw;
    }
  }

  // Runs `work` in a transaction. When it throws, everything it did is undone and the exception
  // comes back here. When the transaction cannot be completed, the same. `work` may run on another
  // thread, one at a time with all other writes; it must not call Write.
  //
  // Nobody waits for what is done with `patience`: for so long it waits for others, to share their
  // flush, so that those whom somebody waits for need not wait for flushes of its own.
  void Write(const std::function<void(Connection&)>& work,
             std::chrono::milliseconds patience = std::chrono::milliseconds(0));

  // Grows whenever another process has changed the file, as far as the writer has noticed: each
  // Write looks.
  std::uint64_t ForeignChanges() const { return foreign_changes_.load(); }

 private:
  struct Job {
    Job(const std::function<void(Connection&)>& its_work, bool its_patience)
        : work(its_work), patient(its_patience) {}
    const std::function<void(Connection&)>& work;
    bool patient;  // does not lead now
    std::exception_ptr error;
    bool done = false;
    bool leads = false;
    std::condition_variable turn;
  };

  struct Lease {
    explicit Lease(Database& owner);
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    Database& database;
    std::unique_ptr<Connection> connection;
  };

  void Open();
  void ThrowIfFull(const SQLite::Exception& failure) const;
  void PassTheLead();  // with the lock held
  void RunGroup(const std::vector<Job*>& group);
  void RunJob(Job& job);
  void NoticeForeignChanges();
  void FoldJournal();

  std::string folder_, path_;
  std::unique_ptr<Connection> writer_;
  std::int64_t data_version_ = 0;
  std::atomic<std::uint64_t> foreign_changes_{0};

  std::mutex write_mutex_;
  std::deque<Job*> waiting_;
  bool leading_ = false;  // some thread runs a group now

  std::mutex readers_mutex_;
  std::condition_variable readers_changed_;
  std::vector<std::unique_ptr<Connection>> readers_;
  int reading_ = 0;
  bool folding_ = false;  // nobody begins to read

  int journal_pages_ = 0, fold_at_;  // the leader's
};

}  // namespace orvalo::service
