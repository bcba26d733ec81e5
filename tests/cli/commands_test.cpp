#include <algorithm>

#include "app/data_file.h"
#include "cli/exit_code.h"
#include "orvaloctl_fixture.h"
#include "platform/named_mutex.h"

namespace orvalo::test {
namespace {

using std::string_literals::operator""s;
using testing::HasSubstr;
using testing::Not;

using CommandsTest = OrvaloctlTest;

std::string StoredSetting(const std::string& folder, const std::string& key) {
  std::string value;
  DataFile(folder + "/SMS.dat", false).GetString(key, &value, "(none)");
  return value;
}

TEST_F(CommandsTest, AFolderThatNobodyCanMeanIsRefused) {
  std::filesystem::create_directories(folder() + "/Corvane/Orvalo3.conf");
  const ScopedVariable home("XDG_CONFIG_HOME", folder().c_str());
  const ScopedVariable none("ORVALO_DATA_PATH", nullptr);
  std::istringstream in;
  std::ostringstream out, err;
  EXPECT_EQ(cli::RunOrvaloctl({"outbox"}, {in, out, err}, registry_, clock_), 1);
  EXPECT_THAT(err.str(), HasSubstr("Corvane/Orvalo3.conf\" cannot be read: "));
  const std::vector<std::string> long_path{"--data", "/" + std::string(259, 'd'), "outbox"};
  EXPECT_EQ(cli::RunOrvaloctl(long_path, {in, out, err}, registry_, clock_), 1);
  EXPECT_THAT(err.str(), HasSubstr("longer than 259 bytes"));
}

TEST_F(CommandsTest, OnlyInitMakesADataFolder) {
  const std::string mistyped = folder() + "/orvlao";
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{{"outbox"},
                                             {"send", "--to", "27820000001", "--text", "x"},
                                             {"settings", "prefix", "1"},
                                             {"balance", "--offline"}}) {
    std::vector<std::string> command = args;
    command.insert(command.end(), {"--data", mistyped});
    std::istringstream in;
    std::ostringstream out, err;
    EXPECT_EQ(cli::RunOrvaloctl(command, {in, out, err}, registry_, clock_), 1) << args[0];
    EXPECT_THAT(err.str(), HasSubstr("orvaloctl init"));
  }
  EXPECT_EQ(Slurp(mistyped + "/SMS.db"), "");

  const auto working_folder = std::filesystem::current_path();
  std::filesystem::current_path(folder());
  std::istringstream in;
  std::ostringstream out, err;
  EXPECT_EQ(cli::RunOrvaloctl({"init", "--gateway", "http://127.0.0.1:1", "--data", "d"},
                              {in, out, err}, registry_, clock_),
            0)
      << err.str();
  std::filesystem::current_path(working_folder);
  EXPECT_THAT(out.str(), HasSubstr(folder() + "/d\n"));

