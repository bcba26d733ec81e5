#pragma once
#include <cstdint>
#include <span>

namespace orvalo {

// Whoever takes recipients from the contacts page; implemented by the compose logic. Each operation
// replaces the contacts chosen so far; typed numbers, recent and external choices and the message
// text stay. Main thread. The caller has brought the compose page to the front.
class RecipientTaker {
 public:
  virtual ~RecipientTaker() = default;
  // These contacts become the chosen ones; the first of them is shown in the recipient tree.
  // Identifiers that no contact can have are passed over.
  virtual void SelectContactRecipients(std::span<const std::int32_t> cids) = 0;
  // The members of these groups become the chosen contacts.
  virtual void SelectGroupRecipients(std::span<const std::int32_t> gids) = 0;
};

}  // namespace orvalo
