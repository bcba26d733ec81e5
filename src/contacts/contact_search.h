#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo {

class SmsDatabase;

// The quick search of the contacts page: through all contacts in order of their ids, round and
// round. Main thread.
class ContactSearch {
 public:
  explicit ContactSearch(SmsDatabase& database) : database_(database) {}

  // The text to look for, in any case. Each call, also with the same text, makes the next search
  // start over.
  void SetText(std::string_view text);
  bool HasText() const { return !needle_.empty(); }

  // The next contact whose name, surname or number holds the text; nothing when a whole round has
  // found none. Throws StoreError.
  std::optional<std::int32_t> FindNext();

 private:
  std::optional<std::int32_t> FindBetween(std::int32_t after, std::int32_t last);

  SmsDatabase& database_;
  std::string needle_;         // lower case
  std::int32_t last_hit_ = 0;  // the search goes on behind this contact
};

}  // namespace orvalo