  EXPECT_THAT(Run({"init", "--gateway", "http://127.0.0.1:1/", "--client-id", "Shop"}),
              EndsWith(0));
  EXPECT_EQ(StoredSetting(folder(), "client_id"), "Shop");
  EXPECT_EQ(StoredSetting(folder(), "COMBaseURL"), "http://127.0.0.1:1/");
  EXPECT_EQ(StoredSetting(folder(), "voucher_url"), "http://127.0.0.1:1/account");
  for (const std::string open : {"http://sms.example.org", "HTTP://127.0.0.1.example.org",
                                 "http://localhost@example.org", "http://[::2]/"}) {
    EXPECT_THAT(Run({"init", "--gateway", open}), EndsWith(1)) << open;
    EXPECT_THAT(Run({"settings", "COMBaseURL", open}), EndsWith(1)) << open;
  }
  EXPECT_EQ(StoredSetting(folder(), "COMBaseURL"), "http://127.0.0.1:1/");
  EXPECT_THAT(Run({"init", "--gateway", "http://10.0.0.1", "--plain-http"}), EndsWith(0));
  EXPECT_EQ(StoredSetting(folder(), "COMBaseURL"), "http://10.0.0.1");
  EXPECT_THAT(Run({"init", "--gateway", "sms.example.org:8443"}), EndsWith(0));
  EXPECT_EQ(StoredSetting(folder(), "COMBaseURL"), "https://sms.example.org:8443");
  EXPECT_THAT(Run({"init"}), EndsWith(0)) << "a second time changes nothing";
  EXPECT_EQ(StoredSetting(folder(), "client_id"), "Shop");
  EXPECT_THAT(Json({"outbox"}).All(), testing::IsEmpty());
}

TEST_F(CommandsTest, LosesNoSettingsThatCannotBeRead) {
  Init();
  const std::string settings = folder() + "/SMS.dat", sound = Slurp(settings);
  std::filesystem::rename(settings, settings + ".away");
  std::filesystem::create_directory(settings);
  for (const char* command : {"group", "outbox"}) {
    const std::vector<std::string> args =
        *command == 'g' ? std::vector<std::string>{"group", "add", "x"} : std::vector{"outbox"s};
    EXPECT_THAT(Run(args), FailsWith(1, "cannot be read")) << command;
  }
  std::filesystem::remove(settings);
  Spill(settings, sound.substr(0, sound.size() - 1));
  EXPECT_THAT(Run({"run"}), FailsWith(1, "Nothing was done"));
  const auto listed = Run({"outbox"});
  EXPECT_THAT(listed, EndsWith(0));
  EXPECT_THAT(listed.err, HasSubstr("damaged"));
  EXPECT_THAT(Run({"settings", "prefix", "27"}), EndsWith(0));
  EXPECT_EQ(Slurp(settings + ".damaged"), sound.substr(0, sound.size() - 1));
  EXPECT_EQ(StoredSetting(folder(), "COMBaseURL"), "http://127.0.0.1:1");
}

TEST_F(CommandsTest, RefusesWrongUsage) {
  Init();
  const std::vector<std::vector<std::string>> wrong{
      {},
      {"teleport"},
      {"group"},
      {"outbox", "show"},
      {"outbox", "show", "one"},
      {"outbox", "--status", "Lost"},
      {"login", " "},
      {"voucher", "12345678901234AB"},
      {"recover", "demo", " "},
      {"settings", "colour"},
      {"settings", "Password", "secret"},
      {"settings", "prefix", "--password-file", "x"},
      {"group", "add", "a name of twenty-two c"},
      {"contact", "add", "--name", "Ann", "--mobile", "27820000001"},
      {"contact", "add", "--name", "Ann", "--mobile", "2782x", "--group", "Friends"},
      {"send", "--text", "x"},
      {"send", "--to", " , ,", "--text", "x"},
      {"send", "--to", "A5", "--text", "x"},
      {"send", "--to", "27820000001,12345678901234567", "--text", "x"},
      {"send", "--to", "27820000001\nMobile;0821110001", "--text", "x"},
      {"send", "--to", "27820000001"},
      {"send", "--to", "27820000001", "--text", "x", "--text-file", "y"},
      {"send", "--to", "27820000001", "--text", "x", "--type", "vcard"},
      {"send", "--to", "27820000001", "--file", "x"},
      {"send", "--to", "27820000001", "--text", "x", "--type", "fax"},
      {"send", "--to", "27820000001", "--text", "x", "--wait", "0"},
  };
  for (const auto& args : wrong) {
    const Outcome outcome = Run(args);
    EXPECT_THAT(outcome, EndsWith(2)) << testing::PrintToString(args);
    EXPECT_NE(outcome.err, "") << testing::PrintToString(args);
    EXPECT_THAT(outcome.err, Not(HasSubstr("secret")));
  }
  EXPECT_THAT(Run({"send", "--help"}), EndsWith(0));
  EXPECT_TRUE(StoredMessages().empty());
}

TEST_F(CommandsTest, SaysInJsonOrQuietlyHowItEnded) {
  Init();
  const auto error = [this](std::vector<std::string> args) {
    const Outcome outcome = Json(std::move(args));
    EXPECT_EQ(outcome.out, "");
    return nlohmann::json::parse(outcome.err);
  };
  EXPECT_EQ(error({"teleport"}).at("code"), "usage");
  EXPECT_EQ(error({"outbox", "show", "9"}), nlohmann::json::parse(R"({"code": "failed",
      "status": 1, "message": "There is no message 9", "notes": []})"));
  EXPECT_EQ(error({"voucher", "123"}).at("status"), 1) << "its box says why";
  EXPECT_THAT(Run({"--version"}).out, testing::StartsWith("orvaloctl "));
  EXPECT_EQ(Json({"--version"}).All().at("Program"), "orvaloctl");
  EXPECT_THAT(Run({"outbox", "--status", "Sent", "show", "1"}), FailsWith(2, "--status"));

  const Outcome queued = Run({"-q", "send", "--to", "111", "--text", "x"});
  EXPECT_THAT(queued, EndsWith(0));
  EXPECT_EQ(queued.out + queued.err, "");
  EXPECT_NE(Run({"-q", "outbox"}).out, "") << "what is asked to be shown is shown";
  EXPECT_THAT(Run({"-q", "voucher", "1"}), FailsWith(1, "not long enough"));
  EXPECT_EQ(Json({"outbox", "delete", "1"}).First().at("ID"), 1);
}

// The help, the guide and the manual page tell the same exit statuses.
TEST_F(CommandsTest, DocumentsEveryExitStatus) {
  const std::string folder = ORVALO_SOURCE_FOLDER;
  const std::string guide = Slurp(folder + "/docs/user-guide.md");
  std::string manual = Slurp(folder + "/packaging/man/orvaloctl.1");
  manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end());
  const std::string help = Run({"send", "--help"}).out;
  int value = 0;
  for (const cli::ExitMeaning& end : cli::ExitMeanings()) {
    const std::string number = std::to_string(value++), meaning(end.meaning);
    EXPECT_EQ(std::to_string(static_cast<int>(end.code)), number);
    EXPECT_THAT(help, HasSubstr(number + "  " + meaning));
    EXPECT_THAT(manual, HasSubstr(".B " + number + "\n" + meaning + "\n"));
    EXPECT_THAT(guide,
                HasSubstr("| " + number + " | `" + std::string(end.name) + "` | " + meaning));
  }
}

