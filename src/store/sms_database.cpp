#include "store/sms_database.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include "app/log_file.h"
#include "app/texts.h"
#include "platform/disk_full.h"
#include "platform/file.h"
#include "store/id_counters.h"
#include "store/schema.h"
#include "store/storage.h"
#include "store/store_error.h"

namespace orvalo {
namespace {

constexpr int kAllContactsText = 1248;

constexpr Sql kAnyGroup("SELECT GID FROM \"GROUP\" LIMIT 1");

// SQLite would make the file with the user's usual mode, and its journals with the mode of the
// file.
void CreatePrivateFile(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::symlink_status(path, error);
  if (status.type() != std::filesystem::file_type::not_found) return;
  if (platform::ReplaceFile(path, {})) return;
  const bool full = platform::IsDiskFull(std::filesystem::path(path).parent_path().string());
  throw StoreError(full ? StoreProblem::kDiskFull : StoreProblem::kNotOpened, path,
                   "it could not be made");
}

// SQLite gives the journals the mode of the file. While that may not be written, somebody who only
// looks leaves journals that no later writer could use.
void MakeJournalsWritable(const std::string& path) {
  using std::filesystem::perms;
  for (const char* suffix : {"-wal", "-shm"}) {
    std::error_code error;
    const std::string journal = path + suffix;
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(journal, error)))
      continue;
    std::filesystem::permissions(journal, perms::owner_read | perms::owner_write,
                                 std::filesystem::perm_options::add, error);
  }
}

}  // namespace

SmsDatabase::SmsDatabase(const std::string& folder, const Texts& texts,
                         const platform::Clock& clock, bool read_only)
    : path_(folder + "/SMS.db"), texts_(texts), clock_(clock), read_only_(read_only) {
  try {
    if (!read_only) {
      CreatePrivateFile(path_);
      MakeJournalsWritable(path_);
    }
    storage_ = std::make_unique<Storage>(
        path_, read_only ? StoreAccess::kReadOnly : StoreAccess::kReadWrite);
    schema_ = PrepareSchema(*Here(), !read_only);
    if (read_only) return;
    Transaction transaction(*this);
    for (const IdCounter* counter : {&kMessageIds, &kGroupIds, &kContactIds}) {
      SeedCounter(*Here(), *counter);
    }
    if (!Query(*Here(), kAnyGroup).Step()) AddGroup(texts_.Load(kAllContactsText));
    RestoreEditedSms();
    transaction.Commit();
    Commit();
  } catch (const StoreError& failure) {
    problem_ = failure.InWords(texts_);
    storage_.reset();
  } catch (const std::exception& failure) {
    problem_ = failure.what();
    storage_.reset();
  }
}

SmsDatabase::~SmsDatabase() {
  try {
    Commit();
  } catch (const std::exception&) {
    // The journal stays beside the file and is read at the next start: nothing is lost.
  }
}

std::uint64_t SmsDatabase::ContactChanges() const {
  return storage_ ? storage_->ContactChanges() : 0;
}

Connection* SmsDatabase::Here() { return storage_ ? &storage_->Here() : nullptr; }

bool SmsDatabase::IsUsable() const {
  std::error_code error;
  return storage_ != nullptr && std::filesystem::exists(path_, error);
}

void SmsDatabase::Commit() {
  Connection* connection = Here();
  if (connection == nullptr || read_only_ || connection->InTransaction()) return;
  try {
    Transaction transaction(*this);
    for (const IdCounter* counter : {&kMessageIds, &kGroupIds, &kContactIds}) {
      CatchUp(*connection, *counter);
    }
    transaction.Commit();
  } catch (const StoreError&) {
    connection->Checkpoint();  // on a full disk, the journal's end is what makes room
    throw;
  }
  connection->Checkpoint();
}

Log* SmsDatabase::EnabledLog() const {
  Log* log = log_;
  return log != nullptr && log->Enabled() ? log : nullptr;
}

std::int32_t SmsDatabase::NextMessageId() { return Here() ? TakeId(*Here(), kMessageIds) : -1; }
std::int32_t SmsDatabase::NextGroupId() { return Here() ? TakeId(*Here(), kGroupIds) : -1; }
std::int32_t SmsDatabase::NextContactId() { return Here() ? TakeId(*Here(), kContactIds) : -1; }
std::int32_t SmsDatabase::PeekNextContactId() { return Here() ? NextId(*Here(), kContactIds) : -1; }

SmsDatabase::Transaction::Transaction(SmsDatabase& database, Reach reach)
    : connection_(database.Here()) {
  if (connection_ != nullptr) connection_->Begin(reach == Reach::kDisk);
}

SmsDatabase::Transaction::~Transaction() {
  if (connection_ != nullptr) connection_->End(false);
}

void SmsDatabase::Transaction::Commit() {
  if (Connection* connection = std::exchange(connection_, nullptr)) connection->End(true);
}

}  // namespace orvalo
