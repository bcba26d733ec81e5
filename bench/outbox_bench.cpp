// What sorting the outbox costs beside the database doing it: a million messages, ordered by a
// number and by a text. Both sides run by turns on the same file; what counts is "ratio", our time
// to the database's (medians).
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unicode/ucol.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/texts.h"
#include "messages/outbox_rows.h"
#include "million_messages.h"
#include "platform/clock.h"
#include "store/sms_database.h"
#include "support/temporary_folder.h"
#include "timing.h"

namespace orvalo {
namespace {

constexpr int kRounds = 5;

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
    bare.Execute(bench::kFillMessages);
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

// `prepare` comes before each of our turns and is not measured.
void CompareOrders(benchmark::State& state, const std::function<void()>& prepare,
                   const std::function<void()>& ours, const std::string& order) {
  std::vector<double> our_seconds;
  std::vector<double> bare_seconds;
  for (auto unused : state) {
    prepare();
    our_seconds.push_back(bench::SecondsFor(ours));
    state.SetIterationTime(our_seconds.back());
    bare_seconds.push_back(
        bench::SecondsFor([&] { benchmark::DoNotOptimize(Million::Get().bare.Ids(order)); }));
  }
  state.counters["ours_ms"] = bench::Median(our_seconds) * 1e3;
  state.counters["bare_ms"] = bench::Median(bare_seconds) * 1e3;
  state.counters["ratio"] = bench::Median(our_seconds) / bench::Median(bare_seconds);
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
          million.database.SetQueryAnswer(id + 1, bench::StatusOfMessage(id + 1),
                                          {std::nullopt, std::to_string(i % 7)});
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
