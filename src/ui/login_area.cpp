#include "ui/login_area.h"

#include <utility>

#include "app/startup/program.h"
#include "net/version_info.h"

namespace orvalo::ui {

LoginArea::LoginArea(Program& program, const Kit& kit, platform::Shell& shell,
                     std::function<void()> logged_in)
    : window_(new LoginWindow(kit)),
      page_({program.GetSettings(), program.GetDataFile(), program.GetTexts(), program.GetAccount(),
             shell, program.GetMessageBoxes(), *window_, std::move(logged_in)}) {
  window_->SetProductName(ProgramTitle(program.GetSettings(), program.GetTexts()));
  window_->Connect(page_);
  page_.SetUp();
}

LoginArea::~LoginArea() { delete window_; }

}  // namespace orvalo::ui
