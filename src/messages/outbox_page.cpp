#include "messages/outbox_page.h"

#include <algorithm>
#include <utility>

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/engine_requests.h"
#include "messages/message_loader.h"
#include "messages/message_texts.h"
#include "messages/outbox_copy.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr std::int32_t kUnreadableIcon = 10;
constexpr std::int32_t kMostShownWaiting = 999;
constexpr std::size_t kDeletedAtOnce = 1'000;  // rows of one transaction: other writers wait for it

constexpr int kProgramNameId = 1024;
constexpr int kManyWaitingTextId = 1138;
constexpr int kWaitingTextId = 1139;
constexpr int kQueryFailedCaptionId = 1412;
constexpr int kQueryFailedTextId = 1413;
constexpr int kSendFailedCaptionId = 1414;
constexpr int kSendSelectedFailedTextId = 1415;
constexpr int kSendAllFailedTextId = 1416;
constexpr int kDeleteCaptionId = 1417;
constexpr int kDeleteTextId = 1418;
constexpr int kNoExportCaptionId = 1421;
constexpr int kNothingToExportTextId = 1422;
constexpr int kBeingSentCaptionId = 2334;
constexpr int kBeingSentTextId = 2335;
constexpr int kUnreadableTextId = 2190;

bool IsStatus(std::int32_t stat, SmsStatus status) {
  return stat == static_cast<std::int32_t>(status);
}

}  // namespace

OutboxPage::OutboxPage(const OutboxParts& parts, OutboxWindow& window)
    : parts_(parts), window_(window), rows_(parts.database) {}

void OutboxPage::SetUp() {
  FullRefresh();
  UpdateCaption();
}

void OutboxPage::BroughtToFront() {
  FullRefresh();
  window_.Redraw();
}

void OutboxPage::MessageInHand(std::int32_t id) {
  std::lock_guard guard(mutex_);
  if (id == 0) {
    pass_ended_ = true;
  } else {
    in_hand_.push_back(id);
  }
  if (!std::exchange(posted_, true)) parts_.own_mailbox.Post(kWmOutboxRefresh, 0, 0);
}

void OutboxPage::RefreshRequested() {
  std::vector<std::int32_t> ids;
  bool pass_ended = false;
  {
    std::lock_guard guard(mutex_);
    ids.swap(in_hand_);
    pass_ended = std::exchange(pass_ended_, false);
    posted_ = false;
  }
  if (!window_.IsOnShow()) return;  // coming to the front refreshes it
  if (pass_ended) {
    FullRefresh();
  } else {
    RowRefresh(ids);
  }
  window_.Redraw();
}

// A list that cannot be read stays as it was; its lines then show "?".
bool OutboxPage::FullRefresh() {
  try {
    rows_.Reload();
  } catch (const StoreError& error) {
    window_.SetUnreadable(true);
    NoteUnreadable(error);
    return false;
  }
  window_.SetUnreadable(false);
  last_in_hand_.clear();
  window_.SetRowCount(rows_.Count());
  selection_.Reset(rows_.Count());
  window_.ShowSelection();
  return true;
}

// Rows are read while the list is drawn, when no message can be shown.
void OutboxPage::NoteUnreadable(const StoreError& error) {
  if (!unreadable_.empty()) return;
  unreadable_ = error.InWords(parts_.texts);
  parts_.own_mailbox.Post(kWmOutboxUnreadable, 0, 0);
}

void OutboxPage::TellUnreadable() {
  parts_.boxes.Show(parts_.texts.Format(kUnreadableTextId, {unreadable_}).value_or(unreadable_),
                    parts_.texts.Load(kProgramNameId), platform::BoxIcon::kStop);
}

// The message before gets its outcome just when the engine takes the next one in hand, so that it
// is looked at once more.
void OutboxPage::RowRefresh(std::span<const std::int32_t> ids) {
  std::vector<std::int32_t> changed = std::move(last_in_hand_);
  last_in_hand_.assign(ids.begin(), ids.end());
  changed.insert(changed.end(), ids.begin(), ids.end());
  const auto refresh = [&] {
    try {
      rows_.RefreshStatus(changed);
    } catch (const StoreError&) {  // the pass ends with a full refresh
    }
  };
  if (rows_.SortColumn() == OutboxColumn::kStatus) {
    KeepingSelection(refresh);
  } else {
    refresh();  // at a cost that does not depend on the number of rows
  }
}

