#pragma once
#include <cstdint>
#include <string>

namespace orvalo::platform {
class Clipboard;
}

namespace orvalo {

class MessageTexts;
class SmsDatabase;
class Texts;
struct MessageRow;

// The details of one message as a text for the clipboard.
std::string MessageDetails(const MessageRow& row, const MessageTexts& fields, const Texts& texts);

// Puts the details of a message on the clipboard. Main thread.
class OutboxCopy {
 public:
  OutboxCopy(SmsDatabase& database, const MessageTexts& fields, const Texts& texts,
             platform::Clipboard& clipboard)
      : database_(database), fields_(fields), texts_(texts), clipboard_(clipboard) {}

  // False, the clipboard keeping what it held, when the message is gone or the clipboard cannot be
  // had. Throws StoreError when the message cannot be read.
  bool Copy(std::int32_t id);

 private:
  SmsDatabase& database_;
  const MessageTexts& fields_;
  const Texts& texts_;
  platform::Clipboard& clipboard_;
};

}  // namespace orvalo
