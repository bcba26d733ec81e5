// What the address book costs beside the database's own shell, a bare statement, or the mere
// sorting of the same texts. Both sides run by turns within one measurement; what counts is
// "ratio", our time to theirs (medians). The shell's time holds the start of its process.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/export_places.h"
#include "app/texts.h"
#include "contacts/csv_export.h"
#include "contacts/csv_import.h"
#include "contacts/member_rows.h"
#include "platform/clock.h"
#include "platform/collation.h"
#include "store/connection.h"
#include "store/sms_database.h"
#include "store/storage.h"
#include "support/child_process.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"

namespace orvalo {
namespace {

constexpr int kContacts = 100'000;

double SecondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double>& seconds) {
  const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
  std::nth_element(seconds.begin(), middle, seconds.end());
  return *middle;
}

void Require(bool condition) {
  if (!condition) std::abort();
}

// A side of a comparison: what is measured, and what comes before each turn and is not.
struct Side {
  std::function<void()> prepare;
  std::function<void()> work;
};

// `floor_times`: how many times its work the floor stands for.
void Compare(benchmark::State& state, const Side& ours, const Side& floor, double floor_times = 1) {
  std::vector<double> our_seconds;
  std::vector<double> floor_seconds;
  for (auto unused : state) {
    ours.prepare();
    our_seconds.push_back(SecondsOf(ours.work));
    state.SetIterationTime(our_seconds.back());
    floor.prepare();
    floor_seconds.push_back(SecondsOf(floor.work) * floor_times);
  }
  state.counters["ours_ms"] = Median(our_seconds) * 1e3;
  state.counters["floor_ms"] = Median(floor_seconds) * 1e3;
  state.counters["ratio"] = Median(our_seconds) / Median(floor_seconds);
}

// Six columns, every twentieth number a duplicate, `groups` group names by turns.
std::string SampleFile(int lines, int groups) {
  static const char* const kNames[] = {"Ann", "Bob", "Zoë", "Chipo", "Lerato", "José", "Mary Jane"};
  std::string text = "FName,SName,Title,Custom,Mobile,Group\r\n";
  text.reserve(static_cast<std::size_t>(lines) * 64);
  for (int i = 0; i < lines; ++i) {
    const std::int64_t mixed = std::int64_t{i} * 7919 % 10'000'019;
    const std::int64_t number = i % 20 == 19 ? std::int64_t{i - 1} * 7919 % 10'000'019 : mixed;
    text += kNames[mixed % 7];
    text += ",Surname" + std::to_string(mixed % 50'021) + ",Dr,Customer " + std::to_string(i);
    text += ",+2782" + std::to_string(10'000'000 + number);
    text += ",Group" + std::to_string(i % groups) + "\r\n";
  }
  return text;
}

// The shell on a database file; the statements end with what is printed.
void Shell(const std::string& file, std::vector<std::string> statements) {
  statements.insert(statements.begin(), {"/usr/bin/env", "sqlite3", file});
  Require(test::RunProgram(statements).status == 0);
}

// An address book in a folder of its own.
struct Book {
  test::TemporaryFolder folder;
  Texts texts;
  SmsDatabase database{folder.path(), texts, platform::SystemClock()};
  std::int32_t gid = database.AddGroup("Customers").gid;

  CsvImportResult Import(const std::string& file, bool auto_create) {
    return ImportContacts(database, {file, ',', {gid}, auto_create, true},
                          [](std::uint64_t, std::uint64_t) { return true; });
  }
};

void CompareImport(benchmark::State& state, int lines, int floor_lines, int groups) {
  const test::TemporaryFolder folder;
  const std::string file = folder.File("contacts.csv"), floor_file = folder.File("floor.csv");
  test::Spill(file, SampleFile(lines, groups));
  test::Spill(floor_file, SampleFile(floor_lines, groups));
  std::unique_ptr<Book> book;
  int round = 0;
  std::string floor_database;
  Compare(state,
          {[&] { book = std::make_unique<Book>(); },
           [&] {
             const auto result = book->Import(file, groups > 1);
             Require(result.inserted > lines / 20 * 18);
           }},
          {[&] {
             floor_database = folder.File("floor" + std::to_string(round++) + ".db");
             Shell(floor_database,
                   {"PRAGMA journal_mode=WAL",
                    "CREATE TABLE CONTACTS(FName TEXT, SName TEXT, Title TEXT, Custom TEXT, "
                    "Mobile TEXT, Grp TEXT); CREATE INDEX MOBILE ON CONTACTS(Mobile)"});
           },
           [&] {
             Shell(floor_database, {"PRAGMA synchronous=NORMAL",
                                    ".import --csv --skip 1 " + floor_file + " CONTACTS"});
           }},
          static_cast<double>(lines) / floor_lines);
}

void Import(benchmark::State& state) { CompareImport(state, kContacts, kContacts, 1); }
void ImportAMillion(benchmark::State& state) { CompareImport(state, 1'000'000, kContacts, 1); }
void ImportIntoManyGroups(benchmark::State& state) {
  CompareImport(state, kContacts, kContacts, 1000);
}

// A hundred thousand contacts in one group.
struct FullBook : Book {
  FullBook() {
    const std::string file = folder.File("contacts.csv");
    test::Spill(file, SampleFile(kContacts, 1));
    ImportContacts(database, {file, ',', {gid}, false, false}, {});
    database.Commit();
  }
};

void Export(benchmark::State& state) {
  FullBook book;
  test::ScriptedMessageBoxes boxes;
  const ExportPlaces places;  // none is protected
  CsvExport writer(book.database, book.texts, boxes, places);
  const std::string file = book.folder.File("out.csv");
  const std::vector<std::int32_t> gids{book.gid};
  Compare(state, {[] {}, [&] { Require(writer.WriteContacts(file, writer.MembersOf(gids))); }},
          {[] {},
           [&] {
             Shell(book.folder.File("SMS.db"),
                   {".mode csv", ".once " + book.folder.File("floor.csv"),
                    "SELECT Name, Surname, Title, Custom, Mobile FROM CONTACTS"});
           }});
}

// All contacts on show, sorted by a column; the floor makes and sorts the keys of the same texts.
void ShowMembers(benchmark::State& state) {
  FullBook book;
  const auto column = static_cast<MemberColumn>(state.range(0));
  std::vector<std::string> texts;
  for (const ContactRow& row : book.database.AllContacts())
    texts.push_back(column == MemberColumn::kName      ? row.name
                    : column == MemberColumn::kSurname ? row.surname
                                                       : row.mobile);
  std::unique_ptr<MemberRows> rows;
  Compare(state,
          {[&] {
             rows = std::make_unique<MemberRows>(book.database);
             if (column != MemberColumn::kName) rows->Load(MemberRows::Source{1, true});
           },
           [&] {
             if (column == MemberColumn::kName) {
               rows->Load(MemberRows::Source{1, true});
             } else {
               rows->SortBy(column);
             }
             Require(rows->Count() == kContacts);
           }},
          {[] {},
           [&] {
             std::vector<std::pair<std::string, std::uint32_t>> keys;
             keys.reserve(texts.size());
             for (std::uint32_t i = 0; i < texts.size(); ++i)
               keys.emplace_back(platform::SortKey(texts[i]), i);
             std::sort(keys.begin(), keys.end());
             benchmark::DoNotOptimize(keys);
           }});
}

// Half of the contacts are in one group, half in another.
struct TwoGroups : FullBook {
  std::int32_t other = database.AddGroup("Others").gid;
  Connection& connection = database.storage()->Here();
  TwoGroups() {
    connection.Execute("UPDATE CONTACT_GROUP_MAP SET GID = " + std::to_string(other) +
                       " WHERE CID % 2 = 0");
  }
};

void DeleteGroup(benchmark::State& state) {
  std::unique_ptr<TwoGroups> book;
  const auto anew = [&] { book = std::make_unique<TwoGroups>(); };
  Compare(state, {anew, [&] { book->database.DeleteGroup(book->other); }},
          {anew, [&] {
             book->connection.Execute(
                 "BEGIN; DELETE FROM CONTACTS WHERE CID IN (SELECT CID FROM CONTACT_GROUP_MAP "
                 "WHERE GID = 3); DELETE FROM CONTACT_GROUP_MAP WHERE GID = 3; COMMIT");
           }});
}

void MoveContacts(benchmark::State& state) {
  std::unique_ptr<TwoGroups> book;
  const auto anew = [&] { book = std::make_unique<TwoGroups>(); };
  Compare(state,
          {anew,
           [&] {
             SmsDatabase::Transaction transaction(book->database);
             for (std::int32_t cid = 2; cid <= 20'000; cid += 2)
               book->database.MoveContact(cid, book->gid, book->other);
             transaction.Commit();
           }},
          {anew, [&] {
             book->connection.Execute(
                 "UPDATE CONTACT_GROUP_MAP SET GID = 2 WHERE GID = 3 AND CID <= 20000");
           }});
}

BENCHMARK(Import)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);
BENCHMARK(ImportAMillion)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(ImportIntoManyGroups)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);
BENCHMARK(Export)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);
BENCHMARK(ShowMembers)
    ->DenseRange(0, 2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(9);
BENCHMARK(DeleteGroup)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(MoveContacts)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
}  // namespace orvalo
