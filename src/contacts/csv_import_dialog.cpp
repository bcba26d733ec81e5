#include "contacts/csv_import_dialog.h"

#include <algorithm>

#include "app/export_places.h"
#include "app/file_texts.h"
#include "app/texts.h"
#include "platform/code_page.h"
#include "platform/collation.h"
#include "platform/message_box.h"
#include "store/store_error.h"

namespace orvalo {

namespace {

constexpr int kCommaId = 1440;
constexpr int kSemicolonId = 1441;
constexpr int kTabId = 1442;
constexpr int kImportPatternId = 1443;
constexpr int kImportFilterId = 1444;
constexpr int kImportCaptionId = 1445;
constexpr int kImportedTextId = 1446;
constexpr int kNotTextId = 2004;
constexpr int kUnreadableId = 2005;
constexpr int kNulTextId = 2312;
constexpr int kQuotedTextId = 2313;
constexpr int kLongPathTextId = 2314;
constexpr int kOfferRejectedId = 2006;
constexpr int kOneInsertedId = 2340;
constexpr int kSeveralInsertedId = 2341;
constexpr int kOneDiscardedId = 2342;
constexpr int kSeveralDiscardedId = 2343;
constexpr int kOfferOneRejectedId = 2344;
constexpr int kRejectedNameId = 2007;
constexpr int kRejectedFilterId = 2008;
constexpr int kRejectedPatternId = 2009;
constexpr int kRejectedNotSavedId = 2015;

}  // namespace

CsvImportDialog::CsvImportDialog(SmsDatabase& database, const Texts& texts,
                                 platform::MessageBoxes& boxes, const ExportPlaces& places,
                                 std::int32_t gid)
    : database_(database),
      texts_(texts),
      boxes_(boxes),
      places_(places),
      groups_(database),
      separators_{{texts.Load(kCommaId), ','},
                  {texts.Load(kSemicolonId), ';'},
                  {texts.Load(kTabId), '\t'}} {
  std::sort(separators_.begin(), separators_.end(), [](const Separator& a, const Separator& b) {
    return platform::CompareTexts(a.name, b.name) < 0;
  });
  groups_.CheckGid(gid);
}

void CsvImportDialog::EditPath(std::string_view path) {
  path_ = platform::FirstCharacters(path, kPathWidth);
}

void CsvImportDialog::Browse(CsvImportWindow& window) {
  const auto path = window.PickFileToOpen(texts_.LoadOrEmpty(kImportFilterId),
                                          texts_.LoadOrEmpty(kImportPatternId));
  if (!path) return;
  if (platform::CountCharacters(*path) > kPathWidth) {
    Complain(texts_.Format(kLongPathTextId, {static_cast<std::int64_t>(kPathWidth)})
                 .value_or(std::string()));
    return;
  }
  EditPath(*path);
  window.ShowPath(path_);
}

void CsvImportDialog::ChooseSeparator(std::size_t separator) {
  if (separator < separators_.size()) separator_ = separator;
}

bool CsvImportDialog::OkEnabled() const { return groups_.CheckedCount() > 0 && !path_.empty(); }

bool CsvImportDialog::Ok(CsvImportWindow& window) {
  if (!OkEnabled()) return false;
  CsvImportResult result;
  try {
    result = Import(window, quotes_);
    if (result.end == CsvImportResult::End::kQuoted) {
      const auto quotes = AskAboutQuotes(result.line);
      if (!quotes) return false;
      window.ShowEnclosesFields(*quotes == CsvQuotes::kEnclose);
      result = Import(window, *quotes);
    }
  } catch (const StoreError& error) {
    Complain(error.InWords(texts_));
    return false;
  }
  if (result.end == CsvImportResult::End::kCancelled) return false;
  if (result.end != CsvImportResult::End::kFinished) {
    Complain(Problem(result));
    return false;
  }
  boxes_.Show(texts_
                  .Format(kImportedTextId,
                          {Counted(result.inserted, kOneInsertedId, kSeveralInsertedId),
                           Counted(result.discarded, kOneDiscardedId, kSeveralDiscardedId)})
                  .value_or(std::string()),
              texts_.Load(kImportCaptionId), platform::BoxIcon::kInformation);
  OfferRejected(result.rejected, window);
  return true;
}

CsvImportResult CsvImportDialog::Import(CsvImportWindow& window, CsvQuotes quotes) {
  CsvImportOrder order{places_.PathOf(path_), separators_[separator_].value, groups_.CheckedGids(),
                       auto_create_,          prevent_duplicates_,           quotes};
  std::reverse(order.gids.begin(), order.gids.end());
  const struct End {
    CsvImportWindow& window;
    ~End() { window.EndProgress(); }
  } end{window};
  return ImportContacts(database_, order, [&](std::uint64_t done, std::uint64_t size) {
    return window.ShowProgress(done, size);
  });
}

// Nothing when the import is not to go on.
std::optional<CsvQuotes> CsvImportDialog::AskAboutQuotes(std::uint64_t line) {
  const auto text = texts_.Format(kQuotedTextId, {static_cast<std::int64_t>(line)});
  switch (boxes_.Show(text.value_or(std::string()), texts_.Load(kImportCaptionId),
                      platform::BoxIcon::kWarning, platform::BoxButtons::kYesNoCancel)) {
    case platform::BoxAnswer::kYes:
      return CsvQuotes::kEnclose;
    case platform::BoxAnswer::kNo:
      return CsvQuotes::kLiteral;
    default:
      return std::nullopt;
  }
}

std::string CsvImportDialog::Problem(const CsvImportResult& result) const {
  const bool nul = result.end == CsvImportResult::End::kNul;
  const auto text =
      nul ? texts_.Format(kNulTextId, {static_cast<std::int64_t>(result.line), path_})
          : texts_.Format(result.end == CsvImportResult::End::kBinary ? kNotTextId : kUnreadableId,
                          {path_});
  return text.value_or(std::string());
}

void CsvImportDialog::OfferRejected(const RejectedLines& rejected, CsvImportWindow& window) {
  if (rejected.Count() == 0) return;
  const auto count = static_cast<std::int64_t>(rejected.Count());
  const auto answer = boxes_.Show(Counted(count, kOfferOneRejectedId, kOfferRejectedId),
                                  texts_.Load(kImportCaptionId), platform::BoxIcon::kQuestion,
                                  platform::BoxButtons::kYesNo);
  if (answer != platform::BoxAnswer::kYes) return;
  while (const auto path = window.PickFileToSave(texts_.Load(kRejectedNameId),
                                                 texts_.LoadOrEmpty(kRejectedFilterId),
                                                 texts_.LoadOrEmpty(kRejectedPatternId))) {
    const auto error = rejected.Save(*path, texts_, places_);
    if (!error) return;
    Complain(WithReason(texts_.Format(kRejectedNotSavedId, {*path}).value_or(""), error, texts_));
  }
}

std::string CsvImportDialog::Counted(std::int64_t count, int one_id, int several_id) const {
  return count == 1 ? texts_.Load(one_id)
                    : texts_.Format(several_id, {count}).value_or(std::string());
}

void CsvImportDialog::Complain(const std::string& text) {
  boxes_.Show(text, texts_.Load(kImportCaptionId), platform::BoxIcon::kStop);
}

}  // namespace orvalo
