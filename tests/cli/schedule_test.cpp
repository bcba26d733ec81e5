#include <filesystem>

#include "app/data_file.h"
#include "gateway/occurrences.h"
#include "orvaloctl_fixture.h"

namespace orvalo::test {
namespace {

// The fixture's clock stands at 2001-09-09 01:46:40, a Sunday.
class ScheduleTest : public OrvaloctlTest {
 protected:
  void SetUp() override { Init(); }
  Outcome Schedule(const std::vector<std::string>& args, bool message = true) {
    std::vector<std::string> command{"schedule"};
    if (message) command.insert(command.end(), {"--to", "27820000001,0831", "--text", "later"});
    command.insert(command.end(), args.begin(), args.end());
    return Run(command);
  }
};

TEST_F(ScheduleTest, TellsTheTimesOfEveryRecurrence) {
  const struct {
    std::vector<std::string> args;
    const char* times;
  } cases[] = {
      {{}, "09/09/2001 01:46\n"},
      {{"--month", "12", "--day", "24", "--hour", "18", "--minute", "0"}, "24/12/2001 18:00\n"},
      {{"--month", "2", "--day", "28", "--hour", "0"}, "28/02/2002 00:46\n"},
      {{"--daily", "14", "--times", "2"}, "09/09/2001 01:46\n23/09/2001 01:46\n"},
      {{"--weekdays", "--times", "2"}, "10/09/2001 01:46\n11/09/2001 01:46\n"},
      {{"--weekly", "2", "--on", "mon,THURSDAY", "--times", "3"},
       "10/09/2001 01:46\n13/09/2001 01:46\n24/09/2001 01:46\n"},
      {{"--monthly", "1", "--month-day", "30", "--times", "2", "--day", "30"},
       "30/09/2001 01:46\n30/10/2001 01:46\n"},
      {{"--monthly", "3", "--nth", "4", "--on", "Sun", "--times", "2"},
       "23/09/2001 01:46\n23/12/2001 01:46\n"},
  };
  for (const auto& c : cases) {
    auto args = c.args;
    args.emplace_back("--preview");
    EXPECT_EQ(Schedule(args, false).out, c.times) << testing::PrintToString(args);
  }
  EXPECT_EQ(Json({"schedule", "--preview"}).out, "[\n {\"Time\":999999960}\n]\n");
  EXPECT_TRUE(StoredMessages().empty());
}

TEST_F(ScheduleTest, StoresARowForEveryTime) {
  constexpr std::int32_t kDay = 86'400, kMinuteBegun = 999'999'960;
  std::string chosen;
  DataFile(folder() + "/SMS.dat", false).GetString(kSchedulingKey, &chosen, "none");
  EXPECT_THAT(Schedule({"--daily", "1", "--times", "2"}), EndsWith(0));
  EXPECT_THAT(Schedule({"--days-before", "2"}), FailsWith(1, "settings ScheduleToServer 1"));
  ASSERT_THAT(Run({"settings", "ScheduleToServer", "1"}), EndsWith(0));
  ASSERT_THAT(Run({"settings", "UploadToServerXDaysBefore", "3"}), EndsWith(0));
  EXPECT_THAT(Schedule({}), EndsWith(0));
  EXPECT_THAT(Schedule({"--days-before", "7"}), EndsWith(0));
  EXPECT_THAT(Schedule({"--days-before", "0"}), EndsWith(0));

  const auto rows = StoredMessages();
  const auto held = static_cast<std::int32_t>(SmsStatus::kScheduled);
  const auto handed = static_cast<std::int32_t>(SmsStatus::kDelayScheduled);
  const struct {
    std::int32_t time, status, delay, family;
  } expected[] = {{kMinuteBegun, held, 0, 1},
                  {kMinuteBegun + kDay, held, 0, 1},
                  {kMinuteBegun, handed, 3 * kDay, 3},
                  {kMinuteBegun, handed, 7 * kDay, 4},
                  {kMinuteBegun, held, 0, 5}};
  ASSERT_EQ(rows.size(), std::size(expected));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].time, expected[i].time) << i;
    EXPECT_EQ(rows[i].stat, expected[i].status) << i;
    EXPECT_EQ(rows[i].delay, expected[i].delay) << i;
    EXPECT_EQ(rows[i].ref_id, expected[i].family) << i;
    EXPECT_EQ(rows[i].to, ",27820000001,0831");
    EXPECT_EQ(rows[i].msg, "later");
  }
  std::string after;
  DataFile(folder() + "/SMS.dat", false).GetString(kSchedulingKey, &after, "none");
  EXPECT_EQ(after, chosen) << "the window's last choices";
}

