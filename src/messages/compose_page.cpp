#include "messages/compose_page.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/schedule_queue.h"
#include "messages/compose_services.h"
#include "messages/hex_import.h"
#include "messages/message_texts.h"
#include "messages/outbox_caption.h"
#include "messages/recipient_selection.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "store/message_type.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr int kNothingToSendCaptionId = 1331;
constexpr int kNoRecipientsTextId = 1332;
constexpr int kSendButtonId = 1334;
constexpr int kUpdateButtonId = 1335;
constexpr int kImportFailedCaptionId = 1339;
constexpr int kDeletedCaptionId = 2155;
constexpr int kDeletedTextId = 2156;

// String id of what an insert button inserts; 0 for the signature, which is a setting.
int FieldTextIdOf(ComposeInput button) {
  switch (button) {
    case kNameButton:
      return 1029;
    case kSurnameButton:
      return 1030;
    case kTitleButton:
      return 1031;
    case kCustomButton:
      return 1032;
    default:
      return 0;
  }
}

}  // namespace

void ComposePage::SetUp() {
  std::vector<std::string> names;
  names.reserve(kComposeTypes.size());
  for (const std::int32_t type : kComposeTypes) names.push_back(parts_.type_names.Name(type));
  parts_.view.SetTypes(names);
  parts_.view.LimitTextTo(kFirstTextLimit);
  parts_.view.LimitPathTo(kPathLength);
  SetType(kComposeTypes.front());
  parts_.recipients.SearchTextChanged({});
  ClearForm();
  ShowBalance();
}

// --- Type and text

void ComposePage::TypeChosen(std::size_t entry) {
  if (entry >= kComposeTypes.size()) return;
  type_ = kComposeTypes[entry];
  parts_.view.ShowInputs(ComposeInputsOf(type_));
}

void ComposePage::SetType(std::int32_t type) {
  type_ = type;
  const auto offered = std::find(kComposeTypes.begin(), kComposeTypes.end(), type);
  if (offered == kComposeTypes.end()) {
    parts_.view.ChooseType(std::nullopt);
  } else {
    parts_.view.ChooseType(static_cast<std::size_t>(offered - kComposeTypes.begin()));
  }
  parts_.view.ShowInputs(ComposeInputsOf(type));
}

void ComposePage::SetText(std::string text) {
  text_ = std::move(text);
  parts_.view.ShowText(text_);
  TextHasChanged();
}

void ComposePage::TextChanged(std::string_view text) {
  text_ = text;
  TextHasChanged();
}

void ComposePage::TextHasChanged() {
  parts_.view.ShowCounter(LengthCounter(text_));
  ShowButtons();
}

void ComposePage::ShowButtons() {
  const bool ready = !text_.empty();
  parts_.view.NameSendButton(parts_.texts.Load(IsEditing() ? kUpdateButtonId : kSendButtonId));
  parts_.view.EnableSend(ready);
  parts_.view.EnableSchedule(ready && !IsEditing());
}

void ComposePage::TextFocusLost(std::size_t selection_start) { caret_ = selection_start; }

void ComposePage::TextFocusGained() {
  if ((ComposeInputsOf(type_) & kTextField) == 0) return;  // a file's digits, or what was stored
  const bool span = parts_.settings.Flag(FlagSetting::kSpanSms);
  parts_.view.LimitTextTo(span ? std::nullopt : std::optional(kMessageLength));
  const std::string_view kept = LimitText(text_, span);
  if (kept.size() < text_.size()) SetText(std::string(kept));
  parts_.view.SetCaret(std::min(caret_, platform::CountCharacters(text_)));
}

void ComposePage::InsertField(ComposeInput button) {
  if ((ComposeInputsOf(type_) & button) == 0) return;
  const int id = FieldTextIdOf(button);
  const std::string field =
      id != 0 ? parts_.texts.Load(id) : parts_.settings.Text(TextSetting::kSignature);
  const std::string_view before = platform::FirstCharacters(text_, caret_);
  const std::size_t position = platform::CountCharacters(before);
  caret_ = position + platform::CountCharacters(field);
  std::string text = std::string(before).append(field).append(text_, before.size());
  parts_.view.InsertText(position, field);
  TextChanged(text);
  parts_.view.FocusText();
}

// --- The file of the file types

void ComposePage::SetPath(std::string path) {
  path_ = std::move(path);
  parts_.view.ShowPath(path_);
}

void ComposePage::Browse() {
  const ImportFilter filter = ImportFilterOf(type_);
  auto path = parts_.view.PickFile(parts_.texts.Load(filter.default_id),
                                   parts_.texts.Load(filter.filter_id));
  if (!path) return;
  SetPath(std::move(*path));
  if (!IsFileType(type_)) return;
  if (!Import(path_)) SetPath({});
  if (type_ == static_cast<std::int32_t>(MessageType::kPictureMessage)) {
    parts_.view.PreviewPicture(path_);
  }
}

void ComposePage::PathEntered(std::string_view path) {
  path_ = platform::FirstCharacters(path, kPathLength);
  if (IsFileType(type_)) Import(path_);
}

