#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace orvalo {

class AppSettings;
class MessageTypeNames;
class SmsDatabase;
class SmsStatusNames;
class Texts;
struct MessageRow;

// A message's time on the local calendar, by string 1033. Any thread.
std::string TimeText(const Texts& texts, const platform::Clock& clock, std::int32_t time);

// A stored message's fields as the operator reads them: in the outbox, its export and its copy.
// References only. Main thread; throws StoreError where it reads contacts.
class MessageTexts {
 public:
  MessageTexts(SmsDatabase& database, const AppSettings& settings, const Texts& texts,
               const SmsStatusNames& status_names, const MessageTypeNames& type_names,
               const platform::Clock& clock)
      : database_(database),
        settings_(settings),
        texts_(texts),
        status_names_(status_names),
        type_names_(type_names),
        clock_(clock) {}

  std::string Time(std::int32_t time) const { return TimeText(texts_, clock_, time); }
  const std::string& Status(std::int32_t status) const;
  const std::string& Type(std::int32_t type) const;

  // The numbers of a recipient string, joined by commas: contacts by their mobile numbers, the
  // country prefix applied. A contact that no longer exists leaves its place empty.
  std::string Numbers(std::string_view to) const;
  // Of a message: those it went to, whatever has become of its contacts; before it is sent, those
  // of its recipient string.
  std::string NumbersOf(const MessageRow& row) const;

 private:
  SmsDatabase& database_;
  const AppSettings& settings_;
  const Texts& texts_;
  const SmsStatusNames& status_names_;
  const MessageTypeNames& type_names_;
  const platform::Clock& clock_;
};

}  // namespace orvalo
