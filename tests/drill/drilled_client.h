#pragma once
#include <memory>
#include <string>
#include <vector>

#include "drill/flushed_copy.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

namespace orvalo::test {

// The real orvaloctl on a data folder of its own, one process after the other, each of which may be
// killed or lose its power.
class DrilledClient {
 public:
  // `power_cut`: path of the library that makes power cuts possible; empty for none.
  explicit DrilledClient(std::string power_cut);

  // Runs a command to its end. Throws std::runtime_error, with what it printed, when it ends
  // with a status above `highest`.
  std::string Do(const std::vector<std::string>& arguments, int highest = 0);

  void Start(const std::vector<std::string>& arguments);
  bool IsRunning() const { return process_ && process_->IsRunning(); }
  void Kill();
  void CutPower();  // also of one that has ended: what it has not flushed is gone
  void End();       // as a user would

  // Of the processes from now on; needs the library. In seconds, may be negative.
  void SetClockAhead(long seconds) { clock_ahead_ = seconds; }
  bool HasPowerCuts() const { return !power_cut_.empty(); }
  const std::string& folder() const { return folder_.path(); }

 private:
  std::vector<std::string> Words(const std::vector<std::string>& arguments) const;

  TemporaryFolder folder_, copies_;
  std::string power_cut_;
  long clock_ahead_ = 0;
  std::unique_ptr<ChildProcess> process_;
};

}  // namespace orvalo::test
