#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/recipient_taker.h"
#include "messages/contact_ticks.h"
#include "messages/number_list.h"
#include "messages/recipient_search.h"
#include "messages/recipient_string.h"
#include "messages/recipient_tree.h"

namespace orvalo {

class RecentList;
class RecipientView;

// The recipient inputs of the compose page: the typed numbers, the recipient tree, the quick search
// and the counter, and the recipient string made of them. Owned by whoever owns the compose page;
// main thread; the window forwards what the operator does and draws what this tells it. Operations
// that read the store throw StoreError when it cannot be read.
class RecipientSelection : public RecipientTaker {
 public:
  // What the selection works on; all of it must outlive the selection.
  struct Parts {
    SmsDatabase& database;
    const AppSettings& settings;
    RecentList& recent;
    ExternalAddressBook& external;
    const Texts& texts;
    platform::MessageBoxes& boxes;
    RecipientView& view;
  };

  explicit RecipientSelection(const Parts& parts);

  // --- The typed numbers ---

  const NumberList& Numbers() const { return numbers_; }
  // Whether a character typed into a row's editing field is to be taken; beeps when it is not. Keys
  // held with Ctrl or Alt, control characters and pasted text are not to be asked about.
  bool AcceptTyped(char32_t character);
  // The end of editing a row: its text, or nothing when the edit was cancelled. Digits become the
  // row's text as they are, a number written in another way (see NumberOf) its digits; a list is
  // taken as when it is pasted. False, and the operator has been told, when it was anything but one
  // number: what is no number becomes no recipient, and the row keeps what it held.
  bool EndNumberEdit(std::size_t row, const std::optional<std::string>& text);
  // A key on the list itself: a digit opens the selected row (the last when none is selected) with
  // that digit alone. False for other keys.
  bool DigitKey(char32_t key, std::optional<std::size_t> selected);
  void DeleteKey(std::optional<std::size_t> selected);  // Backspace or Space
  void DoubleClick(std::optional<std::size_t> selected);
  // For the edit commands: the text of the selected row, the last when none is selected.
  const std::string& NumberText(std::optional<std::size_t> selected) const;
  // Pastes over a row (the last when none is selected): one item opens its editing field. See
  // TakePaste.
  void PasteNumber(std::optional<std::size_t> selected, std::string_view text);
  // What an editing field with room for so many characters is to put in: the only item of a text.
  // Several items come into the list, a row for each number, and one message says how many were
  // taken, left out and doubled. An item without a digit, or too long, is told and left out. Must
  // not be called for several items while an editing field is open.
  std::optional<std::string> TakePaste(std::string_view text, std::size_t room);

  // --- The tree ---

  RecipientTree& Tree() { return tree_; }
  void Expand(const RecipientNode& node);
  void SetTick(const RecipientNode& node, bool ticked);
  // The context menu (menu 227) of a node; nothing when it has none.
  struct TreeMenu {
    bool rebuild = false;  // which commands are enabled
    bool clear = false;
  };
  static std::optional<TreeMenu> MenuOf(const RecipientNode& node);
  void Rebuild();  // "Rebuild": the external address book
  void Clear();    // "Clear": the recent numbers
  // The page comes to the front: what has changed in the address book shows.
  void PageShown();

  // --- The quick search ---

  void SearchTextChanged(std::string_view text);
  void Search();  // "Search >>", or Enter in the field

  // --- All recipients ---

  std::size_t Count() const;
  void RefreshCounter();
  // The recipient string of everything chosen, in the order typed numbers, contacts, recent
  // numbers, external entries. What is not in the list of recent numbers yet comes into it; a
  // chosen entry that goes from that list meanwhile becomes a typed number, so that what is chosen
  // stays so. Contacts that are gone are no longer chosen.
  RecipientString BuildRecipientString();
  void LoadRecipients(std::string_view to);  // adds those of a stored string
  void ClearRecipients();

  void SelectContactRecipients(std::span<const std::int32_t> cids) override;
  void SelectGroupRecipients(std::span<const std::int32_t> gids) override;

 private:
  struct Named {
    std::string name, surname, number;
  };

  std::size_t RowOf(std::optional<std::size_t> selected) const;
  void NumbersChanged();
  void TakeList(std::string_view text);
  void TellLeftOut(std::string_view item);
  void Tell(const std::string& text);
  void BeginHandOver();
  void AppendContacts(RecipientString& to, std::vector<Named>& used);
  void AppendExternal(RecipientString& to, std::vector<Named>& used) const;

  Parts parts_;
  NumberList numbers_;
  ContactTicks contacts_;
  RecipientTree tree_;
  RecipientSearch search_;
};

}  // namespace orvalo
