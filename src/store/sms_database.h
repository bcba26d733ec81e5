#pragma once
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "store/records.h"

namespace orvalo {

class Connection;
class Log;
class Storage;
class Texts;

// The file "SMS.db": every message, contact, group and membership. One object for the process,
// owned by start-up.
//
// Threads: any thread may call any operation; each thread gets a connection of its own, so one
// thread's reading never waits for another's writing, and writers take turns. Commit belongs to the
// main thread. A Transaction belongs to the thread that made it.
//
// Durability: a change is in the journal ("SMS.db-wal") before its operation returns, so a killed
// process loses nothing it had reported; Commit folds the journal into "SMS.db". After a power
// failure the last moments may be missing.
//
// Failures: a missing row is told by the result, as each operation says. A file that cannot be
// opened, is no database, or comes from a newer version leaves the object unusable: IsUsable is
// false, Problem says why, and every operation does nothing and reports nothing found (new ids are
// then -1). A write that the disk refuses, or a read from a damaged file, throws StoreError; it has
// changed nothing.
class SmsDatabase {
 public:
  // Opens or creates `<folder>/SMS.db` (mode 0600), seeds the counters, adds the group named by
  // string 1248 when there is no group, and gives every message left in Editing its saved status
  // back. `read_only` serves programs that look on beside a running one: nothing is created, seeded
  // or restored.
  // A file of an earlier version is brought up to this one, a copy of it being kept beside it
  // ("SMS.db.schema-1"); programs that look on read it as it is.
  SmsDatabase(const std::string& folder, const Texts& texts, const platform::Clock& clock,
              bool read_only = false);
  ~SmsDatabase();  // commits and closes
  SmsDatabase(const SmsDatabase&) = delete;
  SmsDatabase& operator=(const SmsDatabase&) = delete;

  bool IsUsable() const;  // opened, and the file exists on the disk now
  const std::string& Problem() const { return problem_; }
  const std::string& Path() const { return path_; }

  // The log is created after the database; until it is attached nothing is logged. Null detaches.
  void AttachLog(Log* log) { log_ = log; }

  // Folds the journal into "SMS.db" as far as the readers of this moment allow. Does nothing within
  // a Transaction.
  void Commit();

  std::int32_t NextMessageId();
  std::int32_t NextGroupId();
  std::int32_t NextContactId();
  std::int32_t PeekNextContactId();

  // Groups changes: all of them, or, when it is destroyed before Commit (or Commit throws), none.
  // Nesting is allowed; the outermost decides, and when an inner one was given up its Commit throws
  // StoreError and keeps nothing. Keep it short: another thread's write waits meanwhile, a
  // minute at most, and then throws.
  class Transaction {
   public:
    // kDisk: what it changes, and all before it, outlasts a power cut as well. Of the outermost
    // only; costs a flush of the disk.
    enum class Reach { kJournal, kDisk };
    explicit Transaction(SmsDatabase& database, Reach reach = Reach::kJournal);
    ~Transaction();
    void Commit();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

   private:
    Connection* connection_;  // null when the database is unusable, and once it has ended
  };

  // --- Messages
  // -------------------------------------------------------------------------------------------------------

  // Appends a row; its id. Logs "Added SMS: ...".
  std::int32_t AddSms(const NewSms& sms);
  bool SetSmsStatus(std::int32_t id,
                    SmsStatus status);  // false (and logged) when there is no such row
  // For a row that others may have changed since it was read: false, changing nothing, when its
  // status is not the expected one any more or it is gone.
  bool ChangeStatus(std::int32_t id, SmsStatus expected, SmsStatus status);
  // A row already in Editing keeps its saved status; its entry in the send journal goes. False,
  // changing nothing, for one that is just being sent: an edit would send it again.
  bool BeginEditSms(std::int32_t id);
  // False, changing nothing, when the row is not in Editing (any more). Delayed messages stay
  // delayed; any other becomes Pending, or with `keep_time` Scheduled.
  bool UpdateEditedSms(std::int32_t id, std::int32_t type, std::string_view to,
                       std::string_view msg, bool keep_time = false);
  void RestoreEditedSms();
  // A copy with the same reference id, now; its status replaced when `status` is given. -1 when
  // there is no such row.
  std::int32_t DuplicateSms(std::int32_t id, std::optional<SmsStatus> status);
  // A copy for one recipient; -1 when there is no such row.
  std::int32_t CopySmsTo(std::int32_t id, SmsStatus status, std::string_view recipient);
  // False, changing nothing, for a row that is just being sent, whose outcome would have no place,
  // and when there is no such row.
  bool DeleteSms(std::int32_t id);
  std::int32_t CountWaitingSms();  // rows Pending, Scheduled or Delay Scheduled
  std::int32_t CountSms();         // walks the table

