#include <gtest/gtest.h>

#include <sstream>

#include "cli/console_boxes.h"
#include "cli/error_output.h"
#include "cli/message_state.h"
#include "cli/table.h"

namespace orvalo::test {
namespace {

using platform::BoxButtons;
using platform::BoxIcon;

TEST(ConsoleBoxes, SayARepeatedMessageOnceWithItsCount) {
  std::ostringstream stream;
  {
    cli::ErrorOutput errors(stream, {});
    cli::ConsoleBoxes boxes(errors);
    for (int i = 0; i < 3; ++i)
      boxes.Show("Line one\r\nline two", "Oops", BoxIcon::kStop, BoxButtons::kOkOnly);
    boxes.Show("Sure?", "Oops", BoxIcon::kQuestion, BoxButtons::kYesNo);
    boxes.ShowLink("See", "Help", "https://www.orvalo.example");
    boxes.ShowLink("See", "Help", "https://www.orvalo.example");
  }
  EXPECT_EQ(stream.str(),
            "Oops: Line one line two\n(3 times)\nOops: Sure?\n"
            "Help: See https://www.orvalo.example\n(2 times)\n");
}

TEST(ErrorOutput, ShowsProgressOnlyOnATerminalAndTakesItAway) {
  for (const bool terminal : {false, true}) {
    std::ostringstream stream;
    {
      cli::ErrorOutput errors(stream, {.terminal = terminal});
      errors.Progress("half");
      errors.Line("done");
      errors.Progress("more");
      errors.Progress("yet more");
      errors.Progress("");
    }
    const std::string erase = "\r\033[K";
    EXPECT_EQ(stream.str(), terminal
                                ? "half" + erase + "done\n" + "more" + erase + "yet more" + erase
                                : "done\n");
  }
}

TEST(Table, AlignsByCharactersAndKeepsRowsOnOneLine) {
  std::ostringstream stream;
  cli::Table table(stream, {{"N", 3, true}, {"Name", 5}, {"Text", 0}});
  table.Add({"7", "Grüße", "a\n\tb"});
  table.Add({"1234", "toolong",
             "\xC2\x9B"
             "c\xE2\x82\xAC"});
  EXPECT_EQ(stream.str(), "  N  Name   Text\n  7  Grüße  a b\n1234  toolong  c€\n");
}

TEST(MessageState, KnowsWhatIsStillUnderWay) {
  struct Case {
    SmsStatus status;
    int query_time;
    bool followed, settled;
  };
  for (const Case& state : {Case{SmsStatus::kPending, 0, false, false},
                            {SmsStatus::kProcessing, 0, false, false},
                            {SmsStatus::kScheduled, 0, false, false},
                            {SmsStatus::kDelayScheduled, 0, false, false},
                            {SmsStatus::kUnknown, 60, true, false},
                            {SmsStatus::kQueued, 60, true, false},
                            {SmsStatus::kDeliveredToGateway, 60, true, false},
                            {SmsStatus::kScheduledOnServer, 60, true, false},
                            {SmsStatus::kSent, 60, true, false},
                            {SmsStatus::kSent, 0, false, true},
                            {SmsStatus::kExpanded, 0, false, true},
                            {SmsStatus::kFailed, 0, false, true},
                            {SmsStatus::kDelivered, 60, false, true}}) {
    MessageRow row;
    row.stat = static_cast<int>(state.status);
    row.query_time = state.query_time;
    EXPECT_EQ(cli::IsFollowed(row), state.followed) << row.stat;
    EXPECT_EQ(cli::IsSettled(row), state.settled) << row.stat;
  }
}

}  // namespace
}  // namespace orvalo::test
