// What the recipient tree costs with 100,000 contacts in 1,000 groups: its opening beside that of
// an empty one, and ticking a large group beside ten times a group of a tenth. Needs no display.
// What counts is "ratio" (medians of turns by turns).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTreeView>
#include <memory>
#include <string>
#include <vector>

#include "app/settings.h"
#include "app/texts.h"
#include "contacts/external_address_book.h"
#include "contacts/recent_list.h"
#include "messages/compose_page.h"
#include "messages/compose_services.h"
#include "messages/message_texts.h"
#include "messages/outbox_caption.h"
#include "messages/recipient_selection.h"
#include "platform/clock.h"
#include "store/sms_database.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "timing.h"
#include "ui/compose_window.h"
#include "ui/form_loader.h"
#include "ui/images.h"
#include "ui/scripted_file_dialogs.h"
#include "ui/theme.h"

namespace orvalo::ui {
namespace {

constexpr int kGroups = 1'000;
constexpr int kContacts = 100'000;
constexpr int kLargeGroup = 10'000;
constexpr int kSmallGroup = 1'000;
constexpr QSize kPageSize(904, 510);

struct NoServices : ComposeServices {
  std::int32_t QueueMessage(const QueuedMessage&) override { return 0; }
  void QueryBalance() override {}
  std::string BalanceText() const override { return {}; }
  std::string BalanceHint() const override { return {}; }
};
struct NoCaption : OutboxCaption {
  void UpdateCaption() override {}
};

struct AddressBook {
  explicit AddressBook(bool full) {
    if (!full) return;
    SmsDatabase::Transaction transaction(database);
    ContactRecord contact;
    contact.name = "Maria";
    contact.surname = "Silva";
    contact.group_ids = {0};
    for (int group = 0, added = 0; group < kGroups; ++group) {
      contact.group_ids[0] = database.AddGroup("Group " + std::to_string(group)).gid;
      const int rest = (kContacts - added) / (kGroups - group);
      const int members = group == 0 ? kLargeGroup : group == 1 ? kSmallGroup : rest;
      for (int member = 0; member < members; ++member) {
        contact.mobile = std::to_string(351'900'000'000 + added++);
        database.AddContact(contact);
      }
    }
    transaction.Commit();
  }
  static AddressBook& Full() {
    static AddressBook book(true);
    return book;
  }
  static AddressBook& Empty() {
    static AddressBook book(false);
    return book;
  }
  test::TemporaryFolder folder;
  Texts texts;
  SmsDatabase database{folder.path(), texts, platform::SystemClock()};
};

// The compose page over an address book, its tree not shown yet.
class Page {
 public:
  explicit Page(AddressBook& book)
      : kit_{forms_, images_, book.texts, files_},
        window_(kit_, {.boxes = boxes_,
                       .clock = platform::SystemClock(),
                       .ask_schedule = {},
                       .request_balance = {}}),
        recipients_({book.database, settings_, recent_, external_, book.texts, boxes_,
                     window_.Recipients()}),
        page_({book.database, settings_, book.texts, types_, boxes_, services_, caption_,
               recipients_, window_, platform::SystemClock()}) {
    window_.Connect(page_, recipients_);
    window_.resize(kPageSize);
    tree().ensurePolished();
  }

  // Up to the first picture of the groups.
  void Open() {
    page_.SetUp();
    tree().expand(tree().model()->index(0, 0));
    Paint();
  }
  // Up to the new state of the group's box; what is drawn is the same for all groups.
  void Tick(int group, bool ticked) {
    QAbstractItemModel& model = *tree().model();
    const QModelIndex index = model.index(group, 0, model.index(0, 0));
    model.setData(index, ticked ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    benchmark::DoNotOptimize(index.data(Qt::CheckStateRole));
  }

 private:
  QTreeView& tree() { return Child<QTreeView>(window_, "recipientTree"); }
  void Paint() { benchmark::DoNotOptimize(tree().grab()); }

  FormLoader forms_{platform::ResourceContainer::BuiltIn()};
  Images images_{platform::ResourceContainer::BuiltIn()};
  test::ScriptedFileDialogs files_;
  test::ScriptedMessageBoxes boxes_;
  AppSettings settings_;
  MessageTypeNames types_;
  NoServices services_;
  NoCaption caption_;
  RecentList recent_{settings_};
  ExternalAddressBook external_{settings_, nullptr};
  Kit kit_;
  ComposeWindow window_;
  RecipientSelection recipients_;
  ComposePage page_;
};

void Report(benchmark::State& state, std::vector<double>& ours, std::vector<double>& floor) {
  state.counters["ours_ms"] = bench::Median(ours) * 1e3;
  state.counters["floor_ms"] = bench::Median(floor) * 1e3;
  state.counters["ratio"] = bench::Median(ours) / bench::Median(floor);
}

// Goal: at most 5.
void OpenTree(benchmark::State& state) {
  std::vector<double> ours;
  std::vector<double> empty;
  for (auto unused : state) {
    Page none(AddressBook::Empty());
    empty.push_back(bench::SecondsFor([&] { none.Open(); }));
    Page page(AddressBook::Full());
    ours.push_back(bench::SecondsFor([&] { page.Open(); }));
    state.SetIterationTime(ours.back());
  }
  Report(state, ours, empty);
}

// Goal: at most 2. The group is clear before each tick.
void TickGroup(benchmark::State& state) {
  Page page(AddressBook::Full());
  page.Open();
  std::vector<double> ours;
  std::vector<double> small;
  for (auto unused : state) {
    double seconds = 0;
    for (int time = 0; time < kLargeGroup / kSmallGroup; ++time) {
      seconds += bench::SecondsFor([&] { page.Tick(1, true); });
      page.Tick(1, false);
    }
    small.push_back(seconds);
    ours.push_back(bench::SecondsFor([&] { page.Tick(0, true); }));
    page.Tick(0, false);
    state.SetIterationTime(ours.back());
  }
  Report(state, ours, small);
}

BENCHMARK(OpenTree)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);
BENCHMARK(TickGroup)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
}  // namespace orvalo::ui

int main(int count, char** values) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(count, values);
  orvalo::ui::ApplyTheme(orvalo::ui::Theme(QApplication::palette()));
  benchmark::Initialize(&count, values);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
