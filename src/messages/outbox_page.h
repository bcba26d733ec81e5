#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gateway/engine_notices.h"
#include "messages/outbox_caption.h"
#include "messages/outbox_rows.h"
#include "messages/outbox_selection.h"
#include "platform/mailbox.h"
#include "platform/message_box.h"

namespace orvalo {

class AppSettings;
class EngineCommands;
class MessageLoader;
class MessageTexts;
class OutboxCopy;
class StoreError;
class Texts;
struct IdList;

// Posted to the outbox's own mailbox: the window then calls OutboxPage::RefreshRequested.
inline constexpr std::uint32_t kWmOutboxRefresh = platform::kWmApp + 40;
// Posted there once: the window then calls OutboxPage::TellUnreadable.
inline constexpr std::uint32_t kWmOutboxUnreadable = platform::kWmApp + 41;

// The columns of the list: string id of the header, width in pixels.
struct OutboxHeader {
  int text_id;
  int width;
};
inline constexpr std::array<OutboxHeader, kOutboxColumnCount> kOutboxHeaders{
    {{1408, 110}, {1409, 90}, {1410, 70}, {1423, 50}, {1411, 350}}};

// What the list shows of one message.
struct OutboxLine {
  std::array<std::string, kOutboxColumnCount> texts;  // by column
  std::int32_t icon = 0;                              // image of the strip of status icons
  std::string reason = {};                            // why the message was refused; else empty
};

// The context menu's commands, in its order.
enum class OutboxCommand { kEdit, kCopy, kDelete, kSendNow, kSelectAll, kResend, kRefreshStatus };

// The outbox's window, as far as its logic needs it. Main thread.
class OutboxWindow {
 public:
  virtual ~OutboxWindow() = default;
  virtual bool IsOnShow() const = 0;  // the outbox is the page in front
  virtual void SetRowCount(std::size_t rows) = 0;
  virtual void SetUnreadable(bool unreadable) = 0;  // the list lacks rows: it does not look empty
  virtual void Redraw() = 0;                        // asks LineAt for what is visible
  virtual void ShowSelection() = 0;  // asks SelectedRuns; must not report it back as a change
  virtual void ScrollToTop() = 0;
  virtual void SetTabCaption(const std::string& caption) = 0;
  virtual void SetStatusLine(const std::string& text) = 0;
  virtual void OpenExport(std::vector<std::int32_t> selected) = 0;  // see OutboxExportDialog
};

// What the outbox works with. All of it outlives the page; references only.
struct OutboxParts {
  SmsDatabase& database;
  AppSettings& settings;
  const Texts& texts;
  const MessageTexts& fields;
  platform::MessageBoxes& boxes;
  platform::Mailbox& main_window;
  platform::Mailbox& own_mailbox;  // of the page's window; gets kWmOutboxRefresh
  EngineCommands& engine;
  OutboxCopy& copy;
  // Logs in with a user and a password; true when logged in.
  std::function<bool(std::string_view, std::string_view)> log_in;
  std::function<std::string()> login_failure = {};  // why it did not, in words for the operator
};

// The outbox: every message on a line, sorted by a column, and the commands on them. One object,
// owned by its window's creator, alive as long as the main window; it is told of the engine's work
// as long as it is set in EngineNotices. Main thread but for MessageInHand.
//
// The selection is kept by display position. It follows its messages when the list is sorted anew
// and is cleared by every full refresh. Where the store refuses, the operator is told and nothing
// has changed; a refresh that cannot read the store leaves the list as it was. That rows cannot be
// read is told once.
class OutboxPage : public OutboxView, public OutboxCaption {
 public:
  OutboxPage(const OutboxParts& parts, OutboxWindow& window);

  // Where messages are edited; set once, after both pages exist.
  void SetMessageLoader(MessageLoader* loader) { loader_ = loader; }

  // --- Refreshing.
  void SetUp();           // once, when the window stands
  void BroughtToFront();  // whenever the page is shown
  // The engine's call, on its thread: notes the id and posts kWmOutboxRefresh, once until it has
  // been answered.
  void MessageInHand(std::int32_t id) override;
  void RefreshRequested();  // answers kWmOutboxRefresh
  void TellUnreadable();    // answers kWmOutboxUnreadable
  void UpdateCaption() override;
  void SetActivity(const std::string& text);  // of the engine; empty when it rests

  // --- The list. A line is read from the store when it is drawn; all "?" when it cannot be read.
  std::size_t RowCount() const { return rows_.Count(); }
  OutboxLine LineAt(std::size_t position);
  void HeaderClicked(OutboxColumn column);
  OutboxColumn SortColumn() const { return rows_.SortColumn(); }
  bool IsReversed() const { return rows_.IsReversed(); }

  // --- The selection, from the list's notifications.
  void RowSelected(std::size_t position, bool selected) { selection_.Set(position, selected); }
  void RangeSelected(std::size_t anchor, std::size_t clicked) {
    selection_.SetRange(anchor, clicked);
  }
  void SelectionLost() { selection_.Clear(); }
  bool IsSelected(std::size_t position) const { return selection_.Has(position); }
  std::vector<std::pair<std::size_t, std::size_t>> SelectedRuns() const {
    return selection_.Runs();
  }

  // --- Commands. The context menu: opened by a right click on a row, or on none (-1). The message
  // clicked stays the menu's even when the list is sorted meanwhile.
  bool OpenMenu(std::int64_t position);  // false: no menu is to be shown
  bool IsEnabled(OutboxCommand command);
  void Run(OutboxCommand command);  // from the menu; one not enabled does nothing but say so
  void SelectAll();                 // also Ctrl+A
  void SendAllNow();                // the button "Send Now"
  void ExportCsv();                 // the button "Export CSV"

  // The descriptions of the 18 statuses for "Help", in status order.
  std::vector<std::string> StatusDescriptions() const;

 private:
  bool FullRefresh();
  void NoteUnreadable(const StoreError& error);
  void RowRefresh(std::span<const std::int32_t> ids);
  // Sorts with the selection following its messages.
  void KeepingSelection(const std::function<void()>& sort);
  std::vector<std::int32_t> SelectedIds() const;
  void LoadMenuMessage(bool edit);
  void TellBeingSent();  // unless the menu's message is not
  bool IsBeingSent(std::int32_t id);
  void ShowBeingSent();
  void DeleteSelected();
  // False, the operator having been told, when the program cannot go online. `list` learns whether
  // it has gone online for it.
  bool GoOnline(int text_id, int caption_id, IdList* list);
  // Runs what may meet a store that refuses, and tells the operator.
  void Guarded(const std::function<void()>& work);

  static constexpr std::int32_t kNoMessage = -1;

  OutboxParts parts_;
  OutboxWindow& window_;
  MessageLoader* loader_ = nullptr;
  OutboxRows rows_;
  OutboxSelection selection_;
  std::string unreadable_;                  // why the first row could not be read; empty: all could
  std::int32_t menu_id_ = kNoMessage;       // the message right-clicked last
  std::vector<std::int32_t> last_in_hand_;  // rows whose status may change once more

  std::mutex mutex_;  // guards what follows: the notes of MessageInHand
  std::vector<std::int32_t> in_hand_;
  bool pass_ended_ = false;
  bool posted_ = false;
};

}  // namespace orvalo
