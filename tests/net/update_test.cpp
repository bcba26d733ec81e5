#include <gtest/gtest.h>
#include <sodium.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "app/settings.h"
#include "app/texts.h"
#include "net/update_check.h"
#include "platform/new_file.h"
#include "support/scoped_variable.h"
#include "support/scripted_http_server.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

// What a check did, in order: window, waits, the program's end.
struct Journal {
  void Add(const std::string& event) {
    text += (text.empty() ? "" : " ") + event;
    if (on_event) on_event(event);
  }
  std::string text;
  std::function<void(const std::string&)> on_event;
};

struct JournalView : UpdateView {
  explicit JournalView(Journal& journal) : journal_(journal) {}
  void Open() override { journal_.Add("open"); }
  void MarkStep(Step step) override { journal_.Add("step" + std::to_string(step)); }
  void EnableCancel(bool enabled) override { journal_.Add(enabled ? "cancel+" : "cancel-"); }
  void Hide() override { journal_.Add("hide"); }
  void Close() override { journal_.Add("close"); }
  void ShowProgress(const std::string& text) override { journal_.Add(text); }
  void RunMessages(std::int64_t milliseconds) override {
    if (milliseconds != 0) journal_.Add("run" + std::to_string(milliseconds));
  }
  Journal& journal_;
};

struct UpdateTest : testing::Test {
  UpdateTest() {
    const std::string base = server.address();
    settings.SetText(TextSetting::kUpdateVersionUrl, base + "/version");
    settings.SetText(TextSetting::kUpdateFileUrl, base + "/setup");
    settings.SetText(TextSetting::kUpdateUrl, "https://update.example");
    settings.SetText(TextSetting::kHelpUrl, "https://help.example");
    files = {{"/version", "99.0.0.0\n"}, {"/setup", "#!/bin/sh\nexit 0\n"}};
  }

  std::string Check() {
    journal.text.clear();
    check.CheckForUpdates();
    return journal.text;
  }
  // The one message of a check: its text's id, its caption's, and its link.
  void ExpectMessage(int text, int caption, const std::string& link, const std::string& what) {
    const auto shown = boxes.shown();
    ASSERT_EQ(shown.size(), ++messages) << what;
    EXPECT_EQ(shown.back().text, texts.Load(text)) << what;
    EXPECT_EQ(shown.back().caption, texts.Load(caption)) << what;
    EXPECT_EQ(shown.back().url, link) << what;
  }

  const ScopedVariable no_desktop{"XDG_CURRENT_DESKTOP", "KDE"};  // and no such settings
  TemporaryFolder folder;
  const ScopedVariable no_settings{"XDG_CONFIG_HOME", folder.path().c_str()};
  std::map<std::string, std::string> files;
  ScriptedHttpServer server{[this](const RecordedRequest& request) {
    EXPECT_EQ(request.header("user-agent"), "Orvalo.exe");
    const auto file = files.find(request.path);
    return file == files.end() ? ScriptedReply{404, "none"} : ScriptedReply{200, file->second};
  }};
  Journal journal;
  JournalView view{journal};
  AppSettings settings;
  Texts texts;
  ScriptedMessageBoxes boxes;
  std::size_t messages = 0;
  const std::string installer = folder.File("temp/Update.exe");
  UpdateCheck check{{settings,
                     texts,
                     boxes,
                     view,
                     folder.path(),
                     [this](const std::string& path) {
                       const bool started = platform::StartProgram(path);
                       journal.Add(started ? "started" : "not-started");
                       return started;
                     },
                     [this] { journal.Add("end"); },
                     {}}};
};

TEST_F(UpdateTest, GoesThroughTheFourSteps) {
  const std::string begin = "open step1 run1000 step2 run1000";
  journal.on_event = [&](const std::string& event) {
    if (event == "step2") check.CheckForUpdates();  // one is running
    struct stat about {};
    if (event != "step4" && event != "run800") return;
    stat(installer.c_str(), &about);
    EXPECT_EQ(about.st_mode & 0777, 0600u);
  };
  EXPECT_EQ(Check(), begin +
                         " step3 run1000 0KB 0KB run20 cancel- step4 run800 hide started "
                         "run500 end hide close");
  EXPECT_TRUE(boxes.shown().empty());
  EXPECT_EQ(Slurp(installer), files["/setup"]);
  EXPECT_EQ(Slurp(folder.File("update.ver")), "99.0.0.0\n");

  files["/setup"] = "no program";
  EXPECT_EQ(Check(), begin +
                         " step3 run1000 0KB 0KB run20 cancel- step4 run800 hide not-started "
                         "run500 end hide close");
  ExpectMessage(1203, 1202, "file://" + installer, "no program");

  files.erase("/setup");
  EXPECT_EQ(Check(), begin + " step3 run1000 0KB hide close");
  ExpectMessage(1204, 1202, "https://update.example", "no installer");

  for (const char* version : {"0.0.0.1", "", "nonsense 99", "3.1.99.99"}) {
    files["/version"] = version;
    EXPECT_EQ(Check(), begin + " hide close");
    ExpectMessage(1206, 1207, "", version);
  }
  files.erase("/version");
  EXPECT_EQ(Check(), "open step1 run1000 hide close");
  ExpectMessage(1205, 1202, "https://update.example", "no version");
}