TEST_F(ScheduleTest, RefusesChoicesThatDoNotGoTogether) {
  const std::vector<std::vector<std::string>> wrong{
      {"--month", "13"},
      {"--month", "2", "--day", "30"},
      {"--day", "0"},
      {"--hour", "24"},
      {"--daily", "1"},
      {"--times", "2"},
      {"--daily", "1", "--weekdays", "--times", "2"},
      {"--weekly", "1", "--times", "2"},
      {"--weekly", "1", "--on", "Mo", "--times", "2"},
      {"--weekly", "1", "--on", "Mondays", "--times", "2"},
      {"--on", "Monday"},
      {"--monthly", "1", "--times", "2"},
      {"--monthly", "1", "--month-day", "1", "--nth", "1", "--on", "Mon", "--times", "2"},
      {"--monthly", "1", "--nth", "1", "--times", "2"},
      {"--monthly", "1", "--nth", "1", "--on", "Mon,Tue", "--times", "2"},
      {"--monthly", "1", "--month-day", "1", "--on", "Mon", "--times", "2"},
      {"--daily", "1", "--month-day", "3", "--times", "2"},
      {"--days-before", "8"}};
  for (const auto& args : wrong) {
    EXPECT_THAT(Schedule(args), EndsWith(2)) << testing::PrintToString(args);
  }
  EXPECT_THAT(Schedule({}, false), EndsWith(2)) << "no message";
  EXPECT_TRUE(StoredMessages().empty());
}

TEST_F(ScheduleTest, ExportsTheOutbox) {
  ASSERT_THAT(Run({"settings", "prefix", "27"}), EndsWith(0));
  Schedule({"--daily", "1", "--times", "3"});
  const auto file = Outside("outbox.txt");
  const std::string header = "ID\tTime\tStatus\tType\tCharge\tTo\tMsg\r\n";
  const std::string row = "\t09/09/2001 01:46\tScheduled\tText\t?\t27820000001,27831\tlater\r\n";
  EXPECT_THAT(Run({"outbox", "export", file}), EndsWith(0));
  EXPECT_THAT(Slurp(file), testing::StartsWith(header + "1" + row + "2\t10/09/2001"));
  EXPECT_THAT(Slurp(file),
              testing::EndsWith("\r\n==========\nPlease note: For COMPREHENSIVE MESSAGE "
                                "REPORTING, please draw an on-line report.\n=========="));
  EXPECT_THAT(Run({"outbox", "export", file, "3", "1"}), EndsWith(0));
  EXPECT_THAT(Slurp(file), testing::StartsWith(header + "3\t11/09/2001"));
  EXPECT_THAT(Slurp(file), testing::HasSubstr("\r\n1" + row + "====="));
  const auto before = Slurp(file);
  EXPECT_THAT(Run({"outbox", "export", file, "1", "9"}), FailsWith(1, "no message 9"));
  EXPECT_EQ(Slurp(file), before);
  EXPECT_THAT(Run({"outbox", "export", Outside("none/x")}),
              FailsWith(1, "Unable to open '" + Outside("none/x") + "' for writing!"));
  const std::string database = Slurp(folder() + "/SMS.db");
  std::filesystem::create_symlink(folder() + "/SMS.db", Outside("link"));
  for (const std::string& own : {folder() + "/SMS.db", Outside("link")}) {
    EXPECT_THAT(Run({"outbox", "export", own}), FailsWith(1, "one of Orvalo's own files"));
    EXPECT_EQ(Slurp(folder() + "/SMS.db"), database);
  }
  EXPECT_THAT(Run({"outbox", "export"}), EndsWith(2));
}

}  // namespace
}  // namespace orvalo::test
