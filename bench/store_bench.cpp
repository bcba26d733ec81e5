// What the store costs beside a bare loop of prepared statements that does the same work on a file
// of the same layout. Both loops run by turns within one measurement; what counts is "ratio", our
// operations per second to theirs.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "app/texts.h"
#include "platform/clock.h"
#include "store/sms_database.h"
#include "support/temporary_folder.h"

namespace orvalo {
namespace {

constexpr std::int32_t kRows = 100'000;
constexpr int kRound = 2'000;  // operations of one turn

NewSms SampleSms() {
  NewSms sms;
  sms.to = "+27821234567";
  sms.msg = "Dear customer, your order has left our house and will be with you on Friday.";
  sms.sender_id = "Orvalo";
  sms.charge = "?";
  return sms;
}

// The other side: statements on a connection of its own, nothing else.
class BareFile {
 public:
  explicit BareFile(const std::string& path) {
    Check(sqlite3_open_v2(path.c_str(), &handle_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                          nullptr));
    Execute("PRAGMA synchronous=NORMAL; PRAGMA wal_autocheckpoint=10000");
    insert_ = Prepare(
        "INSERT INTO SMS VALUES(NULL, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, '', "
        "'')");
    update_ = Prepare("UPDATE SMS SET Stat = ?2 WHERE ID = ?1");
    read_ = Prepare("SELECT * FROM SMS WHERE ID = ?");
  }
  ~BareFile() {
    for (sqlite3_stmt* statement : {insert_, update_, read_}) sqlite3_finalize(statement);
    sqlite3_close(handle_);
  }
  BareFile(const BareFile&) = delete;
  BareFile& operator=(const BareFile&) = delete;

