#include "store/storage.h"

#include <sqlite3.h>

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace orvalo {

struct Storage::Shared {
  std::string path;
  StoreAccess access = StoreAccess::kReadWrite;
  WriteTurn write_turn;
  std::atomic<std::uint64_t> contact_changes = 0;
  std::mutex mutex;  // guards what follows
  std::vector<std::unique_ptr<Connection>> connections;
  std::vector<Connection*> idle;  // of threads that have ended

  Connection* Lend() {
    std::lock_guard guard(mutex);
    if (!idle.empty()) {
      Connection* connection = idle.back();
      idle.pop_back();
      return connection;
    }
    connections.push_back(std::make_unique<Connection>(path, access, write_turn, contact_changes));
    return connections.back().get();
  }
  void TakeBack(Connection* connection) {
    std::lock_guard guard(mutex);
    if (!connections.empty()) idle.push_back(connection);
  }
  void CloseAll() {
    std::lock_guard guard(mutex);
    idle.clear();
    connections.clear();
  }
};

namespace {

// What one thread has been lent. The weak pointer lets a thread outlive a storage, and the
// generation keeps a new storage from being taken for an old one.
class ThreadLoans {
 public:
  ThreadLoans() = default;
  ~ThreadLoans() {
    for (const Loan& loan : loans_) {
      if (const auto shared = loan.shared.lock()) shared->TakeBack(loan.connection);
    }
  }
  ThreadLoans(const ThreadLoans&) = delete;
  ThreadLoans& operator=(const ThreadLoans&) = delete;

  Connection& Get(std::uint64_t generation, const std::shared_ptr<Storage::Shared>& shared) {
    if (generation != last_generation_) {
      last_ = Find(generation, shared);
      last_generation_ = generation;
    }
    return *last_;
  }

 private:
  struct Loan {
    std::uint64_t generation;
    std::weak_ptr<Storage::Shared> shared;
    Connection* connection;
  };
  Connection* Find(std::uint64_t generation, const std::shared_ptr<Storage::Shared>& shared) {
    std::erase_if(loans_, [](const Loan& loan) { return loan.shared.expired(); });
    for (const Loan& loan : loans_) {
      if (loan.generation == generation) return loan.connection;
    }
    loans_.reserve(loans_.size() + 1);  // so that what is lent is also noted
    Connection* connection = shared->Lend();
    loans_.push_back({generation, shared, connection});
    return connection;
  }

  std::vector<Loan> loans_;
  std::uint64_t last_generation_ = 0;
  Connection* last_ = nullptr;
};

std::uint64_t NextGeneration() {
  static std::atomic<std::uint64_t> next{1};
  return next++;
}

// The allocator's statistics make threads wait for each other. Without effect when somebody else
// has initialised SQLite already.
void ConfigureSqlite() {
  static std::once_flag once;
  std::call_once(once, [] { sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0); });
}

}  // namespace

Storage::Storage(const std::string& path, StoreAccess access)
    : shared_(std::make_shared<Shared>()), generation_(NextGeneration()) {
  ConfigureSqlite();
  shared_->path = path;
  shared_->access = access;
  Here();
}

Storage::~Storage() { shared_->CloseAll(); }

std::uint64_t Storage::ContactChanges() const { return shared_->contact_changes; }

Connection& Storage::Here() {
  thread_local ThreadLoans loans;
  return loans.Get(generation_, shared_);
}

}  // namespace orvalo
