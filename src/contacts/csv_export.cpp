#include "contacts/csv_export.h"

#include <algorithm>
#include <string>
#include <utility>

#include "app/export_places.h"
#include "app/file_texts.h"
#include "app/texts.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "platform/output_file.h"
#include "store/sms_database.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr int kCsvPatternId = 1296;
constexpr int kCsvNameId = 1297;
constexpr int kCsvFilterId = 1298;
constexpr int kExportDoneCaptionId = 1299;
constexpr int kExportDoneTextId = 1300;
constexpr int kCsvNotOpenedTextId = 1301;
constexpr int kCsvFailedCaptionId = 1302;
constexpr std::string_view kHeader = "FName,SName,Title,Custom,Mobile\r\n";
constexpr std::string_view kHeaderWithGroup = "FName,SName,Title,Custom,Mobile,Group\r\n";

// Writes the lines of contacts; one for the whole file, so that its line is made once.
class ContactLines {
 public:
  explicit ContactLines(platform::OutputFile& file) : file_(file) {}
  void Write(const ContactView& contact, std::string_view ending) {
    line_.clear();
    for (const std::string_view text :
         {contact.name, contact.surname, contact.title, contact.custom}) {
      line_.append(text).append(1, ',');
    }
    file_.Write(line_.append(contact.mobile).append(ending));
  }

 private:
  platform::OutputFile& file_;
  std::string line_;
};

}  // namespace

bool CsvExport::WriteContacts(const std::string& path, std::span<const std::int32_t> cids) {
  return Write(path, kHeader, [&](ContactLines& lines) {
    database_.ForEachContactOf(cids,
                               [&](const ContactView& contact) { lines.Write(contact, "\r\n"); });
  });
}

bool CsvExport::WriteGroups(const std::string& path, std::span<const std::int32_t> gids) {
  return Write(path, kHeaderWithGroup, [&](ContactLines& lines) {
    for (const std::int32_t gid : gids) {
      const auto name = database_.GetGroupName(gid);
      if (!name) continue;
      const std::string ending = "," + *name + "\r\n";
      database_.ForEachMember(gid,
                              [&](const ContactView& contact) { lines.Write(contact, ending); });
    }
  });
}

std::vector<std::int32_t> CsvExport::MembersOf(std::span<const std::int32_t> gids) {
  std::vector<std::int32_t> cids;
  for (const std::int32_t gid : gids) {
    const auto members = database_.MemberIds(gid);
    cids.insert(cids.end(), members.begin(), members.end());
  }
  std::sort(cids.begin(), cids.end());
  cids.erase(std::unique(cids.begin(), cids.end()), cids.end());
  return cids;
}

template <typename WriteRows>
bool CsvExport::Write(const std::string& path, std::string_view header,
                      const WriteRows& write_rows) {
  const std::string target = places_.PathOf(path);
  platform::OutputFile file(target, places_.Own());
  if (file.Write(header)) {
    ContactLines lines(file);
    try {
      write_rows(lines);
    } catch (const StoreError& error) {
      return Fail(error.InWords(texts_));
    }
  }
  return file.Commit() ||
         Fail(WithReason(texts_.Format(kCsvNotOpenedTextId, {target}).value_or(target),
                         file.Error(), texts_));
}

bool CsvExport::Fail(const std::string& text) {
  boxes_.Show(text, texts_.Load(kCsvFailedCaptionId), platform::BoxIcon::kNone);
  return false;
}

CsvExportDialog::CsvExportDialog(SmsDatabase& database, const Texts& texts,
                                 platform::MessageBoxes& boxes, const ExportPlaces& places,
                                 std::vector<std::int32_t> selected)
    : texts_(texts),
      boxes_(boxes),
      writer_(database, texts, boxes, places),
      selected_(std::move(selected)),
      groups_(database),
      selection_chosen_(!selected_.empty()) {}

void CsvExportDialog::EditPath(std::string_view path) {
  path_ = platform::FirstCharacters(path, kPathWidth);
}

void CsvExportDialog::Browse(CsvExportWindow& window) {
  const auto path = window.PickFileToSave(texts_.Load(kCsvNameId), texts_.LoadOrEmpty(kCsvFilterId),
                                          texts_.LoadOrEmpty(kCsvPatternId));
  if (!path || platform::CountCharacters(*path) > kPathWidth) return;
  EditPath(*path);
  window.ShowPath(path_);
}

void CsvExportDialog::ChooseSelection(bool selection) {
  selection_chosen_ = selection && SelectionOffered();
}

bool CsvExportDialog::OkEnabled() const {
  return !path_.empty() && (selection_chosen_ || groups_.CheckedCount() > 0);
}

void CsvExportDialog::Ok() {
  if (!OkEnabled()) return;
  if (selection_chosen_) {
    writer_.WriteContacts(path_, selected_);
  } else if (ExportGroups()) {
    boxes_.Show(texts_.Load(kExportDoneTextId), texts_.Load(kExportDoneCaptionId),
                platform::BoxIcon::kNone);
  }
}

// False when there was nothing to write, or it failed.
bool CsvExportDialog::ExportGroups() {
  const auto gids = groups_.CheckedGids();
  if (associate_) return writer_.WriteGroups(path_, gids);
  std::vector<std::int32_t> cids;
  try {
    cids = writer_.MembersOf(gids);
  } catch (const StoreError& error) {
    boxes_.Show(error.InWords(texts_), texts_.Load(kCsvFailedCaptionId), platform::BoxIcon::kNone);
    return false;
  }
  return !cids.empty() && writer_.WriteContacts(path_, cids);
}

}  // namespace orvalo