  void Execute(const char* sql) { Check(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr)); }
  void Insert(const NewSms& sms) {
    int column = 0;
    for (const std::int32_t number : {1'000'000'000, 0, 0, 1}) {
      sqlite3_bind_int(insert_, ++column, number);
    }
    static const std::string none;
    for (const std::string* text : {&sms.to, &sms.to, &sms.msg, &none}) BindText(++column, *text);
    sqlite3_bind_int(insert_, ++column, 0);
    BindText(++column, sms.sender_id);
    for (int i = 0; i < 3; ++i) sqlite3_bind_int(insert_, ++column, 0);
    BindText(++column, sms.charge);
    Finish(insert_);
  }
  void Update(std::int32_t id, std::int32_t status) {
    sqlite3_bind_int(update_, 1, id);
    sqlite3_bind_int(update_, 2, status);
    Finish(update_);
  }
  // Copies the row out, as whoever reads it must.
  void Read(std::int32_t id, MessageRow& row) {
    sqlite3_bind_int(read_, 1, id);
    if (sqlite3_step(read_) != SQLITE_ROW) std::abort();
    int column = 0;
    for (std::int32_t* number : {&row.id, &row.time, &row.stat, &row.type, &row.ref_id}) {
      *number = sqlite3_column_int(read_, column++);
    }
    for (std::string* text : {&row.to, &row.to_info, &row.msg, &row.api_msg_id}) {
      CopyText(column++, *text);
    }
    row.saved_stat = sqlite3_column_int(read_, column++);
    CopyText(column++, row.sender_id);
    for (std::int32_t* number : {&row.delay, &row.query_time, &row.stat_qry_tm}) {
      *number = sqlite3_column_int(read_, column++);
    }
    CopyText(column, row.charge);
    sqlite3_reset(read_);
  }

 private:
  static void Check(int result) {
    if (result != SQLITE_OK) std::abort();
  }
  sqlite3_stmt* Prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    Check(sqlite3_prepare_v3(handle_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    return statement;
  }
  void BindText(int column, const std::string& text) {
    sqlite3_bind_text(insert_, column, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }
  void CopyText(int column, std::string& text) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(read_, column));
    text.assign(bytes, static_cast<std::size_t>(sqlite3_column_bytes(read_, column)));
  }
  static void Finish(sqlite3_stmt* statement) {
    if (sqlite3_step(statement) != SQLITE_DONE) std::abort();
    sqlite3_reset(statement);
  }

  sqlite3* handle_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
  sqlite3_stmt* update_ = nullptr;
  sqlite3_stmt* read_ = nullptr;
};

// Two files of the same layout with the same rows: one for each side.
struct Sides {
  Sides() {
    for (const auto* folder : {&our_folder, &bare_folder}) {
      SmsDatabase database(folder->path(), texts, platform::SystemClock());
      SmsDatabase::Transaction transaction(database);
      for (std::int32_t i = 0; i < kRows; ++i) database.AddSms(SampleSms());
      transaction.Commit();
    }
    ours = std::make_unique<SmsDatabase>(our_folder.path(), texts, platform::SystemClock());
    bare = std::make_unique<BareFile>(bare_folder.File("SMS.db"));
  }
  Texts texts;
  test::TemporaryFolder our_folder;
  test::TemporaryFolder bare_folder;
  std::unique_ptr<SmsDatabase> ours;
  std::unique_ptr<BareFile> bare;
};

double SecondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double MedianMicroseconds(std::vector<double>& seconds) {
  const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
  std::nth_element(seconds.begin(), middle, seconds.end());
  return *middle / kRound * 1e6;
}

// Runs both by turns, and who begins changes as well. Medians: a checkpoint that falls into one
// turn, or a neighbour on the machine, is nobody's cost.
void Compare(benchmark::State& state, const std::function<void()>& ours,
             const std::function<void()>& bare) {
  std::vector<double> our_seconds;
  std::vector<double> bare_seconds;
  bool ours_first = false;
  for (auto unused : state) {
    ours_first = !ours_first;
    if (!ours_first) bare_seconds.push_back(SecondsOf(bare));
    our_seconds.push_back(SecondsOf(ours));
    state.SetIterationTime(our_seconds.back());
    if (ours_first) bare_seconds.push_back(SecondsOf(bare));
  }
  const double our_us = MedianMicroseconds(our_seconds);
  const double bare_us = MedianMicroseconds(bare_seconds);
  state.counters["ours_us"] = our_us;
  state.counters["bare_us"] = bare_us;
  state.counters["ratio"] = bare_us / our_us;
}

// Visits all rows in a scattered order.
class Scatter {
 public:
  std::int32_t Next() {
    place_ = (place_ + 61'803) % kRows;
    return place_ + 1;
  }

 private:
  std::int32_t place_ = 0;
};

void InsertEach(benchmark::State& state) {
  Sides sides;
  const NewSms sms = SampleSms();
  Compare(
      state,
      [&] {
        for (int i = 0; i < kRound; ++i) sides.ours->AddSms(sms);
      },
      [&] {
        for (int i = 0; i < kRound; ++i) sides.bare->Insert(sms);
      });
}

void InsertGrouped(benchmark::State& state) {
  Sides sides;
  const NewSms sms = SampleSms();
  const std::vector<SmsDatabase::ChildSms> children(kRound, {sms.to, {SmsStatus::kPending}});
  Compare(
      state, [&] { sides.ours->AddChildren(1, children); },
      [&] {
        sides.bare->Execute("BEGIN");
        for (int i = 0; i < kRound; ++i) sides.bare->Insert(sms);
        sides.bare->Execute("COMMIT");
      });
}

void UpdateEach(benchmark::State& state) {
  Sides sides;
  Scatter our_ids;
  Scatter bare_ids;
  Compare(
      state,
      [&] {
        for (int i = 0; i < kRound; ++i) {
          sides.ours->SetSmsStatus(our_ids.Next(),
                                   i % 2 == 0 ? SmsStatus::kSent : SmsStatus::kUnknown);
        }
      },
      [&] {
        for (int i = 0; i < kRound; ++i) sides.bare->Update(bare_ids.Next(), i % 2 == 0 ? 3 : 11);
      });
}

void UpdateGrouped(benchmark::State& state) {
  Sides sides;
  Scatter our_ids;
  Scatter bare_ids;
  Compare(
      state,
      [&] {
        SmsDatabase::Transaction transaction(*sides.ours);
        for (int i = 0; i < kRound; ++i) {
          sides.ours->SetSmsStatus(our_ids.Next(),
                                   i % 2 == 0 ? SmsStatus::kSent : SmsStatus::kUnknown);
        }
        transaction.Commit();
      },
      [&] {
        sides.bare->Execute("BEGIN");
        for (int i = 0; i < kRound; ++i) sides.bare->Update(bare_ids.Next(), i % 2 == 0 ? 3 : 11);
        sides.bare->Execute("COMMIT");
      });
}

void ReadById(benchmark::State& state) {
  Sides sides;
  Scatter our_ids;
  Scatter bare_ids;
  Compare(
      state,
      [&] {
        for (int i = 0; i < kRound; ++i) {
          benchmark::DoNotOptimize(sides.ours->GetSms(our_ids.Next()));
        }
      },
      [&] {
        for (int i = 0; i < kRound; ++i) {
          MessageRow row;
          sides.bare->Read(bare_ids.Next(), row);
          benchmark::DoNotOptimize(row);
        }
      });
}

// The time of an expansion to a hundred thousand recipients in one piece, in seconds.
void AddHundredThousandChildren(benchmark::State& state) {
  const Texts texts;
  const NewSms sms = SampleSms();
  const std::vector<SmsDatabase::ChildSms> children(
      100'000, {sms.to, {SmsStatus::kUnknown, ",ID: 0123456789abcdef0123456789abcdef", 60, 1}});
  for (auto unused : state) {
    const test::TemporaryFolder folder;
    SmsDatabase database(folder.path(), texts, platform::SystemClock());
    const std::int32_t parent = database.AddSms(sms);
    state.SetIterationTime(SecondsOf([&] { database.AddChildren(parent, children); }));
  }
}

BENCHMARK(InsertEach)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(InsertGrouped)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);
BENCHMARK(UpdateEach)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(UpdateGrouped)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(ReadById)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(AddHundredThousandChildren)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace
}  // namespace orvalo
