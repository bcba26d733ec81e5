#include "ui/desktop_stage.h"

#include <QAbstractButton>
#include <QLineEdit>

#include "app/data_file.h"
#include "component/register_component.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "platform/file.h"

namespace orvalo::test {

Program::Result DesktopStage::Run(const Body& body) {
  if (gateway_ == nullptr) {
    gateway_ = std::make_unique<GatewayProgram>(
        folder_.path(), std::vector<std::string>{"--demo", "--sim-delivery-seconds", "0"});
  }
  platform::MakeFolder(folder_.File("client"));
  platform::ClassRegistry registry;
  component::RegisterComponent(registry);
  Program::Options options;
  options.data_folder = folder_.File("client");
  options.enter_data_folder = false;
  {
    DataFile file(options.data_folder + "/SMS.dat", true);
    file.SetString("COMBaseURL", gateway_->url());
    file.SetString("client_id", "Orvalo");
  }
  const ui::Surroundings around{files, shell, clipboard, {}, {}, {}, {}};
  return Program(boxes, platform::SystemClock(), registry).Run(options, [&](Program& program) {
    ui::Desktop desktop(program, around);
    desktop.Open();
    body(desktop, program);
    return 0;
  });
}

void DesktopStage::Speak(const std::string& container) {
  platform::MakeFolder(folder_.File("client"));
  Spill(folder_.File("client/Language.rcc"), Slurp(container));
}

void DesktopStage::LogIn(ui::Desktop& desktop, bool offline) {
  for (const char* name : {"loginUser", "loginPassword"}) {
    auto& field = Find<QLineEdit>(desktop, name);
    field.clear();
    QTest::keyClicks(&field, QStringLiteral("demo"));
  }
  auto& tick = Find<QAbstractButton>(desktop, "workOffline");
  if (tick.isChecked() != offline) tick.click();
  Click(desktop, "loginOk");
}

void DesktopStage::Click(ui::Desktop& desktop, const char* button) {
  QTest::mouseClick(&Find<QAbstractButton>(desktop, button), Qt::LeftButton);
}

}  // namespace orvalo::test
