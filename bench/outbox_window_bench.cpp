// What the outbox's window costs with a million messages, beside a plain table of as many empty
// rows: its first paint, its memory, a row refresh, a line read while the engine writes. Needs no
// display. Sorting and refreshing stand in outbox_bench.cpp.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <QAbstractTableModel>
#include <QApplication>
#include <QHeaderView>
#include <QProcess>
#include <QTableView>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/engine_requests.h"
#include "messages/message_texts.h"
#include "messages/outbox_copy.h"
#include "million_messages.h"
#include "platform/clipboard.h"
#include "platform/clock.h"
#include "store/sms_database.h"
#include "support/recording_mailbox.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "timing.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/outbox_window_page.h"
#include "ui/scripted_file_dialogs.h"
#include "ui/theme.h"

namespace orvalo::ui {
namespace {

constexpr int kMillion = 1'000'000;
constexpr QSize kPageSize(904, 510);
constexpr char kMemorySwitch[] = "--memory";

class NoEngine : public EngineCommands {
 public:
  void RequestSend(IdList) override {}
  void RequestQuery(IdList) override {}
};

class NoClipboard : public platform::Clipboard {
 public:
  bool SetText(const std::string&) override { return false; }
};

// An outbox on a data folder, its window not shown yet.
class Outbox {
 public:
  explicit Outbox(const std::string& folder)
      : database(folder, texts_, clock_), window(MakeWindow()), page(Parts(), *window) {
    window->SetPage(&page);
    page.SetUp();
  }

  std::unique_ptr<OutboxWindowPage> MakeWindow() {
    auto made = std::make_unique<OutboxWindowPage>(
        kit_, OutboxWindowPage::Links{[](const std::string&) {}, [] { return true; },
                                      [](const std::vector<std::int32_t>&) {}, [] {}});
    return made;
  }

 private:
  OutboxParts Parts() {
    return {database,     settings_,    texts_,  fields_, boxes_,
            main_window_, own_mailbox_, engine_, copy_,   {}};
  }

  Texts texts_;
  platform::Clock& clock_ = platform::SystemClock();
  AppSettings settings_;
  SmsStatusNames status_names_;
  MessageTypeNames type_names_;
  test::ScriptedMessageBoxes boxes_;
  test::RecordingMailbox main_window_, own_mailbox_;
  test::ScriptedFileDialogs files_;
  NoEngine engine_;
  NoClipboard clipboard_;
  FormLoader forms_{platform::ResourceContainer::BuiltIn()};
  Images images_{platform::ResourceContainer::BuiltIn()};
  Kit kit_{forms_, images_, texts_, files_};

 public:
  SmsDatabase database;

 private:
  MessageTexts fields_{database, settings_, texts_, status_names_, type_names_, clock_};
  OutboxCopy copy_{database, fields_, texts_, clipboard_};