TEST_F(CommandsTest, LeavesAFolderInUseAloneButLooksAtIt) {
  Init();
  ASSERT_THAT(Run({"send", "--to", "27820000001", "--text", "first"}), EndsWith(0));
  const auto holder = platform::NamedMutex::Create(folder(), "Orvalo3Mutex");
  ASSERT_NE(holder, nullptr);
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{{"init"},
                                             {"send", "--to", "27820000001", "--text", "x"},
                                             {"outbox", "delete", "1"},
                                             {"group", "add", "Friends"},
                                             {"settings", "prefix", "27"},
                                             {"run"},
                                             {"query"},
                                             {"balance"},
                                             {"login", "demo"}}) {
    EXPECT_THAT(Run(args), FailsWith(3, "using this data folder")) << args[0];
  }
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{{"outbox"},
                                             {"outbox", "show", "1"},
                                             {"group", "list"},
                                             {"contact", "list"},
                                             {"settings"},
                                             {"settings", "prefix"},
                                             {"balance", "--offline"}}) {
    EXPECT_THAT(Run(args), EndsWith(0)) << args[0];
  }
  EXPECT_EQ(StoredMessages().size(), 1u);
}

TEST_F(CommandsTest, QueuesAMessageForItsRecipients) {
  Init();
  ASSERT_THAT(Run({"group", "add", "Friends"}), EndsWith(0));
  ASSERT_THAT(Run({"group", "add", "Staff"}), EndsWith(0));
  for (const char* name : {"Ann", "Bob", "Cleo"}) {
    ASSERT_THAT(Run({"contact", "add", "--name", name, "--mobile", "0821110001", "--group",
                     std::string(name) == "Ann" ? "Staff" : "Friends"}),
                EndsWith(0));
  }
  Spill(folder() + "/card", std::string("\x01\xAB", 2));
  Spill(folder() + "/text", "Good\nmorning\r\n");

  struct Case {
    std::vector<std::string> args;
    std::string to, text;
    int type;
  };
  const std::vector<Case> cases{
      {{"--to", "222,+111 ,,", "--to", "083", "--text", "x"}, ",222,+111,083", "x", 0},
      {{"--to", "(082) 111-0001;083\n+083\t082.1110001", "--to", "083", "--text", "x"},
       ",0821110001,083",
       "x",
       0},
      {{"--contact", "3", "--group", "FRIENDS", "--contact", "1", "--to", "999", "--text", "x"},
       ",999,A1,A2,A3",
       "x",
       0},
      {{"--group", "All Contacts", "--text", "Grüße", "--type", "Unicode"},
       ",A1,A2,A3",
       "Grüße",
       2},
      {{"--to", "111", "--text-file", folder() + "/text", "--type", "flash"},
       ",111",
       "Good\nmorning",
       1},
      {{"--to", "111", "--file", folder() + "/card", "--type", "vcal"}, ",111", "01AB", 7},
  };
  for (const Case& queued : cases) {
    std::vector<std::string> args{"send"};
    args.insert(args.end(), queued.args.begin(), queued.args.end());
    const Outcome outcome = Json(args);
    ASSERT_THAT(outcome, EndsWith(0));
    const auto row = StoredMessages().back();
    EXPECT_EQ(outcome.First().at("ID"), row.id);
    EXPECT_EQ(row.to, queued.to);
    EXPECT_EQ(row.msg, queued.text);
    EXPECT_EQ(row.type, queued.type);
    EXPECT_EQ(row.stat, static_cast<int>(SmsStatus::kPending));
    EXPECT_EQ(row.charge, "?");
    EXPECT_EQ(outcome.err.find("written to once: +083 and others (3 doubles)") != std::string::npos,
              row.to == ",0821110001,083");
  }
}

