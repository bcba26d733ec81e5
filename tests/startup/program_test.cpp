#include "app/startup/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "support/fake_clock.h"
#include "support/fake_component.h"
#include "support/scoped_variable.h"
#include "support/scripted_message_boxes.h"
#include "support/slapd.h"
#include "support/temporary_folder.h"

namespace orvalo {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using End = Program::End;

class ProgramTest : public ::testing::Test {
 protected:
  ProgramTest() { fake_.Register(registry_); }

  Program::Options Folder(const std::string& folder) {
    Program::Options options;
    options.data_folder = folder;
    options.enter_data_folder = false;
    return options;
  }
  Program::Result Run(const Program::Launcher& launcher) {
    return Run(Folder(folder_.path()), launcher);
  }
  Program::Result Run(const Program::Options& options, const Program::Launcher& launcher) {
    return Program(boxes_, clock_, registry_).Run(options, launcher);
  }
  test::ScriptedMessageBoxes::Shown OnlyBox() {
    const auto shown = boxes_.shown();
    EXPECT_EQ(shown.size(), 1u);
    return shown.empty() ? test::ScriptedMessageBoxes::Shown() : shown.front();
  }

  test::TemporaryFolder folder_;
  test::FakeClock clock_;
  test::ScriptedMessageBoxes boxes_;
  test::FakeGateway fake_;
  platform::ClassRegistry registry_;
};

int Nothing(Program&) { return 0; }

TEST_F(ProgramTest, ARunStoresItsSettingsAndReturnsTheLaunchersCode) {
  const auto result = Run([](Program& program) {
    program.GetSettings().SetText(TextSetting::kSenderId, "Orvalo");
    return 7;
  });
  EXPECT_EQ(result.end, End::kRan);
  EXPECT_EQ(result.exit_code, 7);
  Run([](Program& program) {
    EXPECT_EQ(program.GetSettings().Text(TextSetting::kSenderId), "Orvalo");
    EXPECT_EQ(program.GetStatusNames().Name(8), "Delivered to a SMS gateway");
    EXPECT_EQ(program.GetDatabase().GetGroupName(1), "All Contacts");
    return 0;
  });
  EXPECT_THAT(test::Slurp(folder_.File("SMS.log")), HasSubstr("Started @ "));
}

TEST_F(ProgramTest, TheComponentGetsAddressAndProxyBeforeTheLauncherRuns) {
  std::vector<std::string> members;
  Run([&](Program&) {
    for (const auto& call : fake_.Calls()) members.push_back(call.member + ":" + call.Argument(0));
    return 0;
  });
  EXPECT_THAT(members,
              ::testing::ElementsAre("SetBaseURL:http://127.0.0.1:8480", "ConfigureProxyEx:1"));
}

TEST_F(ProgramTest, AProxyFaultIsShownWithItsLinkAndTheRunGoesOn) {
  const std::pair<int, const char*> faults[] = {
      {95, "Failed to communicate with the proxy server."},
      {96, "Failed to communicate via the proxy server."},
      {99, "The application was unable to configure the proxy settings"},
  };
  for (const auto& [code, text] : faults) {
    fake_.On("ConfigureProxyEx", "", code);
    const std::size_t before = boxes_.shown().size();
    EXPECT_EQ(Run(Nothing).end, End::kRan);
    ASSERT_EQ(boxes_.shown().size(), before + 1);
    EXPECT_THAT(boxes_.shown().back().text, ::testing::StartsWith(text));
    EXPECT_EQ(boxes_.shown().back().caption, "Proxy setup error ...");
    EXPECT_THAT(boxes_.shown().back().url, HasSubstr("://"));
  }
}

TEST_F(ProgramTest, ASecondRunOnTheSameFolderEndsAtOnce) {
  Run([&](Program& first) {
    first.GetDatabase().AddGroup("Friends");
    bool launched = false;
    const auto second = Run([&](Program&) { return launched = true, 0; });
    EXPECT_EQ(second.end, End::kInUse);
    EXPECT_EQ(second.exit_code, 0);
    EXPECT_FALSE(launched);
    EXPECT_TRUE(boxes_.shown().empty());
    test::TemporaryFolder other;
    EXPECT_EQ(Run(Folder(other.path()), Nothing).end, End::kRan);
    return 0;
  });
  EXPECT_EQ(Run(Nothing).end, End::kRan);  // released
}

TEST_F(ProgramTest, LookingOnNeedsNoLockAndWritesNothing) {
  Run([&](Program& running) {
    running.GetDatabase().AddGroup("Friends");
    const std::string settings = test::Slurp(folder_.File("SMS.dat"));
    const std::string log = test::Slurp(folder_.File("SMS.log"));
    auto options = Folder(folder_.path());
    options.look_only = true;
    options.with_gateway = false;
    const auto result = Run(options, [](Program& looking) {
      EXPECT_EQ(looking.GetDatabase().AllGroups().size(), 2u);
      looking.GetSettings().SetText(TextSetting::kSenderId, "lost");
      return 0;
    });
    EXPECT_EQ(result.end, End::kRan);
    EXPECT_EQ(test::Slurp(folder_.File("SMS.dat")), settings);
    EXPECT_EQ(test::Slurp(folder_.File("SMS.log")), log);
    return 0;
  });
}

TEST_F(ProgramTest, AFolderNameOfOneCharacterIsNone) {
  EXPECT_EQ(Run(Folder("x"), Nothing).end, End::kNoDataFolder);
  EXPECT_EQ(
      OnlyBox().text,
      "Can't find data file.\nThe application is not installed correctly.  Please reinstall!");
  EXPECT_EQ(OnlyBox().caption, "Critical error...");
}

TEST_F(ProgramTest, AConfigurationThatCannotBeReadIsNotTakenForNone) {
  const std::string config = folder_.File("Corvane/Orvalo3.conf");
  std::filesystem::create_directories(config);
  const test::ScopedVariable home("XDG_CONFIG_HOME", folder_.path().c_str());
  const test::ScopedVariable none("ORVALO_DATA_PATH", nullptr);
  const auto result = Run(Folder(""), Nothing);
  EXPECT_EQ(result.end, End::kNoDataFolder);
  EXPECT_THAT(OnlyBox().text,
              ::testing::StartsWith("The configuration file \"" + config + "\" cannot be read: "));
  EXPECT_EQ(result.reason, OnlyBox().text) << "for the error output";
  const test::ScopedVariable given("ORVALO_DATA_PATH", folder_.path().c_str());
  EXPECT_EQ(Run(Folder(""), Nothing).end, End::kRan) << "nobody needs it";
}

TEST_F(ProgramTest, ADatabaseThatCannotBeOpenedIsToldInWords) {
  const std::string missing = folder_.File("missing");
  const auto result = Run(Folder(missing), Nothing);
  EXPECT_EQ(result.end, End::kNoDatabase);
  EXPECT_EQ(OnlyBox().text,
            "Unable to configure internal Database.  Aborting!\n\n" + result.reason);
  EXPECT_THAT(result.reason, HasSubstr("cannot be opened"));
  EXPECT_EQ(OnlyBox().caption, "SMS Client failed to start...");
  EXPECT_FALSE(std::filesystem::exists(missing));

  DataFile(folder_.File("SMS.dat"), true).SetString("WriteLog", "1");
  test::Spill(folder_.File("SMS.db"), "this is no database, and stays as it is");
  const auto foreign = Run(Nothing);
  EXPECT_EQ(foreign.end, End::kNoDatabase);
  EXPECT_THAT(foreign.reason, HasSubstr("is not a message database"));
  EXPECT_THAT(boxes_.shown().back().text, EndsWith("\n\n" + foreign.reason));
  EXPECT_THAT(test::Slurp(folder_.File("SMS.log")), HasSubstr(foreign.reason));
  EXPECT_EQ(test::Slurp(folder_.File("SMS.db")), "this is no database, and stays as it is");
}

TEST_F(ProgramTest, WhatWouldLoseSomethingEndsTheRunInWords) {
  Run([](Program& program) {
    program.GetSettings().SetText(TextSetting::kPrefix, "27");
    return 0;
  });
  const std::string settings = folder_.File("SMS.dat"), lock = folder_.File(".Orvalo3Mutex.lock");
  const std::string sound = test::Slurp(settings);
  const auto ends = [&](const Program::Options& options, End end, const std::string& words) {
    bool launched = false;
    EXPECT_EQ(Run(options, [&](Program&) { return launched = true, 0; }).end, end) << words;
    EXPECT_FALSE(launched) << words;
    ASSERT_FALSE(boxes_.shown().empty()) << words;
    EXPECT_THAT(boxes_.shown().back().text, HasSubstr(words));
  };
  auto options = Folder(folder_.path());
  std::filesystem::remove(settings);
  std::filesystem::create_directory(settings);  // nobody can read it as a file
  ends(options, End::kNoSettings, "\"" + settings + "\" cannot be read");
  EXPECT_TRUE(std::filesystem::is_directory(settings));
  std::filesystem::remove(settings);

  test::Spill(settings, sound.substr(0, sound.size() - 1));
  options.sound_settings_only = true;
  for (int i = 0; i < 2; ++i) ends(options, End::kDamagedSettings, "SMS.dat.damaged");
  EXPECT_EQ(Run(Nothing).end, End::kRan) << "with a window, the operator is warned";
  EXPECT_THAT(boxes_.shown().back().text, HasSubstr("SMS.dat.damaged"));
  EXPECT_EQ(Run(options, Nothing).end, End::kRan) << "they are sound again";
  EXPECT_EQ(test::Slurp(settings + ".damaged"), sound.substr(0, sound.size() - 1));

  std::filesystem::remove(lock);
  std::filesystem::create_directory(lock);
  ends(options, End::kNoLock, "\"" + lock + "\" cannot be used");
  ends(Folder("/" + std::string(259, 'd')), End::kNoDataFolder, "longer than 259 bytes");
}

TEST_F(ProgramTest, ARunThatCannotSaveItsSettingsSaysSo) {
  test::Spill(folder_.File(".orvalo-aB3xyz"), "what a killed run has left");
  const auto result = Run([this](Program&) {
    EXPECT_FALSE(std::filesystem::exists(folder_.File(".orvalo-aB3xyz")));
    std::filesystem::remove(folder_.File("SMS.dat"));
    std::filesystem::create_directories(folder_.File("SMS.dat/in the way"));
    return 0;
  });
  EXPECT_EQ(result.end, End::kRan);
  EXPECT_FALSE(result.settings_saved);
  EXPECT_THAT(OnlyBox().text, HasSubstr("could not be saved"));
}

TEST_F(ProgramTest, WithoutAComponentTheLauncherDoesNotRun) {
  const platform::ClassRegistry empty;
  bool launched = false;
  const auto result = Program(boxes_, clock_, empty).Run(Folder(folder_.path()), [&](Program&) {
    return launched = true, 0;
  });
  EXPECT_EQ(result.end, End::kNoGateway);
  EXPECT_FALSE(launched);
  EXPECT_THAT(OnlyBox().text, HasSubstr("The SMS communication layer could not be initialized."));
}

TEST_F(ProgramTest, AnUnexpectedErrorIsShownAndEverythingIsStillClosed) {
  Run([](Program& program) {
    program.GetSettings().SetFlag(FlagSetting::kWriteLog, true);
    program.GetDataFile().SetString("help_url", "https://help.example");
    return 0;
  });
  const auto result = Run([](Program& program) -> int {
    program.GetDatabase().AddGroup("kept");
    throw std::runtime_error("broken window");
  });
  EXPECT_EQ(result.end, End::kUnexpected);
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(OnlyBox().caption, "Unexpected error ...");
  EXPECT_EQ(OnlyBox().url, "https://help.example");
  EXPECT_THAT(test::Slurp(folder_.File("SMS.log")), HasSubstr("broken window"));
  Run([](Program& program) {
    EXPECT_EQ(program.GetDatabase().AllGroups().size(), 2u);
    return 0;
  });
}

TEST_F(ProgramTest, WhatAKilledRunLeftInHandIsFailedAndLogged) {
  std::int32_t id = 0;
  Run([&](Program& program) {
    program.GetSettings().SetFlag(FlagSetting::kWriteLog, true);
    NewSms sms;
    sms.status = SmsStatus::kProcessing;
    sms.to = ",111";
    id = program.GetDatabase().AddSms(sms);
    return 0;
  });
  Run([&](Program& program) {
    EXPECT_EQ(program.GetDatabase().GetSms(id)->stat, static_cast<int>(SmsStatus::kFailed));
    return 0;
  });
  EXPECT_THAT(
      test::Slurp(folder_.File("SMS.log")),
      EndsWith("Sending was interrupted, not sent again: SMS_ID (" + std::to_string(id) + ")\r\n"));
}

TEST_F(ProgramTest, AnAddressBookSessionEndsWithTheRunAndItsNameIsKept) {
  const test::Slapd directory(
      "dn: dc=orvalo,dc=test\nobjectClass: domain\n\n"
      "dn: cn=Ann,dc=orvalo,dc=test\nobjectClass: inetOrgPerson\nsn: A\nmobile: 7\n");
  ASSERT_TRUE(directory.IsUp());
  Run([&](Program& program) {
    program.GetSettings().SetFlag(FlagSetting::kMapiAddressBook, true);
    program.GetSettings().SetText(TextSetting::kOutlookName, directory.url());
    program.GetExternalAddressBook().LoadExternalAddressBook(false);
    EXPECT_EQ(program.GetExternalAddressBook().tree().EntryCount(), 1u);
    EXPECT_EQ(directory.Connections(), 1);
    return 0;
  });
  EXPECT_EQ(directory.Connections(), 0);
  Run([&](Program& program) {
    EXPECT_EQ(program.GetSettings().Text(TextSetting::kOutlookName),
              directory.url() + "/dc=orvalo,dc=test");
    return 0;
  });
}

TEST_F(ProgramTest, TheFirstGroupIsNamedInTheLanguageOfTheFolder) {
  test::Spill(folder_.File("Language.rcc"), test::Slurp(ORVALO_GERMAN));
  Run([](Program& program) {
    EXPECT_EQ(program.GetDatabase().GetGroupName(1), program.GetTexts().Load(1248));
    EXPECT_EQ(program.GetDatabase().GetGroupName(1), "Alle Kontakte");
    return 0;
  });
}

TEST_F(ProgramTest, ADamagedLanguageContainerIsPassedOver) {
  test::Spill(folder_.File("Language.rcc"), "qres" + std::string(200, '\x7f'));
  Run([](Program& program) {
    EXPECT_EQ(program.GetTexts().Load(1024), "Orvalo");
    return 0;
  });
}

TEST_F(ProgramTest, ARunningEngineIsStoppedBeforeItsObjectsGo) {
  const auto result = Run([&](Program& program) {
    EXPECT_TRUE(program.GetEngine().StartEngine());
    program.GetEngine().QueueMessage({.to = ",111", .text = "Hello"});
    return 3;
  });
  EXPECT_EQ(result.exit_code, 3);
  Run([](Program& program) {
    const auto row = program.GetDatabase().AllSms().at(0);
    EXPECT_TRUE(row.stat == static_cast<int>(SmsStatus::kPending) ||
                row.stat == static_cast<int>(SmsStatus::kUnknown))
        << row.stat;
    return 0;
  });
}

}  // namespace
}  // namespace orvalo
