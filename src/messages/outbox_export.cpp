#include "messages/outbox_export.h"

#include <string_view>
#include <utility>

#include "app/export_places.h"
#include "app/file_texts.h"
#include "app/texts.h"
#include "messages/message_texts.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "platform/output_file.h"
#include "store/sms_database.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr int kDefaultPatternId = 1280;
constexpr int kDefaultNameId = 1281;
constexpr int kFilterId = 1282;
constexpr int kNotOpenedTextId = 1283;
constexpr int kFailedCaptionId = 1284;
constexpr int kNoteTextId = 1285;
constexpr std::string_view kHeaderLine = "ID\tTime\tStatus\tType\tCharge\tTo\tMsg\r\n";

}  // namespace

std::string ExportLine(const MessageRow& row, const MessageTexts& fields) {
  std::string line = std::to_string(row.id);
  line.append("\t").append(fields.Time(row.time));
  line.append("\t").append(fields.Status(row.stat));
  line.append("\t").append(fields.Type(row.type));
  line.append("\t").append(row.charge);
  line.append("\t").append(fields.NumbersOf(row));
  line.append("\t").append(row.msg);
  return line.append("\r\n");
}

bool OutboxExport::WriteMessages(const std::string& path, std::span<const std::int32_t> ids) {
  return Write(path, [&](platform::OutputFile& file) {
    for (const std::int32_t id : ids) {
      const auto row = database_.GetSms(id);
      if (row && !file.Write(ExportLine(*row, fields_))) return;
    }
  });
}

bool OutboxExport::WriteAll(const std::string& path) {
  return Write(path, [&](platform::OutputFile& file) {
    database_.ForEachSms(
        [&](const MessageRow& row) { return file.Write(ExportLine(row, fields_)); });
  });
}

template <typename WriteRows>
bool OutboxExport::Write(const std::string& path, const WriteRows& write_rows) {
  const std::string target = places_.PathOf(path);
  platform::OutputFile file(target, places_.Own());
  if (file.Write(kHeaderLine)) {
    try {
      write_rows(file);
    } catch (const StoreError& error) {
      return Fail(error.InWords(texts_));
    }
    file.Write(texts_.LoadOrEmpty(kNoteTextId));
  }
  return file.Commit() || Fail(WithReason(texts_.Format(kNotOpenedTextId, {target}).value_or(""),
                                          file.Error(), texts_));
}

bool OutboxExport::Fail(const std::string& text) {
  boxes_.Show(text, texts_.Load(kFailedCaptionId), platform::BoxIcon::kNone);
  return false;
}

OutboxExportDialog::OutboxExportDialog(std::vector<std::int32_t> selected, OutboxExport& writer,
                                       const Texts& texts, OutboxExportWindow& window)
    : selected_(std::move(selected)),
      writer_(writer),
      texts_(texts),
      window_(window),
      selected_chosen_(!selected_.empty()) {}

void OutboxExportDialog::ChooseSelected(bool selected) {
  selected_chosen_ = selected && SelectedOffered();
}

void OutboxExportDialog::EditPath(const std::string& path) {
  path_ = platform::FirstCharacters(path, kPathWidth);
  window_.EnableOk(OkEnabled());
}

void OutboxExportDialog::Browse() {
  const auto path =
      window_.PickFileToSave(texts_.Load(kDefaultNameId), texts_.LoadOrEmpty(kFilterId),
                             texts_.LoadOrEmpty(kDefaultPatternId));
  if (!path || platform::CountCharacters(*path) > kPathWidth) return;
  EditPath(*path);
  window_.ShowPath(path_);
}

void OutboxExportDialog::Ok() {
  if (!OkEnabled()) return;
  if (selected_chosen_) {
    writer_.WriteMessages(path_, selected_);
  } else {
    writer_.WriteAll(path_);
  }
  window_.Close();
}

}  // namespace orvalo