TEST_F(CommandsTest, QueuesNothingThatCannotBeSent) {
  Init();
  const std::string long_text(161, 'x');
  Spill(folder() + "/latin1", "Gr\xFC\xDF");
  Spill(folder() + "/empty", "");
  ASSERT_THAT(Run({"group", "add", "Nobody"}), EndsWith(0));
  const std::vector<std::pair<std::vector<std::string>, std::string>> refused{
      {{"--to", "111", "--text", ""}, "empty"},
      {{"--to", "111", "--text", long_text}, "161 characters"},
      {{"--to", "111", "--text-file", folder() + "/latin1"}, "UTF-8"},
      {{"--to", "111", "--text-file", folder() + "/missing"}, "cannot be read"},
      {{"--to", "111", "--file", folder() + "/empty", "--type", "vcard"}, "empty"},
      {{"--to", "111", "--file", folder() + "/missing", "--type", "vcard"}, "missing"},
      {{"--group", "Friends", "--text", "x"}, "no group Friends"},
      {{"--contact", "7", "--text", "x"}, "no contact 7"},
  };
  for (const auto& [args, reason] : refused) {
    std::vector<std::string> command{"send"};
    command.insert(command.end(), args.begin(), args.end());
    EXPECT_THAT(Run(command), FailsWith(1, reason));
  }
  EXPECT_THAT(Run({"send", "--group", "Nobody", "--text", "x"}), FailsWith(10, "no recipient"));
  EXPECT_TRUE(StoredMessages().empty());

  ASSERT_THAT(Run({"settings", "SpanSMS", "1"}), EndsWith(0));
  EXPECT_THAT(RunWith(long_text, {"send", "--to", "111", "--text-file", "-"}, clock_), EndsWith(0));
  EXPECT_EQ(StoredMessages().at(0).msg, long_text);
}

