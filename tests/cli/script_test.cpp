#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <thread>

#include "cli/message_filter.h"
#include "orvaloctl_fixture.h"

namespace orvalo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// What scripts feed in, ask for, and complete.
class ScriptTest : public OrvaloctlTest {
 protected:
  void SetUp() override { Init(); }
  std::vector<int> Ids(std::vector<std::string> args) {
    args.insert(args.begin(), "outbox");
    std::vector<int> ids;
    for (const auto& row : Json(std::move(args)).All()) ids.push_back(row.at("ID"));
    return ids;
  }
};

TEST_F(ScriptTest, ReadsNumbersTextsAndContactsFromPipes) {
  const Outcome sent = RunWith("\xEF\xBB\xBFmobile\r\n0831;(082) 111-0001\n\n+27840000001",
                               {"send", "--to-file", "-", "--to", "111", "--text", "x"}, clock_);
  EXPECT_THAT(sent, FailsWith(0, "1 item, the first of them \"mobile\""));
  EXPECT_EQ(StoredMessages().at(0).to, ",111,0831,0821110001,+27840000001");
  EXPECT_THAT(RunWith("nobody\n", {"send", "--to-file", "-", "--text", "x"}, clock_), EndsWith(10));
  EXPECT_THAT(Run({"send", "--to-file", "-", "--text-file", "-"}), FailsWith(2, "either"));
  EXPECT_THAT(Run({"send", "--to-file", folder(), "--text", "x"}), FailsWith(1, "cannot be read"));

  const std::string exact = " two\r\nlines\r\n\n";
  EXPECT_THAT(RunWith(exact, {"send", "--to", "111", "--text-file", "-"}, clock_), EndsWith(0));
  EXPECT_EQ(StoredMessages().at(1).msg, exact) << "byte for byte";
  const std::string pipe = folder() + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(pipe) << "piped\n"; });
  EXPECT_THAT(Run({"send", "--to", "111", "--text-file", pipe}), EndsWith(0));
  writer.join();
  EXPECT_EQ(StoredMessages().at(2).msg, "piped");

  ASSERT_THAT(Run({"group", "add", "Friends"}), EndsWith(0));
  const Outcome imported =
      RunWith("fname,mobile\nAnn,1\nBo\n", {"import", "-", "--group", "Friends"}, clock_);
  EXPECT_THAT(imported, FailsWith(0, "1 line was not read"));
  EXPECT_THAT(imported.out, testing::StartsWith("Imported 1 contact; discarded 0"));
  std::thread importer([&] { std::ofstream(pipe) << "fname,mobile\nCy,2\nDi,3\n"; });
  EXPECT_THAT(Run({"import", pipe, "--group", "Friends"}).out, HasSubstr("2 contacts; "));
  importer.join();
  EXPECT_FALSE(std::ifstream(folder() + "/.import")) << "nothing stays behind";
}

TEST_F(ScriptTest, PicksMessagesFromTheOutbox) {
  ASSERT_THAT(Run({"settings", "prefix", "27"}), EndsWith(0));
  for (const char* to : {"0821110001", "27821110002,+27821110001", "27821110003"}) {
    ASSERT_THAT(Run({"send", "--to", to, "--text", "x", "--sender", "Shop"}), EndsWith(0));
    clock_.Advance(3'600'000);
  }
  // The clock began at 2001-09-09 01:46:40 and stands at 04:46:40.
  EXPECT_THAT(Ids({"--since", "2001-09-09 02:46"}), ElementsAre(2, 3));
  EXPECT_THAT(Ids({"--until", "2001-09-09T02:46"}), ElementsAre(1, 2)) << "the whole minute";
  EXPECT_THAT(Ids({"--since", "2h", "--until", "2001-09-09"}), ElementsAre(2, 3));
  EXPECT_THAT(Ids({"--since", "@1000000001", "--limit", "1"}), ElementsAre(3));
  EXPECT_THAT(Ids({"--recipient", "+27821110001"}), ElementsAre(1, 2));
  EXPECT_THAT(Ids({"--status", "Sent,pending", "--limit", "2"}), ElementsAre(2, 3));
  for (const char* wrong : {"tomorrow", "2001-02-30", "2001-09-09 24:00", "2001-13-01"})
    EXPECT_THAT(Run({"outbox", "--since", wrong}), FailsWith(2, "is no time")) << wrong;

  EXPECT_THAT(Run({"outbox", "resend", "1", "9"}), FailsWith(1, "no message 9"));
  EXPECT_EQ(StoredMessages().size(), 3u) << "all of them or none";
  EXPECT_EQ(Run({"outbox", "resend", "2", "1"}).out, "Queued message 4\nQueued message 5\n");
  const auto copy = StoredMessages().at(3);
  EXPECT_EQ(copy.to, ",27821110002,+27821110001");
  EXPECT_EQ(copy.sender_id, "Shop") << "the sender that it had";
  EXPECT_EQ(copy.stat, static_cast<int>(SmsStatus::kPending));
}

TEST_F(ScriptTest, CompletesTheCommandLineInBash) {
  Spill(folder() + "/script", Run({"--bash-completion"}).out);
  const auto complete = [&](const std::string& words) {
    const std::string command = "bash -c 'source " + folder() + "/script; COMP_WORDS=(orvaloctl " +
                                words + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _orvaloctl; " +
                                "echo -n \"${COMPREPLY[*]}\"'";
    std::string result;
    std::FILE* const shell = popen(command.c_str(), "r");
    std::array<char, 4096> piece{};
    while (std::fgets(piece.data(), piece.size(), shell) != nullptr) result += piece.data();
    EXPECT_EQ(pclose(shell), 0);
    return result;
  };
  EXPECT_EQ(complete("--data send se"), "send settings");
  EXPECT_EQ(complete("outbox re"), "resend");
  EXPECT_EQ(complete("--json outbox resend --wa"), "--wait");
  EXPECT_EQ(complete("send --text schedule --to-"), "--to-file");
  EXPECT_EQ(complete("send --type v"), "vcard vcal");
  EXPECT_EQ(complete("export " + folder() + "/scr"), folder() + "/script");
}

}  // namespace
}  // namespace orvalo::test
