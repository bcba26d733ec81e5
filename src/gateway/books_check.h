#pragma once
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "gateway/listed_messages.h"
#include "store/records.h"
#include "store/send_journal.h"

namespace orvalo {

class SmsDatabase;

// A sum of money, exact to nine digits behind the point; further ones are dropped.
class Money {
 public:
  static std::optional<Money> Of(std::string_view decimal);  // "0.8"; nothing for what is no amount
  void Add(const Money& other);
  std::string Text() const;  // without zeros at the end, but for one behind the point
  bool operator==(const Money&) const = default;
  bool operator<(const Money& other) const {
    return std::tie(units_, billionths_) < std::tie(other.units_, other.billionths_);
  }

 private:
  std::int64_t units_ = 0, billionths_ = 0;
};

// One point in which the outbox and the gateway differ.
struct BooksDifference {
  enum class Kind {
    kMissingHere,   // the gateway has accepted it, and no row has its id
    kMissingThere,  // a row has the id of a message that the gateway does not know
    kOtherNumber,
    kOtherCharge,
    kOtherStatus,
    kUnanswered,  // it stands in the send journal: what became of it is not known wholly
    kOtherSum,    // `here`: the charges and the balance together; `there`: the credits
  };
  Kind kind;
  std::int32_t row = 0;  // id in the outbox. Of kMissingHere: that of a row to the same number
                         // which has no id of the gateway and says Failed or Unknown, or 0
  std::string gateway_id = {};  // empty of kUnanswered and kOtherSum
  std::string number = {};
  std::string key = {};  // of kMissingHere: that of the submission
  std::string here = {},
              there = {};  // the charge or the number; "?" for a charge that is not known
  SmsStatus status_here = SmsStatus::kUnknown;              // not of kMissingHere
  SmsStatus status_there = SmsStatus::kUnknown;             // not of kMissingThere and kUnanswered
  std::int32_t recipients = 0, answered = 0, accepted = 0;  // of kUnanswered; see AddUnanswered
};

struct BooksTotals {
  std::int64_t listed = 0;  // by the gateway, since the time
  Money charges;            // of those
  std::int64_t matched = 0;
  std::int64_t news = 0;  // of those: has a final status or a charge that the row will soon learn
};

// Holds the outbox against what the gateway says it has accepted since a time. Rows and journal
// entries first, then the gateway's messages, one by one, then End. What was accepted before the
// time may be listed, too, and should be for kMargin: a row's time is not that of its acceptance.
//
// Takes about 100 bytes for each id of a row; the gateway's messages are not kept.
//
// A row whose status and charge the status pass is still to ask for does not differ in them.
class BooksCheck {
 public:
  // A message is handed over up to seven days before its row's time; the clocks may differ.
  static constexpr std::int64_t kMargin = 8 * 86'400;

  using Report = std::function<void(const BooksDifference&)>;
  BooksCheck(std::int64_t since, Report report) : since_(since), report_(std::move(report)) {}

  void AddRow(const MessageRow& row);
  // `accepted` of the difference is how many of its messages the gateway lists.
  void AddUnanswered(const JournalEntry& entry);
  void AddListed(const ListedMessage& message);
  // Reports what the gateway has not listed, and what waits.
  void End();
  // The account's as they were all the while that the messages were listed. Credits less charges
  // must be the balance, when everything was asked for (since 0 or earlier); else at least that.
  void CheckFunds(const Funds& funds);

  const BooksTotals& totals() const { return totals_; }

 private:
  static constexpr std::size_t kIdWidth = 32;
  using Id = std::array<char, kIdWidth>;
  // A number without "+" or "00"; `local` when it has no country.
  struct Number {
    std::uint64_t digits = 0;  // 0: not known
    bool local = false;
    static Number Of(std::string_view text);
    bool Is(const Number& other) const;
    std::string Text() const { return digits == 0 ? "" : std::to_string(digits); }
  };
  struct Known {
    Id id;
    Number number;
    std::optional<Money> charge;
    std::int32_t row, time;
    SmsStatus status;
    bool told;      // number, charge and status are those of this id
    bool followed;  // the status pass will ask about it
    bool seen;
  };
  struct WithoutId {
    std::uint64_t digits;
    std::int32_t row;
  };
  static Id IdOf(std::string_view text);
  void Sort();
  void Compare(const Known& known, const ListedMessage& message);
  void ReportMissingHere(const ListedMessage& message);

  const std::int64_t since_;
  const Report report_;
  bool sorted_ = false;
  std::vector<Known> known_;                                        // by id
  std::vector<WithoutId> without_id_;                               // by number
  std::map<std::string, BooksDifference, std::less<>> unanswered_;  // by the message's key
  BooksTotals totals_;
};

// Takes over the gateway's charge or status. False, changing nothing, for another kind of
// difference, and when the row is not as it was any more. Throws StoreError.
bool Mend(SmsDatabase& database, const BooksDifference& difference);

}  // namespace orvalo
