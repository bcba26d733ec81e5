#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

class Connection;
class SmsDatabase;

// One recipient of a message that goes out, as it was when the sending began.
struct JournalRecipient {
  std::int32_t contact_id = -1;
  std::string number;
  std::string entry;          // the item as written in the recipient string
  bool has_own_text = false;  // `text` is this recipient's; else the message's goes out
  std::string text;
};

// What the gateway answered to the request that begins with the recipient at `position`.
struct JournalAnswer {
  std::int32_t position = 0;
  std::int32_t code = 0;
  std::string words;  // why not; may be empty
  std::string reply;
};

// The operator does not want the rest of the message to go out: the gateway is only asked what it
// has of it.
inline constexpr std::int64_t kSendingStopped = 0;

struct JournalEntry {
  std::int32_t id = 0;     // of the message
  std::string key;         // see DrawJournalKey
  std::int64_t since = 0;  // seconds since 1970 UTC, or kSendingStopped
  std::vector<JournalRecipient> recipients;
  std::vector<JournalAnswer> answers;  // in order of position
};

// The journal of what is being sent: for each message its recipients, fixed before the first
// request leaves, the key that every request's own follows from, and what has been answered. A
// message that stands here may have reached the gateway, also when its row still says Pending: a
// power cut may have taken the row's mark. It is only ever sent under these keys, which makes a
// repetition harmless.
//
// An entry goes in the transaction that stores the message's outcome; when the row is deleted; and
// when it is opened for editing, which is only possible before it was taken.
//
// Used on the engine's worker; operations throw StoreError as those of SmsDatabase do, and do
// nothing when that is unusable.
class SendJournal {
 public:
  explicit SendJournal(SmsDatabase& database) : database_(database) {}  // must outlive this object

  // Adds an entry without answers. Within a Transaction that reaches the disk, or a power cut could
  // take the key of what has gone out.
  void Open(const JournalEntry& entry);

  // Nothing in a file that is too old to have a journal.
  std::optional<JournalEntry> Find(std::int32_t id);

  // Pending → Processing. False, changing nothing, when the message is not Pending any more or has
  // another entry than the one with this key.
  bool Take(std::int32_t id, std::string_view key);

  // The sending begins anew; its key and recipients stay.
  void Renew(std::int32_t id, std::int64_t since);

  // Marks the entry as kSendingStopped, on the disk. False when there is none whose message is in
  // Processing.
  bool Stop(std::int32_t id);

  void Record(std::int32_t id, std::span<const JournalAnswer> answers);

  void Close(std::int32_t id);

  // Messages in Processing that have an entry, in order of id: those whose outcome is not complete.
  std::vector<std::int32_t> Unfinished();

 private:
  SmsDatabase& database_;
};

// Removes a message's entry, if it has one.
void EndJournalEntry(Connection& connection, std::int32_t id);

// Random hexadecimal digits: the part of a submission's key that is the message's.
inline constexpr std::size_t kJournalKeyWidth = 24;
std::string DrawJournalKey();

}  // namespace orvalo