TEST_F(UpdateTest, ContactsNobodyUnlessItIsSetUp) {
  const struct {
    TextSetting setting;
    const char* value;
  } cases[] = {{TextSetting::kUpdateVersionUrl, "http://"},
               {TextSetting::kUpdateFileUrl, ""},
               {TextSetting::kUpdateUrl, ""}};
  for (const auto& c : cases) {
    const std::string old = settings.Text(c.setting);
    settings.SetText(c.setting, c.value);
    EXPECT_EQ(Check(), "");
    ExpectMessage(1200, 1201, "https://help.example", c.value);
    settings.SetText(c.setting, old);
  }
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(UpdateTest, StopsWhereTheOperatorCancels) {
  const std::string begin = "open step1 run1000 step2 run1000";
  files["/setup"] = std::string(3000, 'x');
  const struct {
    const char* at;
    const char* events;
    bool complains;
  } cases[] = {
      {"step1", "open step1 run1000 hide close", true},
      {"step2", "open step1 run1000 step2 run1000 step3 run1000 hide close", false},
      {"step3", "open step1 run1000 step2 run1000 step3 run1000 hide close", false},
      {"1KB", "open step1 run1000 step2 run1000 step3 run1000 0KB 1KB run20 hide close", false},
      {"step4",
       "open step1 run1000 step2 run1000 step3 run1000 0KB 1KB run20 2KB run20 2KB run20 "
       "cancel- step4 run800 hide run500 hide close",
       false},
  };
  for (const auto& c : cases) {
    journal.on_event = [&](const std::string& event) {
      if (event == c.at) check.Cancel();
    };
    EXPECT_EQ(Check(), c.events) << c.at;
    if (c.complains) ExpectMessage(1205, 1202, "https://update.example", c.at);
    EXPECT_EQ(boxes.shown().size(), messages) << c.at;
    if (std::string(c.at) != "1KB") continue;
    EXPECT_EQ(std::filesystem::file_size(installer + ".tmp"), 1024u);
  }
  // The end of the program is quiet, and final.
  journal.on_event = [&](const std::string& event) {
    if (event == "step1") check.Stop();
  };
  EXPECT_EQ(Check(), "open step1 run1000 hide close");
  EXPECT_EQ(Check(), "");
  EXPECT_EQ(boxes.shown().size(), messages);
}

TEST_F(UpdateTest, StartsOnlyWhatTheKeyHasSigned) {
  ASSERT_GE(sodium_init(), 0);
  unsigned char key[crypto_sign_PUBLICKEYBYTES], secret[crypto_sign_SECRETKEYBYTES];
  crypto_sign_keypair(key, secret);
  char digits[2 * sizeof key + 1];
  settings.SetText(TextSetting::kUpdatePublicKey,
                   sodium_bin2hex(digits, sizeof digits, key, sizeof key));
  const auto sign = [&](const std::string& text) {
    unsigned char bytes[crypto_sign_BYTES];
    crypto_sign_detached(bytes, nullptr, reinterpret_cast<const unsigned char*>(text.data()),
                         text.size(), secret);
    return std::string(reinterpret_cast<const char*>(bytes), sizeof bytes);
  };
  const std::string signature = sign("99.0.0.0\n" + files["/setup"]);
  const std::string of_older = sign("98.0.0.0\n" + files["/setup"]);
  const std::string of_none = sign(files["/setup"]);
  std::string other = signature;
  const std::string longer = signature + "x";
  other[0] = static_cast<char>(other[0] ^ 1);
  const struct {
    const char* what;
    const char* signature;
    std::size_t length;
    bool good;
  } cases[] = {{"signed", signature.data(), 64, true},
               {"tampered", other.data(), 64, false},
               {"cut", signature.data(), 63, false},
               {"long", longer.data(), 65, false},
               {"an older version's", of_older.data(), 64, false},
               {"no version's", of_none.data(), 64, false},
               {"unsigned", nullptr, 0, false}};
  for (const auto& c : cases) {
    files.erase("/setup.sig");
    if (c.signature != nullptr) files["/setup.sig"] = std::string(c.signature, c.length);
    EXPECT_EQ(Check().find("started") != std::string::npos, c.good) << c.what;
    EXPECT_EQ(std::filesystem::exists(installer), c.good) << c.what;
    // Nobody is sent to an address that may be in the same wrong hands.
    if (!c.good) ExpectMessage(2310, 1202, "", c.what);
  }
  files["/setup.sig"] = signature;
  for (const std::string& no_key :
       {std::string("x"), std::string("00"), std::string(62, '0') + "zz"}) {
    settings.SetText(TextSetting::kUpdatePublicKey, no_key);
    EXPECT_EQ(Check(), "open step1 run1000 step2 run1000 step3 run1000 hide close") << no_key;
    EXPECT_FALSE(std::filesystem::exists(installer)) << "not even fetched";
    ExpectMessage(2311, 1202, "", no_key);
  }
}

}  // namespace
}  // namespace orvalo::test