TEST_F(CommandsTest, ListsShowsAndDeletesMessages) {
  Init();
  for (const char* text : {"one", "two\x1B[2J\nlines", "three"}) {
    ASSERT_THAT(Run({"send", "--to", "27820000001", "--text", text}), EndsWith(0));
  }
  const Outcome table = Run({"outbox"});
  EXPECT_THAT(table.out, HasSubstr("    ID  Sent              Recipient                 Status"));
  EXPECT_THAT(table.out,
              HasSubstr("     2  09/09/2001 01:46  27820000001               Pending     "));
  EXPECT_THAT(table.out, HasSubstr("two [2J lines\n")) << "nothing steers the terminal";
  EXPECT_EQ(Json({"outbox", "--status", "pENDING"}).All().size(), 3u);
  EXPECT_EQ(Json({"outbox", "--status", "Sent"}).All().size(), 0u);

  const auto shown = Json({"outbox", "show", "2"}).First();
  const std::vector<std::string> names{
      "ID",        "Time",      "Stat",   "StatName", "Type",      "TypeName", "RefID",
      "To",        "ToInfo",    "Msg",    "ApiMsgID", "SavedStat", "SenderID", "Delay",
      "QueryTime", "StatQryTm", "Charge", "Number",   "Reason"};
  EXPECT_EQ(shown.size(), names.size());
  for (const std::string& name : names) EXPECT_TRUE(shown.contains(name)) << name;
  EXPECT_EQ(shown.at("StatName"), "Pending");
  EXPECT_EQ(shown.at("TypeName"), "Text");
  EXPECT_EQ(shown.at("Msg"), "two\x1B[2J\nlines");
  EXPECT_THAT(Run({"outbox", "show", "2"}).out, HasSubstr("To: ,27820000001\n"));

  EXPECT_THAT(Run({"outbox", "show", "9"}), FailsWith(1, "no message 9"));
  EXPECT_THAT(Run({"outbox", "delete", "1", "9"}), FailsWith(1, "no message 9"));
  EXPECT_EQ(StoredMessages().size(), 3u);
  EXPECT_THAT(Run({"outbox", "delete", "1", "3"}), EndsWith(0));
  ASSERT_EQ(StoredMessages().size(), 1u);
  EXPECT_EQ(StoredMessages().at(0).id, 2);
}

TEST_F(CommandsTest, ReadsAndWritesSettings) {
  Init();
  struct Case {
    std::string key, value, stored, why;
  };
  for (const Case& setting :
       std::vector<Case>{{"prefix", "0027", "27", "the country code has no zeros of its own"},
                         {"SENDER_ID", "Shop", "Shop", "keys are known in any case"},
                         {"i18n", "0", "0", "what the program only reads is written, too"},
                         {"COMBaseURL", "http://127.0.0.1:2", "http://127.0.0.1:2", "the same"},
                         {"WorkingOnLine", "0", "0", "a login value"},
                         {"ProxyPort", "65535", "65535", "the last there is"},
                         {"UpdatePublicKey", std::string(64, 'a'), std::string(64, 'a'), ""},
                         {"ProxyType", "4", "4", "a proxy of one's own"}}) {
    EXPECT_THAT(Run({"settings", setting.key, setting.value}), EndsWith(0)) << setting.why;
    EXPECT_EQ(Run({"settings", setting.key}).out, setting.stored + "\n") << setting.why;
    EXPECT_EQ(StoredSetting(folder(), setting.key), setting.stored) << setting.why;
  }
  EXPECT_THAT(Run({"settings", "prefix", ""}), EndsWith(0));
  EXPECT_EQ(Run({"settings", "prefix"}).out, "\n");
  EXPECT_THAT(Run({"settings", "SpanSMS", "yes"}), FailsWith(1, "SpanSMS"));
  for (const auto& [key, value] : std::vector<std::pair<std::string, std::string>>{
           {"ProxyType", "9"},
           {"sender_id", "Twelve signs"},
           {"ProxyType", "0"},
           {"ProxyPort", "9x"},
           {"ProxyPort", "65536"},
           {"prefix", "0027x"},
           {"prefix", "+27"},
           {"UpdatePublicKey", std::string(63, 'a')},
           {"UpdatePublicKey", std::string(63, 'a') + "g"}}) {
    const std::string before = StoredSetting(folder(), key);
    EXPECT_THAT(Run({"settings", key, value}), FailsWith(1, "no value for " + key + ": a "));
    EXPECT_EQ(StoredSetting(folder(), key), before) << value;
  }
}