void OutboxPage::UpdateCaption() {
  Guarded([this] {
    const std::int32_t waiting = parts_.database.CountWaitingSms();
    std::string caption =
        parts_.texts.Load(waiting > kMostShownWaiting ? kManyWaitingTextId : kWaitingTextId);
    const std::size_t number = caption.find("%d");
    if (number != std::string::npos) caption.replace(number, 2, std::to_string(waiting));
    window_.SetTabCaption(caption);
  });
}

void OutboxPage::SetActivity(const std::string& text) { window_.SetStatusLine(text); }

OutboxLine OutboxPage::LineAt(std::size_t position) {
  OutboxLine line{{"?", "?", "?", "?", "?"}, kUnreadableIcon};
  if (position >= rows_.Count()) return line;
  try {
    auto row = parts_.database.GetSms(rows_.IdAt(position));
    if (!row) return line;
    line.texts = {parts_.fields.Time(row->time), std::move(row->to_info),
                  parts_.fields.Status(row->stat), std::move(row->charge), std::move(row->msg)};
    line.reason = std::move(row->reason);
    if (row->stat >= 0 && row->stat < kSmsStatusCount) line.icon = row->stat;
  } catch (const StoreError& error) {
    NoteUnreadable(error);
  }
  return line;
}

void OutboxPage::HeaderClicked(OutboxColumn column) {
  Guarded([&] {
    KeepingSelection([&] {
      if (column == rows_.SortColumn()) {
        rows_.Reverse();
      } else {
        rows_.SortBy(column);
      }
    });
  });
  window_.Redraw();
}

void OutboxPage::KeepingSelection(const std::function<void()>& sort) {
  const auto selected = selection_.Positions();
  std::vector<bool> selected_rows(selected.empty() ? 0 : rows_.Count());
  for (const std::size_t position : selected) selected_rows[rows_.RowAt(position)] = true;
  sort();
  if (selected.empty()) return;
  selection_.Clear();
  for (std::size_t position = 0; position < rows_.Count(); ++position) {
    if (selected_rows[rows_.RowAt(position)]) selection_.Set(position, true);
  }
  window_.ShowSelection();
}

bool OutboxPage::OpenMenu(std::int64_t position) {
  menu_id_ = kNoMessage;
  if (rows_.Count() == 0) return false;
  if (position >= 0 && position < static_cast<std::int64_t>(rows_.Count()))
    menu_id_ = rows_.IdAt(static_cast<std::size_t>(position));
  return true;
}

bool OutboxPage::IsEnabled(OutboxCommand command) {
  if (command == OutboxCommand::kSelectAll) return true;
  if (menu_id_ == kNoMessage) return false;
  bool enabled = false;
  Guarded([&] {
    const auto row = parts_.database.GetSms(menu_id_);
    enabled =
        row && !IsStatus(row->stat, SmsStatus::kEditing) &&
        !IsStatus(row->stat, SmsStatus::kProcessing) &&
        (command != OutboxCommand::kRefreshStatus || !IsStatus(row->stat, SmsStatus::kExpanded));
  });
  return enabled;
}

void OutboxPage::Run(OutboxCommand command) {
  if (!IsEnabled(command)) {
    TellBeingSent();
    return;
  }
  switch (command) {
    case OutboxCommand::kEdit:
    case OutboxCommand::kResend:
      LoadMenuMessage(command == OutboxCommand::kEdit);
      break;
    case OutboxCommand::kCopy:
      Guarded([this] { parts_.copy.Copy(menu_id_); });
      break;
    case OutboxCommand::kDelete:
      DeleteSelected();
      break;
    case OutboxCommand::kSendNow: {
      IdList list;
      if (!GoOnline(kSendSelectedFailedTextId, kSendFailedCaptionId, &list)) return;
      list.ids = SelectedIds();
      parts_.engine.RequestSend(std::move(list));
      break;
    }
    case OutboxCommand::kSelectAll:
      SelectAll();
      break;
    case OutboxCommand::kRefreshStatus: {
      IdList list;
      if (!GoOnline(kQueryFailedTextId, kQueryFailedCaptionId, &list)) return;
      list.ids = SelectedIds();
      parts_.engine.RequestQuery(std::move(list));
      break;
    }
  }
}

void OutboxPage::LoadMenuMessage(bool edit) {
  if (loader_ == nullptr) return;
  Guarded([&] {
    if (loader_->LoadMessage(menu_id_, edit)) {
      parts_.main_window.Post(kWmSwitchPage, 0, kComposeTab);
    } else {
      TellBeingSent();
    }
  });
}