  std::optional<MessageRow> GetSms(std::int32_t id);
  std::vector<MessageRow> AllSms();  // in order of id
  // Calls `visit` for every row in order of id until it returns false; for lists too long to hold.
  // The rows are those of the moment of the call. `visit` must not change the database.
  void ForEachSms(const std::function<bool(const MessageRow&)>& visit);

  // What lists of messages are sorted by: the numbers of a row and, where asked for, one of its
  // texts (valid during the visit only).
  enum class KeyText { kNone, kToInfo, kMsg, kCharge };
  struct SmsKey {
    std::int32_t id = 0;
    std::int32_t time = 0;
    std::int32_t stat = 0;
    std::string_view text;
  };
  // As ForEachSms, for every row; reads only those columns.
  void ForEachSmsKey(KeyText text, const std::function<void(const SmsKey&)>& visit);

  // Display text of a recipient string: at most three items, contacts by their names, " ..." when
  // there are more; at most 127 characters, cut at a character.
  std::string RecipientDisplayText(std::string_view to);

  // What a killed run or a power cut left half sent; their ids, for the log. Rows with an entry in
  // the send journal are marked Processing: the send pass goes on with them. Rows in Processing
  // without one become Failed: what became of them at the gateway is not known, and sending them
  // again might double them. To be called before anything sends, edits or deletes.
  struct InterruptedSms {
    std::vector<std::int32_t> going_on, failed;
  };
  InterruptedSms TakeUpInterruptedSms();

  // --- Selections and updates of the send engine
  // -------------------------------------------------------------------------

  // Ids of the Pending rows in order of id; only `id` when it is not -1.
  std::vector<std::int32_t> PendingSms(std::int32_t id);
  // Ids of the rows with this status and delay whose time lies between 0 and `until`, in order of
  // id.
  std::vector<std::int32_t> DueSms(SmsStatus status, std::int32_t delay, std::int64_t until);

  struct FollowedSms {
    std::int32_t id = 0;
    std::int32_t query_time = 0;
    std::string api_msg_id;
  };
  // Rows of one status with QueryTime 1 or more, in order of id: those due (StatQryTm from 0 to
  // `now`) when id is -1, else only that row. When id is -1 only the statuses that the gateway may
  // still change have rows: Queued, Sent, Scheduled on Server, Delivered to Gateway, Unknown.
  std::vector<FollowedSms> FollowedRows(SmsStatus status, std::int32_t id, std::int64_t now);

  // What became of one recipient at the gateway.
  struct SmsOutcome {
    SmsStatus status = SmsStatus::kUnknown;
    std::string_view api_msg_id = {};
    std::int32_t query_time = 0;
    std::int32_t stat_qry_tm = 0;
    std::string_view number = {};  // columns Number and Reason
    std::string_view reason = {};
  };
  // Stores the outcome of a row with one recipient; without an id of the gateway, the row's own and
  // its query schedule stay, but nobody follows a row that is Unknown without one. False as
  // ChangeStatus is.
  bool SetOutcome(std::int32_t id, SmsStatus expected, const SmsOutcome& outcome);
  // A row that went to several: Expanded, with all numbers that it went to, joined by commas. False
  // as ChangeStatus is.
  bool SetExpanded(std::int32_t id, SmsStatus expected, std::string_view numbers);

  // Each is false when there is no such row.
  bool SetQuerySchedule(std::int32_t id, std::int32_t query_time, std::int32_t stat_qry_tm);
  bool SetApiMsgId(std::int32_t id, std::string_view api_msg_id);

  // What the gateway says of a sent message.
  struct QueryAnswer {
    std::optional<SmsStatus> status;  // when it changes
    std::string charge;
  };
  // Stores it, and the next query's interval and time when it was due. False as ChangeStatus is.
  bool SetQueryAnswer(std::int32_t id, SmsStatus expected, const QueryAnswer& answer);
  bool SetQueryAnswer(std::int32_t id, SmsStatus expected, const QueryAnswer& answer,
                      std::int32_t query_time, std::int32_t stat_qry_tm);

