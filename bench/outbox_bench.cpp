// What sorting the outbox costs beside the database doing it: a million messages, ordered by a
// number and by a text. Both sides run by turns on the same file; what counts is "ratio", our time
// to the database's (medians).
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unicode/ucol.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/texts.h"
#include "messages/outbox_rows.h"
#include "platform/clock.h"
#include "store/sms_database.h"
#include "support/temporary_folder.h"

namespace orvalo {
namespace {

constexpr int kRounds = 5;

constexpr const char* kFill = R"(
WITH RECURSIVE Numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM Numbers WHERE n < 1000000),
  Mixed(n, a, b, c) AS (SELECT n, n * 7919 % 1000003, n * 104729 % 997, n * 15485863 % 991
                        FROM Numbers)
INSERT INTO SMS SELECT n, 1700000000 + a * 37, a % 18, 0, n, ',2782' || (1000000 + a),
  char(65 + b % 26) || 'n' || char(97 + b / 26) || 'a ' || char(65 + c % 26) || 'e'
    || char(97 + c / 26) || 'mark ' || a,
  'Dear customer, your order ' || a || ' has left our house and will be with you on Friday.',
  ',ID: 0123456789abcdef0123456789abcdef', 0, 'Orvalo', 0, 0, 0, '1.' || b % 10 FROM Mixed;
CREATE INDEX BY_TIME ON SMS(Time);
)";

// The database's side: a connection of its own and the collation that ours uses.
class BareOrder {
 public:
  explicit BareOrder(const std::string& path) {
    Check(sqlite3_open(path.c_str(), &handle_));
    UErrorCode status = U_ZERO_ERROR;
    collator_ = ucol_open("en", &status);
    ucol_setAttribute(collator_, UCOL_CASE_FIRST, UCOL_LOWER_FIRST, &status);
    Check(sqlite3_create_collation(handle_, "DICTIONARY", SQLITE_UTF8, collator_, &Compare));
  }
  ~BareOrder() {
    sqlite3_close(handle_);
    ucol_close(collator_);
  }
  BareOrder(const BareOrder&) = delete;
  BareOrder& operator=(const BareOrder&) = delete;

  void Execute(const char* sql) { Check(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr)); }

  std::vector<std::int32_t> Ids(const std::string& order) {
    std::vector<std::int32_t> ids;
    sqlite3_stmt* statement = nullptr;
    Check(sqlite3_prepare_v2(handle_, ("SELECT ID FROM SMS ORDER BY " + order).c_str(), -1,
                             &statement, nullptr));
    while (sqlite3_step(statement) == SQLITE_ROW) ids.push_back(sqlite3_column_int(statement, 0));
    Check(sqlite3_finalize(statement));
    return ids;
  }

 private:
  static void Check(int result) {
    if (result != SQLITE_OK) std::abort();
  }
  static int Compare(void* collator, int a_size, const void* a, int b_size, const void* b) {
    UErrorCode status = U_ZERO_ERROR;
    return ucol_strcollUTF8(static_cast<UCollator*>(collator), static_cast<const char*>(a), a_size,
                            static_cast<const char*>(b), b_size, &status);
  }

  sqlite3* handle_ = nullptr;
  UCollator* collator_ = nullptr;
};

// One file for all measurements, made when the first asks for it.
struct Million {
  Million() {
    bare.Execute(kFill);
    bare.Execute("ANALYZE; PRAGMA wal_checkpoint(TRUNCATE)");
  }
  static Million& Get() {
    static Million million;
    return million;
  }
  test::TemporaryFolder folder;
  Texts texts;
  SmsDatabase database{folder.path(), texts, platform::SystemClock()};
  BareOrder bare{folder.File("SMS.db")};
};

double SecondsFor(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double>& seconds) {
  const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
  std::nth_element(seconds.begin(), middle, seconds.end());
  return *middle;
}

// `prepare` comes before each of our turns and is not measured.
void CompareOrders(benchmark::State& state, const std::function<void()>& prepare,
                   const std::function<void()>& ours, const std::string& order) {
  std::vector<double> our_seconds;
  std::vector<double> bare_seconds;
  for (auto unused : state) {
    prepare();
    our_seconds.push_back(SecondsFor(ours));
    state.SetIterationTime(our_seconds.back());
    bare_seconds.push_back(
        SecondsFor([&] { benchmark::DoNotOptimize(Million::Get().bare.Ids(order)); }));
  }
  state.counters["ours_ms"] = Median(our_seconds) * 1e3;
  state.counters["bare_ms"] = Median(bare_seconds) * 1e3;
  state.counters["ratio"] = Median(our_seconds) / Median(bare_seconds);
}

void NumberOrder(benchmark::State& state) {
  OutboxRows rows(Million::Get().database);
  rows.Reload();
  CompareOrders(
      state, [&] { rows.SortBy(OutboxColumn::kStatus); }, [&] { rows.SortBy(OutboxColumn::kTime); },
      "Time");
}

struct TextCase {
  OutboxColumn column;
  const char* order;
};
constexpr TextCase kTextCases[] = {
    {OutboxColumn::kRecipient, "ToInfo COLLATE DICTIONARY"},
    {OutboxColumn::kMessage, "Msg COLLATE DICTIONARY"},
};

void FirstTextOrder(benchmark::State& state) {
  const TextCase& text = kTextCases[state.range(0)];
  std::unique_ptr<OutboxRows> rows;
  CompareOrders(
      state,
      [&] {
        rows = std::make_unique<OutboxRows>(Million::Get().database);
        rows->Reload();
      },
      [&] { rows->SortBy(text.column); }, text.order);
}

void TextOrderAgain(benchmark::State& state) {
  const TextCase& text = kTextCases[state.range(0)];
  OutboxRows rows(Million::Get().database);
  rows.Reload();
  rows.SortBy(text.column);
  CompareOrders(
      state, [&] { rows.SortBy(OutboxColumn::kTime); }, [&] { rows.SortBy(text.column); },
      text.order);
}

// The whole refresh after a pass that changed a thousand rows, sorted by a text that changes.
void RefreshAfterPass(benchmark::State& state) {
  Million& million = Million::Get();
  OutboxRows rows(million.database);
  rows.Reload();
  rows.SortBy(OutboxColumn::kCharge);
  std::int32_t id = 0;
  CompareOrders(
      state,
      [&] {
        SmsDatabase::Transaction transaction(million.database);
        for (int i = 0; i < 1'000; ++i) {
          id = (id + 61'803) % 1'000'000;
          million.database.SetStatusAndCharge(id + 1, std::nullopt, std::to_string(i % 7));
        }
        transaction.Commit();
      },
      [&] { rows.Reload(); }, "Charge COLLATE DICTIONARY");
}

BENCHMARK(NumberOrder)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3 * kRounds);
BENCHMARK(FirstTextOrder)
    ->DenseRange(0, 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(kRounds);
BENCHMARK(TextOrderAgain)
    ->DenseRange(0, 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(kRounds);
BENCHMARK(RefreshAfterPass)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(kRounds);

}  // namespace
}  // namespace orvalo