TEST_F(CommandsTest, TakesSecretsFromElsewhereAndNeverShowsThem) {
  Init();
  Spill(folder() + "/secret", "from file\r\nsecond line\n");
  EXPECT_THAT(Run({"settings", "ProxyPassword", "--password-file", folder() + "/secret"}),
              EndsWith(0));
  EXPECT_EQ(StoredSetting(folder(), "ProxyPassword"), "from file");
  {
    const ScopedVariable variable("ORVALO_PASSWORD", "from variable");
    EXPECT_THAT(Run({"settings", "Password"}), EndsWith(0)) << "only looks";
    EXPECT_EQ(StoredSetting(folder(), "Password"), "(none)");
    EXPECT_THAT(Run({"settings", "Password", "-"}), EndsWith(0));
    EXPECT_EQ(StoredSetting(folder(), "Password"), "from variable");
  }
  EXPECT_THAT(RunWith("from input\n", {"settings", "Outlook_Password", "-"}, clock_), EndsWith(0));
  EXPECT_EQ(StoredSetting(folder(), "Outlook_Password"), "from input");
  EXPECT_THAT(Run({"settings", "Password", "-"}), FailsWith(1, "No password"));
  EXPECT_THAT(Run({"settings", "Password", "--password-file", folder() + "/none"}), EndsWith(1));

  for (const Outcome& listed : {Run({"settings"}), Json({"settings"})}) {
    EXPECT_THAT(listed.out, HasSubstr("********"));
    EXPECT_THAT(listed.out + listed.err, Not(HasSubstr("from ")));
  }
}

TEST_F(CommandsTest, ComparesAnOfflineLoginWithTheStoredOne) {
  Init();
  ASSERT_THAT(Run({"settings", "Login", "demo"}), EndsWith(0));
  ASSERT_THAT(RunWith("right\n", {"settings", "Password", "-"}, clock_), EndsWith(0));
  const auto log_in = [&](const char* user, const char* password) {
    return RunWith(password, {"login", user, "--offline"}, clock_);
  };
  EXPECT_THAT(log_in("demo", "wrong"), FailsWith(1, "Unknown username or password!"));
  EXPECT_THAT(log_in("Demo", "right"), FailsWith(1, "Unknown username or password!"));
  EXPECT_EQ(StoredSetting(folder(), "WorkingOnLine"), "1");
  EXPECT_THAT(log_in("demo", "right"), EndsWith(0));
  EXPECT_EQ(StoredSetting(folder(), "WorkingOnLine"), "0");
  EXPECT_EQ(Run({"balance"}).out, "Balance: 0.0?\n");
  EXPECT_THAT(Run({"voucher", "1234567890123456"}), FailsWith(1, "You need to be online"));
  EXPECT_THAT(Run({"query"}), FailsWith(1, "offline"));
  EXPECT_THAT(Run({"send", "--to", "111", "--text", "x", "--wait", "5"}), FailsWith(9, "offline"));
  EXPECT_EQ(StoredMessages().at(0).stat, static_cast<int>(SmsStatus::kPending));
}

TEST_F(CommandsTest, SaysThatTheGatewayCannotBeReached) {
  Init();
  EXPECT_THAT(Run({"balance"}), FailsWith(1, "orvaloctl login")) << "nobody to log in as";
  const Outcome login = RunWith("demo\n", {"login", "demo"}, clock_);
  EXPECT_THAT(login, FailsWith(4, "cannot be reached"));
  EXPECT_THAT(login.err, HasSubstr("Login failed ...: Failed to communicate"));
  EXPECT_EQ(StoredSetting(folder(), "Login"), "(none)");

  ASSERT_THAT(Run({"settings", "Login", "demo"}), EndsWith(0));
  ASSERT_THAT(Run({"send", "--to", "111", "--text", "kept"}), EndsWith(0));
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{{"balance"},
                                             {"query"},
                                             {"run"},
                                             {"voucher", "1234567890123456"},
                                             {"recover", "demo", "a@b"}}) {
    EXPECT_THAT(Run(args), EndsWith(4)) << args[0];
  }
  const Outcome sent = Json({"send", "--to", "112", "--text", "x", "--wait", "5"});
  EXPECT_THAT(
      sent,
      FailsWith(9, "Queued, but not sent (the next `orvaloctl run` sends it): The gateway at"));
  EXPECT_EQ(sent.First().at("ID"), 2) << "it is not lost";
  const auto error = nlohmann::json::parse(sent.err);
  EXPECT_EQ(error.at("code"), "queued");
  EXPECT_EQ(error.at("status"), 9);
  EXPECT_THAT(error.at("notes").dump(), HasSubstr("Failed to communicate"));
  const auto rows = StoredMessages();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1].stat, static_cast<int>(SmsStatus::kPending));
  EXPECT_EQ(StoredSetting(folder(), "WorkingOnLine"), "1");
}

}  // namespace
}  // namespace orvalo::test
