#include "service/part_fate.h"

#include <array>

namespace orvalo::service {
namespace {

constexpr std::size_t kStateCount = static_cast<std::size_t>(PartState::kWrittenOff) + 1;

struct EventRow {
  PartEvent event;
  const char* name;
  // The next state from each, in the order of PartState: a letter of kLetters, "." to stay.
  const char* next;
};

// Waiting, asked, in Doubt, taken, at the network; then the ends, in the order of PartState.
constexpr std::string_view kLetters =
    "WADTN"
    "LUEX"
    "RZM"
    "OHP";
static_assert(kLetters.size() == kStateCount);

// What has ended does not begin again, unless it was a clock, a sibling or a person that ended it
// (O, H, P). No row leads from a part that may have been sent to W, but for those in which the
// engine says that it was not, and a person's decision.
constexpr std::array kFates{
    EventRow{PartEvent::kAsk, "ask", "A.... .... ... ..."},
    EventRow{PartEvent::kRestart, "restart", ".D... .... ... ..."},
    EventRow{PartEvent::kOldLedger, "old_ledger", "D.... .... ... ..."},
    EventRow{PartEvent::kAnswerTaken, "answer_taken", ".T... .... ... ..."},
    EventRow{PartEvent::kAnswerNotSent, "answer_not_sent", ".W... .... ... ..."},
    EventRow{PartEvent::kAnswerNoWay, "answer_no_way", ".Z... .... ... ..."},
    EventRow{PartEvent::kAnswerMalformed, "answer_malformed", ".M... .... ... ..."},
    EventRow{PartEvent::kAnswerUnclear, "answer_unclear", ".D... .... ... ..."},
    EventRow{PartEvent::kReportAtNetwork, "report_at_network", "NNNN. .... ... NNN"},
    EventRow{PartEvent::kReportDelivered, "report_delivered", "LLLLL .LLL LLL LLL"},
    EventRow{PartEvent::kReportUndelivered, "report_undelivered", "UUUUU ..UU UUU UUU"},
    EventRow{PartEvent::kReportExpired, "report_expired", "EEEEE .E.E EEE EEE"},
    EventRow{PartEvent::kReportDeleted, "report_deleted", "XXXXX .XX. XXX XXX"},
    EventRow{PartEvent::kReportRefused, "report_refused", "RRRRR .... ... RRR"},
    EventRow{PartEvent::kReportNoNumber, "report_no_number", "ZZZZZ .... ... ZZZ"},
    EventRow{PartEvent::kReportNoRoute, "report_no_route", ".ZZZZ .... ... ZZZ"},
    EventRow{PartEvent::kReportNoLink, "report_no_link", ".WWWZ .... ... ..."},
    EventRow{PartEvent::kReportOutdated, "report_outdated", "OOOOO .... ... .OO"},
    EventRow{PartEvent::kValidityPassed, "validity_passed", "O.... .... ... ..."},
    EventRow{PartEvent::kEngineLost, "engine_lost", "...D. .... ... ..."},
    EventRow{PartEvent::kNetworkSilent, "network_silent", "....E .... ... ..."},
    EventRow{PartEvent::kDecidedSent, "decided_sent", "..N.. .... ... ..."},
    EventRow{PartEvent::kDecidedNotSent, "decided_not_sent", "..P.. .... ... ..."},
    EventRow{PartEvent::kDecidedAgain, "decided_again", "..W.. .... ... ..."},
    EventRow{PartEvent::kSiblingFailed, "sibling_failed", "H.... .... ... ..."},
};
static_assert(kFates.size() == kPartEvents);

const EventRow& RowOf(PartEvent event) { return kFates.at(static_cast<std::size_t>(event)); }

// The letter of a row for a state: the blanks only part open states, ends, refusals and the rest.
char LetterFor(const EventRow& row, PartState state) {
  std::size_t left = static_cast<std::size_t>(state);
  for (const char* at = row.next;; ++at) {
    if (*at == ' ') continue;
    if (left-- == 0) return *at;
  }
}

Siblings SiblingsAfter(PartState state, PartEvent event) {
  if (state == PartState::kWaiting) return Siblings::kJoin;
  // Whoever is withdrawn follows one that has told the others already.
  if (!IsFree(state) || event == PartEvent::kSiblingFailed) return Siblings::kLeave;
  return Siblings::kWithdraw;
}

bool Holds(std::string_view text, std::string_view piece) {
  return text.find(piece) != std::string_view::npos;
}

// A receipt quotes the beginning of the message after "text:": what its writer put there says
// nothing.
std::string_view WithoutQuote(std::string_view detail) {
  return detail.substr(0, detail.find(" text:"));
}

}  // namespace

PartFate FateOf(PartState state, bool refunded, PartEvent event) {
  const auto letter = LetterFor(RowOf(event), state);
  if (letter == '.') return {state, false, Siblings::kLeave};
  const auto next = static_cast<PartState>(kLetters.find(letter));
  return {next, IsFree(next) && !refunded, SiblingsAfter(next, event)};
}

const char* NameOf(PartEvent event) { return RowOf(event).name; }

PartEvent EventOfReport(int bits, std::string_view detail) {
  detail = WithoutQuote(detail);
  if (bits & kReportBitDelivered) return PartEvent::kReportDelivered;
  if (bits & kReportBitExpired) return PartEvent::kReportExpired;
  if (bits & kReportBitUndelivered) {
    // Only from some networks does a receipt say so in the bits.
    if (Holds(detail, "stat:EXPIRED")) return PartEvent::kReportExpired;
    return Holds(detail, "stat:DELETED") ? PartEvent::kReportDeleted
                                         : PartEvent::kReportUndelivered;
  }
  if (bits & kReportBitRefused) {
    if (Holds(detail, "validity expired")) return PartEvent::kReportOutdated;
    if (Holds(detail, "no SMSC")) return PartEvent::kReportNoRoute;
    // SMPP 3.4, 5.1.3: an invalid destination address. All other refusals speak of the message or
    // of the account at the network.
    return Holds(detail, "0x0000000b") ? PartEvent::kReportNoNumber : PartEvent::kReportRefused;
  }
  return PartEvent::kReportAtNetwork;
}

}  // namespace orvalo::service
