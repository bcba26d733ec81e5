#include "service/outbox.h"

#include <algorithm>
#include <bitset>

#include "service/secrets.h"
#include "service/settings.h"

namespace orvalo::service::outbox {
namespace {

std::string_view DigitsOf(std::string_view number) {
  if (number.starts_with('+')) number.remove_prefix(1);
  return number;
}

PartState StateFrom(const Query& row, int column) {
  return static_cast<PartState>(row.Int(column));
}

// A part as it is before an event.
struct Facts {
  PartState state = PartState::kWaiting;
  bool refunded = false;
};

std::optional<Facts> FactsFrom(Query& row) {
  if (!row.Step()) return std::nullopt;
  return Facts{StateFrom(row, 0), row.Int(1) != 0};
}

void GiveBack(Connection& connection, const PartId& id) {
  Query row(connection, "UPDATE outbox SET refunded=1 WHERE message=? AND part=? RETURNING price",
            id.message, id.part);
  if (!row.Step()) return;
  const auto price = row.Int(0);
  Query(connection, "UPDATE message SET charge=charge-? WHERE seq=?", price, id.message).Run();
  Query(connection,
        "UPDATE account SET balance=balance+? WHERE id=(SELECT account FROM message WHERE seq=?)",
        price, id.message)
      .Run();
  AddRefund(connection, price);
}

struct Sibling {
  PartId id;
  PartState state;
};

std::vector<Sibling> SiblingsOf(Connection& connection, const PartId& id) {
  std::vector<Sibling> siblings;
  Query rows(connection, "SELECT part,state FROM outbox WHERE message=? AND part<>?", id.message,
             id.part);
  while (rows.Step()) {
    siblings.push_back({{id.message, static_cast<int>(rows.Int(0))}, StateFrom(rows, 1)});
  }
  return siblings;
}

std::optional<Moved> Happen(Connection& connection, const PartId& id, const Facts& facts,
                            PartEvent event, std::int64_t since, const std::string& reason) {
  const auto fate = FateOf(facts.state, facts.refunded, event);
  if (fate.state == facts.state) return std::nullopt;
  Query(connection,
        "UPDATE outbox SET state=?1,since=iif(?1=3,since,?2),reason=?3 WHERE message=?4 AND "
        "part=?5",
        static_cast<int>(fate.state), since, reason, id.message, id.part)
      .Run();
  if (fate.refund) GiveBack(connection, id);
  Moved moved{facts.state, fate.state};
  if (fate.siblings == Siblings::kLeave) return moved;
  constexpr const char* kWithdrawn = "another part was refused";
  for (const auto& sibling : SiblingsOf(connection, id)) {
    if (fate.siblings == Siblings::kWithdraw) {
      outbox::Happen(connection, sibling.id, PartEvent::kSiblingFailed, since, kWithdrawn);
    } else if (IsFree(sibling.state)) {
      const Facts waits{fate.state, facts.refunded};
      const auto with_it =
          Happen(connection, id, waits, PartEvent::kSiblingFailed, since, kWithdrawn);
      if (with_it) moved.after = with_it->after;
      break;
    }
  }
  return moved;
}

std::int64_t HappenToAll(Connection& connection, const std::vector<PartId>& parts, PartEvent event,
                         std::int64_t now, const std::string& reason) {
  return std::count_if(parts.begin(), parts.end(), [&](const auto& id) {
    return outbox::Happen(connection, id, event, now, reason).has_value();
  });
}

std::vector<PartId> PartsFrom(Query& rows) {
  std::vector<PartId> parts;
  while (rows.Step()) parts.push_back({rows.Int(0), static_cast<int>(rows.Int(1))});
  return parts;
}

}  // namespace

int FreeReference(Connection& connection, std::string_view number, std::uint8_t wanted,
                  std::int64_t under_way_since) {
  constexpr int kReferences = 256, kLatest = kReferences / 2;
  std::bitset<kReferences> taken;
  Query rows(connection,
             "SELECT reference FROM (SELECT message AS row,reference FROM outbox WHERE number=? "
             "AND part=1 "
             "ORDER BY message DESC LIMIT ?) JOIN message ON seq=row WHERE due>=?",
             std::string(DigitsOf(number)), kLatest, under_way_since);
  while (rows.Step()) taken.set(static_cast<std::size_t>(rows.Int(0) & (kReferences - 1)));
  int reference = wanted;
  while (taken.test(static_cast<std::size_t>(reference))) reference = (reference + 1) % kReferences;
  return reference;
}

void Add(Connection& connection, const CarriedMessage& message, Money charge, int reference) {
  const std::string number(DigitsOf(message.number));
  const auto price = charge / message.parts;
  for (int part = 0; part < message.parts; ++part) {
    Query(connection,
          "INSERT INTO outbox(message,part,state,number,price,reference,since) "
          "VALUES(?,?,?,?,?,?,?)",
          message.row, part, static_cast<int>(PartState::kWaiting), number, price, reference,
          message.due)
        .Run();
  }
}

std::vector<Waiting> Due(Connection& connection, std::int64_t now, std::int64_t due_from,
                         int most) {
  Query rows(
      connection,
      "SELECT outbox.message,part,outbox.number,COALESCE(batch,0),text,sender,type,parts,"
      "unicode,ack,reference,attempts,due FROM outbox JOIN message ON message.seq=outbox.message "
      "WHERE state=0 AND state<=4 AND since<=? AND due>=? "
      "ORDER BY since,outbox.message,part LIMIT ?",
      now, due_from, most);
  std::vector<Waiting> waiting;
  while (rows.Step()) {
    const bool sibling = !waiting.empty() && waiting.back().id.message == rows.Int(0);
    auto text = sibling ? waiting.back().text : std::make_shared<const std::string>(rows.Text(4));
    waiting.push_back({{rows.Int(0), static_cast<int>(rows.Int(1))},
                       rows.Text(2),
                       rows.Int(3),
                       std::move(text),
                       rows.Text(5),
                       static_cast<int>(rows.Int(6)),
                       static_cast<int>(rows.Int(7)),
                       rows.Int(8) != 0,
                       rows.Int(9) != 0,
                       static_cast<int>(rows.Int(10)),
                       static_cast<int>(rows.Int(11)),
                       rows.Int(12)});
  }
  return waiting;
}

std::vector<PartId> Outdated(Connection& connection, std::int64_t due_before, int most) {
  Query rows(connection,
             "SELECT outbox.message,part FROM outbox JOIN message ON message.seq=outbox.message "
             "WHERE state=0 AND state<=4 AND due<? LIMIT ?",
             due_before, most);
  return PartsFrom(rows);
}

std::optional<Moved> Happen(Connection& connection, const PartId& id, PartEvent event,
                            std::int64_t since, const std::string& reason) {
  std::optional<Facts> facts;
  {
    Query row(connection, "SELECT state,refunded FROM outbox WHERE message=? AND part=?",
              id.message, id.part);
    facts = FactsFrom(row);
  }
  if (!facts) return std::nullopt;
  return Happen(connection, id, *facts, event, since, reason);
}

bool Ask(Connection& connection, const PartId& id, std::string_view key, std::int64_t now) {
  if (!Happen(connection, id, PartEvent::kAsk, now, "")) return false;
  Query(connection, "UPDATE outbox SET report_key=?,attempts=attempts+1 WHERE message=? AND part=?",
        Blob{key}, id.message, id.part)
      .Run();
  return true;
}

void Answer(Connection& connection, const PartId& id, std::string_view key, PartEvent answer,
            std::int64_t since, const std::string& reason) {
  std::optional<Facts> facts;
  {
    Query row(connection,
              "SELECT state,refunded FROM outbox WHERE message=? AND part=? AND report_key=?",
              id.message, id.part, Blob{key});
    facts = FactsFrom(row);
  }
  if (facts) Happen(connection, id, *facts, answer, since, reason);
}

std::int64_t PauseAfter(int attempts) {
  constexpr int kLongest = 60;
  return std::min(kLongest, 1 << std::clamp(attempts, 0, 6));
}

std::int64_t DoubtAsked(Connection& connection, std::int64_t now) {
  std::vector<PartId> parts;
  {
    Query rows(connection, "SELECT message,part FROM outbox WHERE state=1 AND state<=4");
    parts = PartsFrom(rows);
  }
  return HappenToAll(connection, parts, PartEvent::kRestart, now,
                     "the service ended while it was handed over");
}

std::int64_t DoubtWaiting(Connection& connection, std::int64_t now) {
  std::vector<PartId> parts;
  {
    Query rows(connection,
               "SELECT message,part FROM outbox WHERE state=0 AND state<=4 AND (since<=? OR "
               "attempts>0)",
               now);
    parts = PartsFrom(rows);
  }
  return HappenToAll(connection, parts, PartEvent::kOldLedger, now, "it waited in an older ledger");
}

std::optional<Reported> TakeReport(Connection& connection, std::string_view key,
                                   std::string_view number, int bits, std::string_view detail,
                                   bool has_all_links, std::int64_t now) {
  const std::string digits(DigitsOf(number));
  Reported reported{};
  Facts facts;
  int seen = 0, attempts = 0;
  {
    Query row(connection,
              "SELECT state,refunded,message,part,seen,attempts FROM outbox WHERE report_key=? "
              "AND number=?",
              Blob{key}, digits);
    const auto found = FactsFrom(row);
    if (!found) return std::nullopt;
    facts = *found;
    reported.id = {row.Int(2), static_cast<int>(row.Int(3))};
    seen = static_cast<int>(row.Int(4));
    attempts = static_cast<int>(row.Int(5));
  }
  auto event = EventOfReport(bits, detail);
  const bool is_no_route = event == PartEvent::kReportNoRoute;
  if (is_no_route && !has_all_links && attempts <= kTriesWithoutRoute) {
    event = PartEvent::kReportNoLink;
  }
  const bool tries_on = event == PartEvent::kReportNoLink;
  const auto moved =
      Happen(connection, reported.id, facts, event, tries_on ? now + PauseAfter(attempts - 1) : now,
             tries_on ? "no_link" : std::string(detail));
  reported.before = facts.state;
  reported.after = moved ? moved->after : facts.state;
  // Of a part that is tried again the same may have to be told again.
  if (reported.after == PartState::kWaiting && is_no_route) {
    reported.repeated = !moved;
    return reported;
  }
  reported.repeated = (bits & ~seen) == 0;
  if (!reported.repeated) {
    Query(connection, "UPDATE outbox SET seen=seen|? WHERE message=? AND part=?", bits,
          reported.id.message, reported.id.part)
        .Run();
  }
  return reported;
}

std::vector<PartId> Stale(Connection& connection, PartState state, std::int64_t before, int most) {
  Query rows(connection,
             "SELECT message,part FROM outbox WHERE state=? AND state<=4 AND since<? LIMIT ?",
             static_cast<int>(state), before, most);
  return PartsFrom(rows);
}

std::optional<GatewayStatus> StatusOf(Connection& connection, const CarriedMessage& message,
                                      std::int64_t now) {
  Query rows(connection, "SELECT state FROM outbox WHERE message=?", message.row);
  std::optional<GatewayStatus> worst;
  while (rows.Step()) {
    const auto status = StatusOfPart(StateFrom(rows, 0), message.due, now);
    worst = worst ? Worse(*worst, status) : status;
  }
  return worst;
}

std::int64_t CountOpen(Connection& connection, PartState state) {
  Query row(connection, "SELECT count(*) FROM outbox WHERE state=? AND state<=4",
            static_cast<int>(state));
  return row.Step() ? row.Int(0) : 0;
}

WaitingCount CountWaiting(Connection& connection, std::int64_t now) {
  // One that was put back may be due later, too; a later delivery was never tried.
  Query row(connection,
            "SELECT count(*),count(*) FILTER (WHERE since>? AND attempts=0) FROM outbox "
            "WHERE state=0 AND state<=4",
            now);
  if (!row.Step()) return {};
  return {row.Int(0) - row.Int(1), row.Int(1)};
}

std::int64_t CountDue(Connection& connection, std::int64_t by) {
  Query row(connection, "SELECT count(*) FROM outbox WHERE state=0 AND state<=4 AND since<=?", by);
  return row.Step() ? row.Int(0) : 0;
}

void ForEach(Connection& connection, bool open_only, const std::function<void(const Row&)>& visit) {
  static const std::string kRows =
      "SELECT outbox.message,part,message.id,user,outbox.number,reason,state,since,attempts,seen,"
      "price,refunded FROM outbox JOIN message ON message.seq=outbox.message "
      "JOIN account ON account.id=message.account ";
  static const std::string kOrder = "ORDER BY outbox.message,part";
  static const std::string kAll = kRows + kOrder, kOpen = kRows + "WHERE state<=4 " + kOrder;
  Query rows(connection, (open_only ? kOpen : kAll).c_str());
  while (rows.Step()) {
    Row row;
    row.id = {rows.Int(0), static_cast<int>(rows.Int(1))};
    row.message_id = ToHex(rows.Text(2));
    row.user = rows.Text(3);
    row.number = rows.Text(4);
    row.reason = rows.Text(5);
    row.state = StateFrom(rows, 6);
    row.since = rows.Int(7);
    row.attempts = static_cast<int>(rows.Int(8));
    row.seen = static_cast<int>(rows.Int(9));
    row.price = rows.Int(10);
    row.refunded = rows.Int(11) != 0;
    visit(row);
  }
}

}  // namespace orvalo::service::outbox