bool ComposePage::Import(const std::string& path) {
  ImportFailure failure{};
  auto digits = ImportAsHexadecimal(path, &failure);
  if (!digits) {
    parts_.boxes.Show(ImportFailureText(parts_.texts, path, failure),
                      parts_.texts.Load(kImportFailedCaptionId), platform::BoxIcon::kStop);
    return false;
  }
  SetText(std::move(*digits));
  return true;
}

// --- Commands

bool ComposePage::TakeRecipients(RecipientString* to) {
  *to = parts_.recipients.BuildRecipientString();
  if (to->count() >= 1) return true;
  parts_.boxes.Show(parts_.texts.Load(kNoRecipientsTextId),
                    parts_.texts.Load(kNothingToSendCaptionId), platform::BoxIcon::kNone);
  return false;
}

void ComposePage::Send() {
  RecipientString to;
  if (text_.empty() || !TakeRecipients(&to)) return;
  if (IsEditing()) {
    if (!UpdateEdited(to)) return;
  } else {
    QueuedMessage message;
    message.type = type_;
    message.to = to.text();
    message.text = text_;
    parts_.services.QueueMessage(message);
  }
  ClearForm();
  parts_.caption.UpdateCaption();
}

// One that waits for its time is not sent before it without the operator's word. Delayed ones keep
// their time in any case, and what is due or has no time of its own goes out at once.
UpdateTiming ComposePage::TimingOfEdited() {
  const auto row = parts_.database.GetSms(edited_);
  if (!row || row->saved_stat != static_cast<std::int32_t>(SmsStatus::kScheduled) ||
      row->time <= parts_.clock.Now())
    return UpdateTiming::kNow;
  return parts_.view.AskUpdateTiming(TimeText(parts_.texts, parts_.clock, row->time));
}

// A message that was deleted while it was edited cannot be changed. What the page holds is then a
// new message, and the operator is told and decides whether to send it.
bool ComposePage::UpdateEdited(const RecipientString& to) {
  const auto timing = TimingOfEdited();
  if (timing == UpdateTiming::kGoBack) return false;
  if (!parts_.database.UpdateEditedSms(edited_, type_, to.text(), text_,
                                       timing == UpdateTiming::kAtItsTime)) {
    EndEditing();
    const std::string send = parts_.texts.Load(kSendButtonId);
    parts_.boxes.Show(parts_.texts.Format(kDeletedTextId, {send}).value_or(std::string()),
                      parts_.texts.Load(kDeletedCaptionId), platform::BoxIcon::kInformation);
    return false;
  }
  return true;
}

void ComposePage::ScheduleMessage() {
  RecipientString to;
  if (text_.empty() || IsEditing() || !TakeRecipients(&to)) return;
  const auto schedule = parts_.view.AskSchedule();
  if (!schedule || schedule->occurrences.empty()) return;
  QueuedMessage message;
  message.type = type_;
  message.to = to.text();
  message.text = text_;
  QueueOccurrences(parts_.database, *schedule, message, [this](const QueuedMessage& queued) {
    return parts_.services.QueueMessage(queued);
  });
  ClearForm();
  parts_.caption.UpdateCaption();
}

void ComposePage::EndEditing() {
  if (!IsEditing()) return;
  parts_.database.RestoreEditedSms();
  edited_ = -1;
  ShowButtons();
}

void ComposePage::ClearForm() {
  EndEditing();
  caret_ = 0;
  SetText({});
  parts_.recipients.ClearRecipients();
  SetPath({});
  parts_.view.PreviewPicture({});
}

bool ComposePage::LoadMessage(std::int32_t id, bool edit) {
  ClearForm();
  auto row = parts_.database.GetSms(id);
  if (!row || (edit && !parts_.database.BeginEditSms(id))) {
    parts_.recipients.RefreshCounter();
    return false;
  }
  if (edit) edited_ = id;
  SetType(row->type);
  SetText(std::move(row->msg));
  parts_.recipients.LoadRecipients(row->to);
  return true;
}

void ComposePage::RefreshBalance() {
  parts_.services.QueryBalance();
  ShowBalance();
  parts_.caption.UpdateCaption();
}

void ComposePage::ShowBalance() {
  parts_.view.ShowBalance(parts_.services.BalanceText(), parts_.services.BalanceHint());
}

// --- Edit commands

void ComposePage::Edit(EditCommand command) {
  const ComposeView::Focus focus = parts_.view.FocusedInput();
  if (focus == ComposeView::Focus::kElsewhere) return;
  if (focus == ComposeView::Focus::kNumbers) {
    EditNumbers(command);
  } else {
    parts_.view.RunEditCommand(focus, command);
  }
}

void ComposePage::EditNumbers(EditCommand command) {
  const auto selected = parts_.view.SelectedNumber();
  if (command == EditCommand::kPaste) {
    parts_.recipients.PasteNumber(selected, parts_.view.ClipboardText());
    return;
  }
  const std::string text = parts_.recipients.NumberText(selected);
  if (command == EditCommand::kSelectAll || text.empty()) return;
  parts_.view.SetClipboardText(text);
  if (command == EditCommand::kCut) parts_.recipients.DeleteKey(selected);
}

}  // namespace orvalo
