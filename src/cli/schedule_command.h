#pragma once
#include "cli/command.h"
#include "cli/content_arguments.h"
#include "cli/recipient_arguments.h"
#include "cli/schedule_arguments.h"

namespace orvalo::cli {

// Stores a message to be sent later, once or again and again; or only tells the times. The last
// choices of the window's dialog stay as they are.
class ScheduleCommand : public Command {
 public:
  ScheduleCommand();
  void Define(CLI::App& app) override;
  void Check() const override;
  Access AccessNeeded() const override { return times_only_ ? Access::kLook : Access::kGateway; }
  ExitCode Execute(Context& context) override;

 private:
  static void PrintTimes(Context& context, const Schedule& plan);

  RecipientArguments recipients_;
  ContentArguments content_;
  ScheduleArguments schedule_;
  bool times_only_ = false;
};

}  // namespace orvalo::cli
