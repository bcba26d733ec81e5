#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/csv_import.h"
#include "contacts/group_choices.h"

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class ExportPlaces;
class RejectedLines;
class SmsDatabase;
class Texts;

// The window of the import dialog, as far as its logic needs it. Filters hold pairs of a name and a
// pattern, each ended by a line feed. Main thread.
class CsvImportWindow {
 public:
  virtual ~CsvImportWindow() = default;
  // The system's dialogs for a file; nothing when the operator gave up.
  virtual std::optional<std::string> PickFileToOpen(const std::string& filter,
                                                    const std::string& default_pattern) = 0;
  virtual std::optional<std::string> PickFileToSave(const std::string& default_name,
                                                    const std::string& filter,
                                                    const std::string& default_pattern) = 0;
  virtual void ShowPath(const std::string& path) = 0;
  virtual void ShowEnclosesFields(bool enclose) = 0;  // the tick, after the operator's answer
  // Progress with a Cancel, between 0 and `size`. May run the window's events, so that it can be
  // drawn and cancelled, but let no other command of the program through. False when it has been
  // cancelled.
  virtual bool ShowProgress(std::uint64_t done, std::uint64_t size) = 0;
  virtual void EndProgress() = 0;  // the progress goes; also when none was shown
};

// The choices of the UPLOAD CSV FILE dialog and its rules. Made for one showing; main thread. After
// each change the window asks OkEnabled.
class CsvImportDialog {
 public:
  static constexpr std::size_t kPathWidth = 260;  // characters of the file field

  struct Separator {
    std::string name;
    char value;
  };

  // The group `gid` starts checked. Throws StoreError when the groups cannot be read.
  CsvImportDialog(SmsDatabase& database, const Texts& texts, platform::MessageBoxes& boxes,
                  const ExportPlaces& places, std::int32_t gid);

  const std::string& Path() const { return path_; }
  void EditPath(std::string_view path);  // on every change of the file field
  // A picked path that is too long for the field is refused with a message: never cut.
  void Browse(CsvImportWindow& window);

  const std::vector<Separator>& Separators() const { return separators_; }  // sorted by name
  std::size_t ChosenSeparator() const { return separator_; }
  void ChooseSeparator(std::size_t separator);

  const GroupChoices& Groups() const { return groups_; }
  void CheckGroup(std::size_t group, bool checked) { groups_.Check(group, checked); }

  bool PreventsDuplicates() const { return prevent_duplicates_; }
  void PreventDuplicates(bool prevent) { prevent_duplicates_ = prevent; }
  // Whether fields may stand in quotation marks. Unless it is ticked, the first such field makes Ok
  // ask; the answer ticks it.
  bool EnclosesFields() const { return quotes_ == CsvQuotes::kEnclose; }
  void EncloseFields(bool enclose) { quotes_ = enclose ? CsvQuotes::kEnclose : CsvQuotes::kRefuse; }
  bool AutoCreates() const { return auto_create_; }
  void AutoCreate(bool create) { auto_create_ = create; }

  bool OkEnabled() const;
  // Imports and tells how many lines were taken; where some were not, offers to save a list of
  // them. True when the dialog is to end with OK. False when the operator has cancelled the import,
  // the file is no text, or the disk refused (the operator has then been told): nothing was
  // imported, and the dialog stays.
  bool Ok(CsvImportWindow& window);

 private:
  CsvImportResult Import(CsvImportWindow& window, CsvQuotes quotes);
  std::optional<CsvQuotes> AskAboutQuotes(std::uint64_t line);
  std::string Problem(const CsvImportResult& result) const;
  void OfferRejected(const RejectedLines& rejected, CsvImportWindow& window);
  // One text for a single thing, another for several or none.
  std::string Counted(std::int64_t count, int one_id, int several_id) const;
  void Complain(const std::string& text);

  SmsDatabase& database_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  const ExportPlaces& places_;
  GroupChoices groups_;
  std::vector<Separator> separators_;
  std::size_t separator_ = 0;
  std::string path_;
  bool prevent_duplicates_ = false;
  bool auto_create_ = false;
  CsvQuotes quotes_ = CsvQuotes::kRefuse;
};

}  // namespace orvalo
