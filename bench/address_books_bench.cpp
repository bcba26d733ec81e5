// What reading a directory of 10,000 people into the tree costs beside the directory's own search
// program fetching the same entries and attributes, its output thrown away. Both connect, read and
// end by turns against one real server; what counts is "ratio", our time to the program's
// (medians).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "app/settings.h"
#include "app/texts.h"
#include "contacts/outside_address_books.h"
#include "support/child_process.h"
#include "support/scripted_message_boxes.h"
#include "support/slapd.h"
#include "timing.h"

namespace orvalo {
namespace {

constexpr int kPeople = 10'000;
constexpr std::size_t kEntries = 7'500;  // every fourth has no mobile number
constexpr int kRounds = 21;
constexpr char kSuffix[] = "dc=orvalo,dc=test";
constexpr char kFilter[] =
    "(|(&(mobile=*)(|(objectClass=inetOrgPerson)(objectClass=user)(objectClass=person)))"
    "(objectClass=groupOfNames)(objectClass=organizationalUnit))";

std::string People() {
  std::string ldif =
      "dn: dc=orvalo,dc=test\nobjectClass: domain\n\n"
      "dn: ou=People,dc=orvalo,dc=test\nobjectClass: organizationalUnit\n\n";
  for (int i = 0; i < kPeople; ++i) {
    const std::string number = std::to_string(10'000 + i);
    ldif += "dn: uid=p" + number + ",ou=People,dc=orvalo,dc=test\nobjectClass: inetOrgPerson\n" +
            "cn: Person " + number + "\nsn: " + number + "\nmail: p" + number + "@orvalo.test\n" +
            (i % 4 == 0 ? "\n" : "mobile: +31 69 00" + number + "\n\n");
  }
  return ldif;
}

void LoadDirectory(const std::string& address) {
  AppSettings settings;
  const Texts texts;
  test::ScriptedMessageBoxes boxes;
  settings.SetFlag(FlagSetting::kMapiAddressBook, true);
  settings.SetText(TextSetting::kOutlookName, address);
  OutsideAddressBooks source(settings, texts, boxes, nullptr, {});
  ExternalAddressBook book(settings, &source);
  book.LoadExternalAddressBook(true);
  if (book.tree().EntryCount() != kEntries || !source.Problems().empty()) std::abort();
}

void SearchDirectory(const std::string& url) {
  test::ChildProcess search({ORVALO_LDAPSEARCH, "-x", "-LLL", "-H", url, "-b", kSuffix, kFilter,
                             "displayName", "cn", "mobile", "member", "uniqueMember"},
                            "/dev/null", "/dev/null");
  if (search.Wait() != 0) std::abort();
}

void DirectoryWalk(benchmark::State& state) {
  const test::Slapd server(People());
  if (!server.IsUp()) std::abort();
  std::vector<double> ours, floor;
  for (auto unused : state) {
    ours.push_back(bench::SecondsFor([&] { LoadDirectory(server.url() + "/" + kSuffix); }));
    state.SetIterationTime(ours.back());
    floor.push_back(bench::SecondsFor([&] { SearchDirectory(server.url()); }));
  }
  state.counters["ours_ms"] = bench::Median(ours) * 1e3;
  state.counters["floor_ms"] = bench::Median(floor) * 1e3;
  state.counters["ratio"] = bench::Median(ours) / bench::Median(floor);
}

BENCHMARK(DirectoryWalk)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(kRounds);

}  // namespace
}  // namespace orvalo