  // One new row for a recipient of an expanded message, as CopySmsTo makes it plus what became of
  // it.
  struct ChildSms {
    std::string_view recipient;
    SmsOutcome outcome;
  };
  // Adds all children of one message in one transaction; their ids run on from the first. False
  // when the message is gone.
  bool AddChildren(std::int32_t id, std::span<const ChildSms> children);

  // --- Contacts and groups
  // ----------------------------------------------------------------------------------------------

  GroupRow AddGroup(std::string_view name);
  void RenameGroup(std::int32_t gid, std::string_view name);
  std::int32_t FindOrAddGroup(
      std::string_view name);  // the first with that name, whatever its case
  std::optional<std::string> GetGroupName(std::int32_t gid);
  std::int32_t FindGroupRow(std::int32_t gid);  // position in order of gid, or -1
  void DeleteGroup(std::int32_t gid);           // with the contacts that are in no other group
  std::vector<GroupRow> AllGroups();            // in order of gid

  // Grows with every change of a contact, a group or a membership made through this object, even
  // when it is taken back: while it stays, so does the address book.
  std::uint64_t ContactChanges() const;

  std::int32_t AddContact(const ContactRecord& contact);
  void UpdateContact(std::int32_t cid, const ContactRecord& contact);
  // all: the contact and every membership; else the membership in `gid`, and the contact when it
  // was the last.
  void DeleteContact(std::int32_t cid, bool all, std::int32_t gid);
  std::optional<ContactRecord> GetContactRecord(std::int32_t cid);  // its group list is empty
  std::optional<std::string> GetContactMobile(std::int32_t cid);
  std::optional<std::string> ContactDisplayName(std::int32_t cid);  // "<name> <surname>"
  bool ContactExistsWithMobile(std::string_view mobile);
  std::vector<ContactRow> AllContacts();                 // in order of cid
  std::vector<ContactRow> MembersOf(std::int32_t gid);   // in the order in which they joined
  std::vector<std::int32_t> GroupsOf(std::int32_t cid);  // in the order in which it joined

  // For lists too long to hold. The contacts are those of the moment of the call; `visit` must not
  // change the database. In order of cid: all from the first above `after` until `visit` returns
  // false; the members of a group, each once.
  void ForEachContact(std::int32_t after, const std::function<bool(const ContactView&)>& visit);
  void ForEachMember(std::int32_t gid, const std::function<void(const ContactView&)>& visit);
  // In the order of `cids`; ids without a contact are passed over.
  void ForEachContactOf(std::span<const std::int32_t> cids,
                        const std::function<void(const ContactView&)>& visit);
  void ForEachMobile(const std::function<void(std::string_view)>& visit);  // in no order
  std::vector<std::int32_t> MemberIds(std::int32_t gid);                   // ascending, each once

  void AddMembership(std::int32_t gid, std::int32_t cid);
  void AddToGroupIfAbsent(std::int32_t cid, std::int32_t gid);
  bool IsMember(std::int32_t cid, std::int32_t gid);
  std::int32_t FirstGroupOf(std::int32_t cid);  // 0 when none
  std::int32_t GroupCountOfContact(std::int32_t cid);
  void RemoveFromGroup(std::int32_t cid, std::int32_t gid);
  void MoveContact(std::int32_t cid, std::int32_t to_gid, std::int32_t from_gid);
  std::int32_t MemberCount(std::int32_t gid);

  // Group ids with the number of their membership rows, in order of gid; groups without any are
  // left out.
  std::vector<std::pair<std::int32_t, std::int32_t>> MemberCounts();

  // For the tests and benchmarks of this room; null when unusable.
  Storage* storage() { return storage_.get(); }

 private:
  friend class ContactLoader;
  friend class SendJournal;
  Connection* Here();  // the calling thread's connection; null when unusable
  std::string path_;
  std::string problem_;
  const Texts& texts_;
  const platform::Clock& clock_;
  const bool read_only_;
  int schema_ = 0;          // of the file; an older one only where a program looks on
  Log* EnabledLog() const;  // null when nothing is to be logged
  void LogAdded(std::int32_t id, const std::string& to, const std::string& msg);

  std::atomic<Log*> log_ = nullptr;
  std::unique_ptr<Storage> storage_;
};

}  // namespace orvalo
