#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvalo::platform {
class MessageBoxes;
class OutputFile;
}  // namespace orvalo::platform

namespace orvalo {

class ExportPlaces;
class MessageTexts;
class SmsDatabase;
class Texts;
struct MessageRow;

// One line of the export, its end included: seven fields between tabs, written as they are.
std::string ExportLine(const MessageRow& row, const MessageTexts& fields);

// Writes messages to a tab-separated text file, replacing what is there when all is written. Main
// thread.
class OutboxExport {
 public:
  OutboxExport(SmsDatabase& database, const MessageTexts& fields, const Texts& texts,
               platform::MessageBoxes& boxes, const ExportPlaces& places)
      : database_(database), fields_(fields), texts_(texts), boxes_(boxes), places_(places) {}

  // These messages in this order (ids without a row are left out), or all in order of their ids.
  // False when the file cannot be opened or written, is the program's own, or the messages cannot
  // be read: the operator has then been told, and what was there is there still.
  bool WriteMessages(const std::string& path, std::span<const std::int32_t> ids);
  bool WriteAll(const std::string& path);

 private:
  template <typename WriteRows>
  bool Write(const std::string& path, const WriteRows& write_rows);
  bool Fail(const std::string& text);

  SmsDatabase& database_;
  const MessageTexts& fields_;
  const Texts& texts_;
  platform::MessageBoxes& boxes_;
  const ExportPlaces& places_;
};

// The window of the export dialog, as far as its logic needs it. Main thread.
class OutboxExportWindow {
 public:
  virtual ~OutboxExportWindow() = default;
  // The system's dialog for a file to be saved. `filter` holds pairs of a name and a pattern, each
  // ended by a line feed. Nothing when the operator gave up.
  virtual std::optional<std::string> PickFileToSave(const std::string& default_name,
                                                    const std::string& filter,
                                                    const std::string& default_pattern) = 0;
  virtual void ShowPath(const std::string& path) = 0;
  virtual void EnableOk(bool enabled) = 0;
  virtual void Close() = 0;
};

// The choices of the EXPORT OUTBOX dialog and its rules. Made for one showing; main thread.
class OutboxExportDialog {
 public:
  static constexpr std::size_t kPathWidth = 260;  // characters of the file field

  // `selected` are the messages selected in the outbox, in the order shown.
  OutboxExportDialog(std::vector<std::int32_t> selected, OutboxExport& writer, const Texts& texts,
                     OutboxExportWindow& window);

  bool SelectedOffered() const { return !selected_.empty(); }
  bool SelectedChosen() const { return selected_chosen_; }  // else all messages
  void ChooseSelected(bool selected);                       // passed over when it is not offered

  void EditPath(const std::string& path);  // on every change of the file field
  bool OkEnabled() const { return !path_.empty(); }
  void Browse();  // a picked path that is too long for the field is passed over: never cut
  void Ok();      // exports and closes, whether or not the export has succeeded

 private:
  const std::vector<std::int32_t> selected_;
  OutboxExport& writer_;
  const Texts& texts_;
  OutboxExportWindow& window_;
  std::string path_;
  bool selected_chosen_;
};

}  // namespace orvalo
