#include "ui/update_window.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>

#include "support/scripted_http_server.h"
#include "ui/desktop_stage.h"
#include "ui/window_fixture.h"

namespace orvalo::ui {
namespace {

using test::DesktopStage;
using UpdateWindowTest = test::WindowTest;

TEST_F(UpdateWindowTest, ShowsTheStepsAndTakesACancel) {
  QWidget owner;
  UpdateWindow window(kit_, owner, {});
  int cancelled = 0;
  window.SetCancelled([&] { ++cancelled; });
  for (int round = 0; round < 2; ++round) {
    window.Open();
    auto& form = *owner.findChild<QWidget*>(QStringLiteral("updateDialog"));
    EXPECT_TRUE(form.isVisible());
    EXPECT_FALSE(form.isModal());
    window.MarkStep(UpdateView::kDownloading);
    window.ShowProgress("17KB");
    window.RunMessages(20);
    std::string spoken;
    for (const char* row : {"updateRow0", "updateRow1", "updateRow2", "updateRow3"})
      spoken += Child<QLabel>(form, row).accessibleName().toStdString() + "; ";
    EXPECT_EQ(spoken,
              "Contacting update server: finished; Looking for new update: finished; Downloading "
              "update: in progress; Update downloaded, installing: still to come; ");
    EXPECT_EQ(Child<QLabel>(form, "updateProgress").text(), QStringLiteral("17KB"));
    auto& button = Child<QPushButton>(form, "updateCancel");
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_FALSE(form.close());  // as good as "Cancel"
    EXPECT_EQ(std::exchange(cancelled, 0), 2);
    window.EnableCancel(false);
    QTest::mouseClick(&button, Qt::LeftButton);
    form.close();
    EXPECT_EQ(cancelled, 0);
    window.Hide();
    EXPECT_FALSE(form.isVisible());
    window.Close();
    EXPECT_EQ(owner.findChild<QWidget*>(QStringLiteral("updateDialog")), nullptr);
  }
}

TEST(UpdateJourney, ReplacesTheProgram) {
  DesktopStage stage;
  std::string installer;
  test::ScriptedHttpServer server([&](const test::RecordedRequest& request) {
    return test::ScriptedReply{200, request.path == "/version" ? "99.0.0.0" : installer};
  });
  const std::string proof = stage.Folder().File("installed");
  installer = "#!/bin/sh\necho done >" + proof + "\n";
  const auto result = stage.Run([&](Desktop& desktop, Program& program) {
    AppSettings& settings = program.GetSettings();
    settings.SetText(TextSetting::kUpdateVersionUrl, server.address() + "/version");
    settings.SetText(TextSetting::kUpdateFileUrl, server.address() + "/setup");
    settings.SetText(TextSetting::kUpdateUrl, "https://update.example");
    desktop.Shell().Run(ShellCommand::kCheckForUpdates);
    EXPECT_FALSE(desktop.Window().isVisible());  // the program ends
    EXPECT_TRUE(DesktopStage::Until([&] { return test::Slurp(proof) == "done\n"; }));
  });
  EXPECT_EQ(result.end, Program::End::kRan);
  EXPECT_TRUE(stage.boxes.shown().empty());
}

}  // namespace
}  // namespace orvalo::ui
