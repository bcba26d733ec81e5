#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/group_choices.h"

namespace orvalo::platform {
class MessageBoxes;
}

namespace orvalo {

class ExportPlaces;
class SmsDatabase;
class Texts;

// Writes contacts to a comma-separated text file that the import reads back. Replaces what is there
// when all is written; values stand as they are stored. False when the file cannot be opened or
// written, is the program's own, or the contacts cannot be read: the operator has then been told,
// and what was there is there still. Main thread.
class CsvExport {
 public:
  CsvExport(SmsDatabase& database, const Texts& texts, platform::MessageBoxes& boxes,
            const ExportPlaces& places)
      : database_(database), texts_(texts), boxes_(boxes), places_(places) {}

  // These contacts, in this order; ids without a contact are left out.
  bool WriteContacts(const std::string& path, std::span<const std::int32_t> cids);
  // The members of these groups, group by group, each with its group's name.
  bool WriteGroups(const std::string& path, std::span<const std::int32_t> gids);
  // The members of these groups, each once, ascending; for WriteContacts. Throws StoreError.
  std::vector<std::int32_t> MembersOf(std::span<const std::int32_t> gids);

 private:
  template <typename WriteRows>
  bool Write(const std::string& path, std::string_view header, const WriteRows& write_rows);
  bool Fail(const std::string& text);

  SmsDatabase& database_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  const ExportPlaces& places_;
};

// The window of the export dialog, as far as its logic needs it; see CsvImportWindow. Main thread.
class CsvExportWindow {
 public:
  virtual ~CsvExportWindow() = default;
  virtual std::optional<std::string> PickFileToSave(const std::string& default_name,
                                                    const std::string& filter,
                                                    const std::string& default_pattern) = 0;
  virtual void ShowPath(const std::string& path) = 0;
};

// The choices of the EXPORT CONTACTS dialog and its rules. Made for one showing; main thread. After
// each change the window asks OkEnabled and GroupsEnabled.
class CsvExportDialog {
 public:
  static constexpr std::size_t kPathWidth = 260;  // characters of the file field

  // `selected` are the contacts selected in the member list, in its order. Throws StoreError when
  // the groups cannot be read.
  CsvExportDialog(SmsDatabase& database, const Texts& texts, platform::MessageBoxes& boxes,
                  const ExportPlaces& places, std::vector<std::int32_t> selected);

  const std::string& Path() const { return path_; }
  void EditPath(std::string_view path);  // on every change of the file field
  // A picked path that is too long for the field is passed over: never cut.
  void Browse(CsvExportWindow& window);

  bool SelectionOffered() const { return !selected_.empty(); }
  bool SelectionChosen() const { return selection_chosen_; }  // else the checked groups
  void ChooseSelection(bool selection);                       // passed over when it is not offered
  bool GroupsEnabled() const { return !selection_chosen_; }   // the list and the association box

  const GroupChoices& Groups() const { return groups_; }
  void CheckGroup(std::size_t group, bool checked) { groups_.Check(group, checked); }
  bool Associates() const { return associate_; }
  void Associate(bool associate) { associate_ = associate; }

  bool OkEnabled() const;
  // Exports and tells that it has, or why not; the dialog is to end in any case.
  void Ok();

 private:
  bool ExportGroups();

  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  CsvExport writer_;
  const std::vector<std::int32_t> selected_;
  GroupChoices groups_;
  std::string path_;
  bool selection_chosen_;
  bool associate_ = false;
};

}  // namespace orvalo