 public:
  std::unique_ptr<OutboxWindowPage> window;
  OutboxPage page;
};

// A data folder with a million messages, made when the first asks for it.
const std::string& MillionFolder() {
  static const test::TemporaryFolder folder;
  static const bool filled = [] {
    const Texts texts;
    { const SmsDatabase made(folder.path(), texts, platform::SystemClock()); }
    sqlite3* handle = nullptr;
    const bool done =
        sqlite3_open(folder.File("SMS.db").c_str(), &handle) == SQLITE_OK &&
        sqlite3_exec(handle, bench::kFillMessages, nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(handle);
    if (!done) std::abort();
    return true;
  }();
  benchmark::DoNotOptimize(filled);
  return folder.path();
}

// A plain table of a million empty rows.
class EmptyRows : public QAbstractTableModel {
 public:
  int rowCount(const QModelIndex&) const override { return kMillion; }
  int columnCount(const QModelIndex&) const override { return kOutboxColumnCount; }
  QVariant data(const QModelIndex&, int) const override { return {}; }
};

void Fill(QTableView& table, EmptyRows& rows) {
  table.setSelectionBehavior(QAbstractItemView::SelectRows);
  table.verticalHeader()->hide();
  table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table.setModel(&rows);
}

void Paint(QWidget& window) {
  window.resize(kPageSize);
  window.show();
  benchmark::DoNotOptimize(window.grab());
}

// The page is made, shown and painted; the order of the messages is known. Beside it the same page
// with a plain table in its list's place ("ratio"), and the plain table alone.
void FirstPaint(benchmark::State& state) {
  Outbox outbox(MillionFolder());
  const FormLoader forms(platform::ResourceContainer::BuiltIn());
  EmptyRows rows;
  std::vector<double> ours;
  std::vector<double> plain;
  std::vector<double> alone;
  for (auto unused : state) {
    ours.push_back(bench::CpuSecondsFor([&] {
      const auto window = outbox.MakeWindow();
      window->SetPage(&outbox.page);
      window->SetRowCount(outbox.page.RowCount());
      Paint(*window);
    }));
    plain.push_back(bench::CpuSecondsFor([&] {
      QWidget page;
      forms.LoadInto(page, 133);
      Fill(Child<QTableView>(page, "outboxList"), rows);
      Paint(page);
    }));
    alone.push_back(bench::CpuSecondsFor([&] {
      QTableView table;
      Fill(table, rows);
      Paint(table);
    }));
    state.SetIterationTime(ours.back());
  }
  state.counters["ours_ms"] = bench::Median(ours) * 1e3;
  state.counters["plain_ms"] = bench::Median(plain) * 1e3;
  state.counters["alone_ms"] = bench::Median(alone) * 1e3;
  state.counters["ratio"] = bench::Median(ours) / bench::Median(plain);
}

// The engine has one more message in hand, and the list is drawn anew, sorted by time: beside the
// same in a list of a thousand.
void RowRefresh(benchmark::State& state) {
  const test::TemporaryFolder small_folder;
  Outbox small(small_folder.path());
  {
    SmsDatabase::Transaction transaction(small.database);
    NewSms sms;
    sms.to = ",0821234567";
    sms.msg = "Dear customer, your order has left our house and will be with you on Friday.";
    for (int i = 0; i < 1'000; ++i) small.database.AddSms(sms);
    transaction.Commit();
  }
  small.page.BroughtToFront();
  Outbox large(MillionFolder());
  std::int32_t id = 0;
  const auto refresh = [&id](Outbox& outbox) {
    id = id % 1'000 + 1;
    outbox.page.MessageInHand(id);
    outbox.page.RefreshRequested();
    benchmark::DoNotOptimize(outbox.window->grab());
  };
  for (Outbox* outbox : {&small, &large}) {
    outbox->page.SelectAll();
    Paint(*outbox->window);
  }
  std::vector<double> of_thousand;
  std::vector<double> of_million;
  for (auto unused : state) {
    of_thousand.push_back(bench::CpuSecondsFor([&] { refresh(small); }));
    of_million.push_back(bench::CpuSecondsFor([&] { refresh(large); }));
    state.SetIterationTime(of_million.back());
  }
  state.counters["thousand_ms"] = bench::Median(of_thousand) * 1e3;
  state.counters["million_ms"] = bench::Median(of_million) * 1e3;
  state.counters["ratio"] = bench::Median(of_million) / bench::Median(of_thousand);
}

// How long reads of single lines take, the longest last, while another thread does `work`.
std::vector<double> ReadBeside(OutboxPage& page, std::int64_t reads,
                               const std::function<void()>& work) {
  std::atomic<bool> stop = false;
  std::thread other([&] {
    while (!stop) work();
  });
  std::vector<double> seconds;
  seconds.reserve(static_cast<std::size_t>(reads));
  for (std::int64_t i = 0; i < reads; ++i) {
    const auto position = static_cast<std::size_t>(i * 7'919 % kMillion);
    seconds.push_back(bench::SecondsFor([&] { benchmark::DoNotOptimize(page.LineAt(position)); }));
  }
  stop = true;
  other.join();
  std::sort(seconds.begin(), seconds.end());
  return seconds;
}

// Lines are read while another thread stores outcomes, a thousand in a transaction; beside that,
// while it only computes: on a machine that is shared, a read may wait for the processor as well.
void ReadWhileWriting(benchmark::State& state) {
  Outbox outbox(MillionFolder());
  std::int32_t id = 0;
  std::int64_t written = 0;
  const auto write = [&] {
    SmsDatabase::Transaction transaction(outbox.database);
    for (int i = 0; i < 1'000; ++i, ++written) {
      id = (id + 61'803) % kMillion;
      outbox.database.SetQueryAnswer(id + 1, bench::StatusOfMessage(id + 1),
                                     {std::nullopt, std::to_string(written % 7)});
    }
    transaction.Commit();
  };
  const auto compute = [] {
    for (int i = 0; i < 1'000'000; ++i) benchmark::DoNotOptimize(i);
  };
  for (auto unused : state) {
    const auto writing = ReadBeside(outbox.page, 100'000, write);
    const auto computing = ReadBeside(outbox.page, 100'000, compute);
    const std::size_t late = writing.size() - 1 - writing.size() / 1'000;
    state.counters["p99.9_ms"] = writing[late] * 1e3;
    state.counters["worst_ms"] = writing.back() * 1e3;
    state.counters["unwritten_p99.9_ms"] = computing[late] * 1e3;
    state.counters["unwritten_worst_ms"] = computing.back() * 1e3;
  }
  state.counters["written"] = static_cast<double>(written);
}

// A sort that scatters a selection into as many runs as are shown one by one.
void SortScatteredSelection(benchmark::State& state) {
  Outbox outbox(MillionFolder());
  Paint(*outbox.window);
  outbox.page.RangeSelected(0, static_cast<std::size_t>(state.range(0)) - 1);
  outbox.page.HeaderClicked(OutboxColumn::kStatus);
  for (auto unused : state) {
    outbox.page.HeaderClicked(OutboxColumn::kStatus);
    benchmark::DoNotOptimize(outbox.window->grab());
  }
  state.counters["runs"] = static_cast<double>(outbox.page.SelectedRuns().size());
}

// In megabytes, of this process.
double MemoryInUse() {
  constexpr double kPage = 4096.0 / (1024 * 1024);
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  double shared = 0;
  statm >> total >> resident >> shared;
  return (resident - shared) * kPage;
}

// A process of its own: shows the outbox of `folder`, sorts it twice and prints its memory after
// each step.
int PrintMemory(const std::string& folder) {
  Outbox outbox(folder);
  Paint(*outbox.window);
  std::printf("%f", MemoryInUse());
  for (const OutboxColumn column : {OutboxColumn::kRecipient, OutboxColumn::kMessage}) {
    outbox.page.HeaderClicked(column);
    outbox.window->grab();
    std::printf(" %f", MemoryInUse());
  }
  return 0;
}

QList<double> MemoryOf(const std::string& folder) {
  QProcess process;
  process.start(QApplication::applicationFilePath(),
                {QString::fromLatin1(kMemorySwitch), QString::fromStdString(folder)});
  process.waitForFinished(-1);
  QList<double> values;
  for (const QByteArray& value : process.readAllStandardOutput().split(' ')) {
    values.append(value.toDouble());
  }
  return values;
}

void Memory(benchmark::State& state) {
  const test::TemporaryFolder empty;
  for (auto unused : state) {
    const QList<double> with = MemoryOf(MillionFolder());
    const QList<double> without = MemoryOf(empty.path());
    state.counters["shown_MB"] = with[0] - without[0];
    state.counters["by_recipient_MB"] = with[1] - without[1];
    state.counters["by_message_MB"] = with[2] - without[2];
  }
}

BENCHMARK(Memory)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(FirstPaint)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(15);
BENCHMARK(RowRefresh)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);
BENCHMARK(ReadWhileWriting)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SortScatteredSelection)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(4);

}  // namespace
}  // namespace orvalo::ui

int main(int count, char** values) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(count, values);
  orvalo::ui::ApplyTheme(orvalo::ui::Theme(QApplication::palette()));
  if (count == 3 && std::string(values[1]) == orvalo::ui::kMemorySwitch) {
    return orvalo::ui::PrintMemory(values[2]);
  }
  benchmark::Initialize(&count, values);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
