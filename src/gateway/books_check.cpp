#include "gateway/books_check.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "gateway/gateway_ids.h"
#include "gateway/message_submissions.h"
#include "gateway/status_reply.h"
#include "store/sms_database.h"

namespace orvalo {
namespace {

using DifferenceKind = BooksDifference::Kind;

constexpr std::int64_t kBillion = 1'000'000'000;
constexpr std::size_t kFractionDigits = 9;
constexpr std::size_t kMostDigits = 15;
constexpr std::string_view kDigits = "0123456789";

bool IsDigits(std::string_view text, std::size_t most) {
  return !text.empty() && text.size() <= most &&
         text.find_first_not_of(kDigits) == std::string_view::npos;
}

template <typename Value>
Value NumberOf(std::string_view digits) {
  Value value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return value;
}

bool IsOnItsWay(SmsStatus status) {
  switch (status) {
    case SmsStatus::kUnknown:
    case SmsStatus::kQueued:
    case SmsStatus::kSent:
    case SmsStatus::kScheduledOnServer:
    case SmsStatus::kDeliveredToGateway:
      return true;
    default:
      return false;
  }
}

bool IsFinal(SmsStatus status) {
  switch (status) {
    case SmsStatus::kDelivered:
    case SmsStatus::kErrorWithMessage:
    case SmsStatus::kCancelled:
    case SmsStatus::kDeliveryError:
    case SmsStatus::kRoutingError:
    case SmsStatus::kMessageExpired:
      return true;
    default:
      return false;
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------- money

std::optional<Money> Money::Of(std::string_view decimal) {
  const auto point = decimal.find('.');
  const std::string_view units = decimal.substr(0, point);
  if (!IsDigits(units, kMostDigits)) return std::nullopt;
  Money money;
  money.units_ = NumberOf<std::int64_t>(units);
  if (point == std::string_view::npos) return money;
  const std::string_view fraction = decimal.substr(point + 1);
  if (!IsDigits(fraction, fraction.size())) return std::nullopt;
  std::string billionths(fraction.substr(0, kFractionDigits));
  billionths.resize(kFractionDigits, '0');
  money.billionths_ = NumberOf<std::int64_t>(billionths);
  return money;
}

void Money::Add(const Money& other) {
  units_ += other.units_;
  billionths_ += other.billionths_;
  units_ += billionths_ / kBillion;
  billionths_ %= kBillion;
}

std::string Money::Text() const {
  std::string fraction = std::to_string(kBillion + billionths_).substr(1);
  fraction.resize(std::max<std::size_t>(fraction.find_last_not_of('0') + 1, 1));
  return std::to_string(units_) + "." + fraction;
}

// ---------------------------------------------------------------------------------------- check

BooksCheck::Id BooksCheck::IdOf(std::string_view text) {
  Id id{};
  std::copy_n(text.begin(), std::min(text.size(), id.size()), id.begin());
  return id;
}

BooksCheck::Number BooksCheck::Number::Of(std::string_view text) {
  Number number;
  if (text.starts_with('+')) {
    text.remove_prefix(1);
  } else if (text.starts_with("00")) {
    text.remove_prefix(2);
  } else {
    number.local = text.starts_with('0');
  }
  if (IsDigits(text, 18)) number.digits = NumberOf<std::uint64_t>(text);
  return number;
}

// What is not known differs from nothing; a local number may have been completed on the way.
bool BooksCheck::Number::Is(const Number& other) const {
  if (digits == 0 || other.digits == 0 || digits == other.digits) return true;
  return local && other.Text().ends_with(Text());
}

void BooksCheck::AddRow(const MessageRow& row) {
  const auto status = static_cast<SmsStatus>(row.stat);
  const std::vector<GatewayIdEntry> entries = ParseGatewayIds(row.api_msg_id);
  if (entries.empty()) {
    const bool in_doubt = status == SmsStatus::kFailed || status == SmsStatus::kUnknown;
    const Number number = Number::Of(row.number);
    if (in_doubt && number.digits != 0) without_id_.push_back({number.digits, row.id});
    return;
  }
  // A row that goes out again keeps the id of the first time until it has another.
  const bool told = entries.size() == 1 && (IsOnItsWay(status) || IsFinal(status));
  const bool followed = IsOnItsWay(status) && row.query_time > 0;
  for (const GatewayIdEntry& entry : entries) {
    known_.push_back({IdOf(entry.id), Number::Of(row.number), Money::Of(row.charge), row.id,
                      row.time, status, told, followed, false});
  }
}

void BooksCheck::AddUnanswered(const JournalEntry& entry) {
  BooksDifference difference{DifferenceKind::kUnanswered};
  difference.row = entry.id;
  difference.status_here = SmsStatus::kProcessing;
  difference.recipients = static_cast<std::int32_t>(entry.recipients.size());
  difference.answered = CountAnswered(entry);
  unanswered_.emplace(entry.key, std::move(difference));
}

void BooksCheck::Sort() {
  if (std::exchange(sorted_, true)) return;
  std::sort(known_.begin(), known_.end(),
            [](const Known& a, const Known& b) { return a.id < b.id; });
  std::stable_sort(without_id_.begin(), without_id_.end(),
                   [](const WithoutId& a, const WithoutId& b) { return a.digits < b.digits; });
}

void BooksCheck::AddListed(const ListedMessage& message) {
  Sort();
  const bool counts = message.accepted >= since_;
  if (counts) {
    ++totals_.listed;
    totals_.charges.Add(Money::Of(message.charge).value_or(Money()));
  }
  const Id id = IdOf(message.id);
  auto known = std::lower_bound(known_.begin(), known_.end(), id,
                                [](const Known& row, const Id& wanted) { return row.id < wanted; });
  const bool found = known != known_.end() && known->id == id;
  for (; known != known_.end() && known->id == id; ++known) {
    known->seen = true;
    if (counts && known->told) Compare(*known, message);
  }
  if (!counts) return;
  if (found) {
    ++totals_.matched;
    return;
  }
  const std::string_view key = message.key;
  if (const auto waiting = unanswered_.find(key.substr(0, kJournalKeyWidth));
      waiting != unanswered_.end()) {
    ++waiting->second.accepted;
  } else {
    ReportMissingHere(message);
  }
}

void BooksCheck::Compare(const Known& known, const ListedMessage& message) {
  BooksDifference difference{DifferenceKind::kOtherNumber};
  difference.row = known.row;
  difference.gateway_id = message.id;
  difference.number = message.number;
  difference.status_here = known.status;
  const auto status = StatusOfGatewayNumber(message.status);
  difference.status_there = status.value_or(known.status);
  if (!known.number.Is(Number::Of(message.number))) {
    difference.here = known.number.Text();
    difference.there = message.number;
    report_(difference);
  }
  bool news = false;
  if (known.charge != Money::Of(message.charge)) {
    news = !known.charge && known.followed;
    difference.kind = DifferenceKind::kOtherCharge;
    difference.here = known.charge ? known.charge->Text() : "?";
    difference.there = message.charge;
    if (!news) report_(difference);
  }
  const bool both_open = IsOnItsWay(known.status) && IsOnItsWay(difference.status_there);
  if (known.status != difference.status_there && !both_open) {
    news = news || known.followed;
    difference.kind = DifferenceKind::kOtherStatus;
    difference.here.clear();
    difference.there.clear();
    if (!known.followed) report_(difference);
  }
  if (news) ++totals_.news;
}

void BooksCheck::ReportMissingHere(const ListedMessage& message) {
  BooksDifference difference{DifferenceKind::kMissingHere};
  difference.gateway_id = message.id;
  difference.number = message.number;
  difference.key = message.key;
  difference.there = message.charge;
  difference.status_there = StatusOfGatewayNumber(message.status).value_or(SmsStatus::kUnknown);
  const std::uint64_t digits = Number::Of(message.number).digits;
  const auto row = std::lower_bound(
      without_id_.begin(), without_id_.end(), digits,
      [](const WithoutId& other, std::uint64_t wanted) { return other.digits < wanted; });
  if (row != without_id_.end() && row->digits == digits) difference.row = row->row;
  report_(difference);
}

void BooksCheck::End() {
  Sort();
  for (const Known& known : known_) {
    if (known.seen || known.time < since_) continue;
    BooksDifference difference{DifferenceKind::kMissingThere};
    difference.row = known.row;
    const auto end = std::find(known.id.begin(), known.id.end(), '\0');
    difference.gateway_id.assign(known.id.begin(), end);
    difference.number = known.number.Text();
    difference.here = known.charge ? known.charge->Text() : "?";
    difference.status_here = known.status;
    report_(difference);
  }
  for (const auto& [key, difference] : unanswered_) report_(difference);
}

void BooksCheck::CheckFunds(const Funds& funds) {
  const auto balance = Money::Of(funds.balance), credits = Money::Of(funds.credits);
  if (!balance || !credits) return;
  Money sum = totals_.charges;
  sum.Add(*balance);
  if (since_ <= 0 ? sum == *credits : !(*credits < sum)) return;
  BooksDifference difference{DifferenceKind::kOtherSum};
  difference.here = sum.Text();
  difference.there = funds.credits;
  report_(difference);
}

bool Mend(SmsDatabase& database, const BooksDifference& difference) {
  const SmsStatus here = difference.status_here;
  if (difference.kind == DifferenceKind::kOtherCharge)
    return database.SetQueryAnswer(difference.row, here, {std::nullopt, difference.there});
  if (difference.kind == DifferenceKind::kOtherStatus)
    return database.ChangeStatus(difference.row, here, difference.status_there);
  return false;
}

}  // namespace orvalo
