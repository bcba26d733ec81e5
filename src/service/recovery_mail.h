#pragma once
#include <string>

#include "platform/clock.h"

namespace orvalo::service {

// Mails with temporary passwords: one file each, "*.eml" (mode 0600), in a folder (0700) that the
// machine's mail system empties. Any thread.
class RecoveryMail {
 public:
  RecoveryMail(std::string folder, const platform::Clock& clock)
      : folder_(std::move(folder)), clock_(clock) {}

  // Throws std::runtime_error when the file cannot be laid down.
  void Send(const std::string& user, const std::string& email, const std::string& password);

 private:
  const std::string folder_;
  const platform::Clock& clock_;
};

}  // namespace orvalo::service
