#include "service/recovery_mail.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <stdexcept>

#include "platform/file.h"
#include "service/database.h"
#include "service/secrets.h"

namespace orvalo::service {

void RecoveryMail::Send(const std::string& user, const std::string& email,
                        const std::string& password) {
  const auto now = clock_.Now();
  const auto name = fmt::format("{}-{}", now, ToHex(RandomBytes(8)));
  const auto mail = fmt::format(
      "From: Orvalo gateway <orvalo-gateway@localhost>\r\n"
      "To: <{}>\r\n"
      "Subject: Your temporary password\r\n"
      "Date: {:%a, %d %b %Y %H:%M:%S} +0000\r\n"
      "Message-ID: <{}@localhost>\r\n"
      "MIME-Version: 1.0\r\n"
      "Content-Type: text/plain; charset=utf-8\r\n"
      "Content-Transfer-Encoding: 8bit\r\n"
      "\r\n"
      "Somebody, we hope you, asked for a new password for the user {}.\r\n"
      "\r\n"
      "Temporary password: {}\r\n"
      "\r\n"
      "It opens your account for 24 hours. Your old password stays valid.\r\n",
      email, fmt::gmtime(static_cast<std::time_t>(now)), name, user, password);
  PrepareFolder(folder_);
  platform::FileError error;
  if (platform::ReplaceFile(folder_ + "/" + name + ".eml", mail, &error)) return;
  if (error.kind == platform::FileError::Kind::kFull) throw DiskFull(folder_);
  throw std::runtime_error("cannot lay a mail into " + folder_ + ": " + error.detail);
}

}  // namespace orvalo::service
