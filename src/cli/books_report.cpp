#include "cli/books_report.h"

#include <ostream>

#include "app/startup/program.h"
#include "cli/message_listing.h"
#include "cli/outcome_tally.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

using DifferenceKind = BooksDifference::Kind;

struct KindName {
  const char* json;
  const char* words;
};

// By the values of Kind.
constexpr std::array kNames{
    KindName{"missing-here", "missing here"}, KindName{"missing-there", "missing there"},
    KindName{"other-number", "other number"}, KindName{"other-charge", "other charge"},
    KindName{"other-status", "other status"}, KindName{"unanswered", "not yet answered"},
    KindName{"other-sum", "other sum"}};

const KindName& NameOf(DifferenceKind kind) { return kNames.at(static_cast<std::size_t>(kind)); }

std::string InWords(const BooksDifference& difference, const SmsStatusNames& statuses) {
  const auto name = [&](SmsStatus status) {
    return statuses.Name(static_cast<std::int32_t>(status));
  };
  const std::string row = "message " + std::to_string(difference.row);
  const std::string to = " to " + difference.number;
  const std::string id = " (" + difference.gateway_id + ")";
  std::string text = NameOf(difference.kind).words;
  text.front() = static_cast<char>(text.front() - 'a' + 'A');
  text += ": ";
  switch (difference.kind) {
    case DifferenceKind::kMissingHere:
      text += "a message" + to + id + ", charge " + difference.there + ", " +
              name(difference.status_there) + ", sent with key " + difference.key + "; ";
      if (difference.row == 0) return text + "of another installation, or of a deleted message";
      return text + "perhaps of " + row + ", which has no id of the gateway";
    case DifferenceKind::kMissingThere:
      return text + row + to + id + ", " + name(difference.status_here) +
             "; the gateway does not know it";
    case DifferenceKind::kOtherNumber:
      return text + row + id + "; here " + difference.here + ", there " + difference.there;
    case DifferenceKind::kOtherCharge:
      return text + row + to + id + "; here " + difference.here + ", there " + difference.there;
    case DifferenceKind::kOtherStatus:
      return text + row + to + id + "; here " + name(difference.status_here) + ", there " +
             name(difference.status_there);
    case DifferenceKind::kUnanswered:
      return text + row + "; answered for " + std::to_string(difference.answered) + " of " +
             Counted(static_cast<std::size_t>(difference.recipients), "recipient") +
             ", the gateway lists " + std::to_string(difference.accepted) +
             "; the next `orvaloctl run` goes on";
    case DifferenceKind::kOtherSum:
      return text + "charges and balance make " + difference.here + ", the credits are " +
             difference.there;
  }
  return text;
}

Json AsJson(const BooksDifference& difference, const SmsStatusNames& statuses, bool mended) {
  Json json = {{"Kind", NameOf(difference.kind).json}};
  if (difference.row != 0) json["ID"] = difference.row;
  if (!difference.gateway_id.empty()) json["GatewayID"] = difference.gateway_id;
  if (!difference.number.empty()) json["Number"] = difference.number;
  if (!difference.key.empty()) json["Key"] = difference.key;
  if (!difference.here.empty()) json["Here"] = difference.here;
  if (!difference.there.empty()) json["There"] = difference.there;
  const auto name = [&](const char* member, SmsStatus status) {
    json[member] = statuses.Name(static_cast<std::int32_t>(status));
  };
  if (difference.row != 0 && difference.kind != DifferenceKind::kMissingHere)
    name("StatusHere", difference.status_here);
  if (difference.kind != DifferenceKind::kMissingThere &&
      difference.kind != DifferenceKind::kUnanswered &&
      difference.kind != DifferenceKind::kOtherSum)
    name("StatusThere", difference.status_there);
  if (difference.kind == DifferenceKind::kUnanswered) {
    json["Recipients"] = difference.recipients;
    json["Answered"] = difference.answered;
    json["Listed"] = difference.accepted;
  }
  json["Mended"] = mended;
  return json;
}

}  // namespace

BooksReport::BooksReport(Context& context) : context_(context) {
  if (!context.json) return;
  context.out << "{\"Differences\": ";
  list_.emplace(context.out);
}

void BooksReport::Add(const BooksDifference& difference, bool mended) {
  ++counts_.at(static_cast<std::size_t>(difference.kind));
  ++found_;
  if (mended) ++mended_;
  const SmsStatusNames& statuses = context_.program.GetStatusNames();
  if (list_) {
    list_->Add(AsJson(difference, statuses, mended));
  } else {
    context_.out << platform::PrintableLine(InWords(difference, statuses))
                 << (mended ? " (mended)" : "") << '\n';
  }
}

void BooksReport::End(const BooksTotals& totals, std::int64_t since, const Funds& funds,
                      bool checked) {
  if (!list_) {
    context_.out << "Accepted by the gateway since "
                 << MessageTimeText(context_.program, static_cast<std::int32_t>(since)) << ": "
                 << Counted(static_cast<std::size_t>(totals.listed), "message") << ", charges "
                 << totals.charges.Text() << "\nFound in the outbox: " << totals.matched;
    if (totals.news > 0)
      context_.out << ", news of " << totals.news << " (`orvaloctl query` asks for them)";
    const auto told = [](const std::string& amount) {
      return amount.empty() ? std::string("?") : platform::PrintableLine(amount);
    };
    context_.out << "\nBalance: " << told(funds.balance) << ", credits " << told(funds.credits)
                 << (checked ? "" : " (not compared with the charges)") << '\n';
    return;
  }
  list_->End();
  Json counts = {{"Listed", totals.listed}, {"Matched", totals.matched}, {"News", totals.news}};
  for (std::size_t kind = 0; kind < kKinds; ++kind) counts[kNames.at(kind).json] = counts_.at(kind);
  counts["Mended"] = mended_;
  context_.out << ", \"Counts\": ";
  PrintJson(context_.out, counts);
  context_.out << ", \"Totals\": ";
  PrintJson(context_.out, {{"Since", since},
                           {"Charges", totals.charges.Text()},
                           {"Balance", funds.balance},
                           {"Credits", funds.credits},
                           {"Checked", checked}});
  context_.out << "}\n";
}

void BooksReport::BreakOff() {
  if (!list_) return;
  list_->End();
  context_.out << "}\n";
}

std::string BooksReport::Summary() const {
  std::string text;
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    if (counts_.at(kind) == 0) continue;
    if (!text.empty()) text += ", ";
    text += std::to_string(counts_.at(kind)) + " " + kNames.at(kind).words;
  }
  if (mended_ > 0) text += "; " + std::to_string(mended_) + " of them mended";
  return text;
}

}  // namespace orvalo::cli
