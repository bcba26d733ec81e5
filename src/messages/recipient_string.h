#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

// Writes a recipient string: items with a comma before each, an item being a number or "A" and a
// contact's id (",111,222,A12"). It stands in the column To of a message.
class RecipientString {
 public:
  void AddNumber(std::string_view number);  // an empty number adds nothing
  void AddContact(std::int32_t cid);
  const std::string& text() const { return text_; }
  std::size_t count() const { return count_; }  // of items

 private:
  std::string text_;
  std::size_t count_ = 0;
};

// One item of a stored recipient string.
struct RecipientItem {
  std::optional<std::int32_t> cid;  // of an item that names a contact
  std::string_view text;            // as it stands in the string
};

// The items in order; empty ones are passed over. "A" not followed by digits alone is no contact.
// The items look into `to`.
std::vector<RecipientItem> SplitRecipients(std::string_view to);

}  // namespace orvalo