// The engine may take a message in hand while its menu is open, or just before it is edited.
void OutboxPage::TellBeingSent() {
  bool being_sent = false;
  Guarded([&] { being_sent = IsBeingSent(menu_id_); });
  if (being_sent) ShowBeingSent();
}

bool OutboxPage::IsBeingSent(std::int32_t id) {
  const auto row = parts_.database.GetSms(id);
  return row && IsStatus(row->stat, SmsStatus::kProcessing);
}

void OutboxPage::ShowBeingSent() {
  parts_.boxes.Show(parts_.texts.Load(kBeingSentTextId), parts_.texts.Load(kBeingSentCaptionId),
                    platform::BoxIcon::kInformation);
}

void OutboxPage::DeleteSelected() {
  const std::vector<std::int32_t> ids = SelectedIds();
  if (ids.empty()) return;
  const std::string question =
      parts_.texts.Format(kDeleteTextId, {static_cast<std::int64_t>(ids.size())})
          .value_or(std::string());
  const auto answer = parts_.boxes.Show(question, parts_.texts.Load(kDeleteCaptionId),
                                        platform::BoxIcon::kQuestion, platform::BoxButtons::kYesNo);
  if (answer == platform::BoxAnswer::kNo || answer == platform::BoxAnswer::kCancel) return;
  bool left_any = false;
  Guarded([&] {
    for (std::size_t done = 0; done < ids.size(); done += kDeletedAtOnce) {
      SmsDatabase::Transaction transaction(parts_.database);
      const std::size_t end = std::min(ids.size(), done + kDeletedAtOnce);
      for (std::size_t i = done; i < end; ++i)
        left_any = (!parts_.database.DeleteSms(ids[i]) && IsBeingSent(ids[i])) || left_any;
      transaction.Commit();
    }
  });
  FullRefresh();
  window_.Redraw();
  UpdateCaption();
  if (left_any) ShowBeingSent();
}

void OutboxPage::SelectAll() {
  selection_.SetAll();
  window_.ShowSelection();
  window_.ScrollToTop();
}

void OutboxPage::SendAllNow() {
  IdList list;
  if (!GoOnline(kSendAllFailedTextId, kSendFailedCaptionId, &list)) return;
  list.ids = {kEveryMessage};
  parts_.engine.RequestSend(std::move(list));
}

void OutboxPage::ExportCsv() {
  Guarded([this] {
    if (rows_.Count() == 0 && parts_.database.CountSms() == 0) {
      parts_.boxes.Show(parts_.texts.Load(kNothingToExportTextId),
                        parts_.texts.Load(kNoExportCaptionId), platform::BoxIcon::kInformation);
      return;
    }
    window_.OpenExport(SelectedIds());
  });
}

bool OutboxPage::GoOnline(int text_id, int caption_id, IdList* list) {
  AppSettings& settings = parts_.settings;
  if (settings.Flag(FlagSetting::kWorkingOnLine)) return true;
  const bool logged_in =
      parts_.log_in(settings.Text(TextSetting::kLogin), settings.Text(TextSetting::kPassword));
  if (!logged_in) {
    parts_.boxes.Show(parts_.texts.Load(text_id) + "\r\n\r\n" + parts_.login_failure(),
                      parts_.texts.Load(caption_id), platform::BoxIcon::kStop);
  }
  settings.SetFlag(FlagSetting::kWorkingOnLine, logged_in);
  parts_.main_window.Post(logged_in ? kWmOnline : kWmOffline, 0, 0);
  list->go_offline = logged_in;
  return logged_in;
}

std::vector<std::int32_t> OutboxPage::SelectedIds() const {
  std::vector<std::int32_t> ids;
  for (const std::size_t position : selection_.Positions()) ids.push_back(rows_.IdAt(position));
  return ids;
}

std::vector<std::string> OutboxPage::StatusDescriptions() const {
  std::vector<std::string> descriptions;
  descriptions.reserve(kSmsStatusCount);
  for (int status = 0; status < kSmsStatusCount; ++status)
    descriptions.push_back(parts_.texts.Load(kFirstStatusDescriptionId + status));
  return descriptions;
}

void OutboxPage::Guarded(const std::function<void()>& work) {
  try {
    work();
  } catch (const StoreError& error) {
    parts_.boxes.Show(error.InWords(parts_.texts), parts_.texts.Load(kProgramNameId),
                      platform::BoxIcon::kStop);
  }
}

}  // namespace orvalo
