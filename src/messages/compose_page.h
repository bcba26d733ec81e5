#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "messages/compose_view.h"
#include "messages/message_loader.h"
#include "messages/message_types.h"

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class AppSettings;
class ComposeServices;
class MessageTypeNames;
class OutboxCaption;
class RecipientSelection;
class RecipientString;
class SmsDatabase;
class Texts;

// The compose page without its window: the operator's text, type and recipients become a queued or
// scheduled message, or change one that is in the outbox. Owned by whoever owns the window; main
// thread; the window forwards what the operator does and draws what this tells it.
//
// Operations that touch the store throw StoreError when the disk refuses: nothing is then stored,
// and the page keeps what it holds.
class ComposePage : public MessageLoader {
 public:
  static constexpr std::size_t kPathLength = 260;  // characters of the path field

  // All of it must outlive the page.
  struct Parts {
    SmsDatabase& database;
    const AppSettings& settings;
    const Texts& texts;
    const MessageTypeNames& type_names;
    platform::MessageBoxes& boxes;
    ComposeServices& services;
    OutboxCaption& caption;
    RecipientSelection& recipients;
    ComposeView& view;
    const platform::Clock& clock;
  };

  explicit ComposePage(const Parts& parts) : parts_(parts) {}

  void SetUp();  // once, when the window is there

  // --- Type and text ---

  void TypeChosen(std::size_t entry);  // of the type list
  void TextChanged(std::string_view text);
  void TextFocusLost(std::size_t selection_start);
  // Applies the length limit in force and puts the caret back. Does nothing while the type has no
  // text field: what such a message holds is never cut.
  void TextFocusGained();
  // An insert button; does nothing while the type has that button disabled.
  void InsertField(ComposeInput button);

  // --- The file of the file types ---

  void Browse();
  void PathEntered(std::string_view path);  // Enter in the path field

  // --- Commands ---

  void Send();             // "Send >>" or "Update >>"
  void ScheduleMessage();  // "Schedule ..."
  void ClearForm();        // "Clear SMS"
  // Cut, copy, paste or select all in the input that has the focus. In the number list itself they
  // act on the selected row, the last when none is selected.
  void Edit(EditCommand command);
  bool LoadMessage(std::int32_t id, bool edit) override;
  // Asks for the balance, shows it and the number of waiting messages.
  void RefreshBalance();
  void ShowBalance();  // as last known

  bool IsEditing() const { return edited_ >= 0; }
  // The type of the message: the chosen entry's, or that of a loaded message whose type the list
  // does not offer.
  std::int32_t Type() const { return type_; }

 private:
  bool TakeRecipients(RecipientString* to);
  UpdateTiming TimingOfEdited();
  bool UpdateEdited(const RecipientString& to);
  bool Import(const std::string& path);
  void SetType(std::int32_t type);
  void SetText(std::string text);
  void SetPath(std::string path);
  void TextHasChanged();
  void EndEditing();
  void ShowButtons();
  void EditNumbers(EditCommand command);

  Parts parts_;
  std::int32_t edited_ = -1;  // id of the message being edited
  std::int32_t type_ = 0;
  std::string text_;
  std::string path_;
  std::size_t caret_ = 0;  // start of the selection when the text field last lost the focus
};

}  // namespace orvalo
