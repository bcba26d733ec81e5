#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "app/export_places.h"
#include "messages/outbox_bench.h"
#include "messages/outbox_copy.h"
#include "messages/outbox_export.h"
#include "platform/clipboard.h"

namespace orvalo {
namespace {

constexpr char kNote[] =
    "==========\nPlease note: For COMPREHENSIVE MESSAGE REPORTING, please draw an on-line "
    "report.\n==========";
constexpr char kHeader[] = "ID\tTime\tStatus\tType\tCharge\tTo\tMsg\r\n";
constexpr std::int32_t kTime = 1'104'581'100;  // 2005-01-01 12:05

TEST(MessageTextsTest, ExpandRecipientStrings) {
  test::OutboxBench bench;
  const auto contact = std::to_string(bench.database.AddContact({"Ann", "", "", "", "0721", {}}));
  const struct {
    const char* prefix;
    std::string to, numbers;
  } cases[] = {
      {"", ",0821234", "0821234"},
      {"27", ",0821234", "27821234"},
      {"27", ",27821234", "27821234"},
      {"27", ",A" + contact + ",0831", "27721,27831"},
      {"", ",A" + contact + ",A99,5", "0721,,5"},
      {"27", ",000", "27"},
      {"27", ",A99", ""},
      {"", ",12345678901234567890,1", "1234567890123456,1"},
      {"", "", ""},
  };
  for (const auto& c : cases) {
    bench.settings.SetText(TextSetting::kPrefix, c.prefix);
    EXPECT_EQ(bench.fields.Numbers(c.to), c.numbers) << c.to;
  }
}

TEST(OutboxExportTest, WritesTheChosenRowsOrAll) {
  test::OutboxBench bench;
  bench.Add(kTime, ",A99,2", "One\ttab", SmsStatus::kPending);
  bench.database.SetOutcome(1, SmsStatus::kPending, {SmsStatus::kDelivered, "", 0, 0, "1,2"});
  bench.Add(kTime + 60, ",3", "Two", SmsStatus::kMessageExpired, MessageType::kFlash);
  const std::string first = "1\t01/01/2005 12:05\tDelivered\tText\t?\t1,2\tOne\ttab\r\n";
  const std::string second = "2\t01/01/2005 12:06\tMessage expired\tFlash\t?\t3\tTwo\r\n";
  const std::string path = bench.folder.File("Outbox.txt");
  test::Spill(path, std::string(10'000, 'x'));
  const ExportPlaces places;
  OutboxExport writer(bench.database, bench.fields, bench.texts, bench.boxes, places);
  EXPECT_TRUE(writer.WriteAll(path));
  EXPECT_EQ(test::Slurp(path), kHeader + first + second + kNote);
  EXPECT_TRUE(writer.WriteMessages(path, std::vector<std::int32_t>{2, 7, 1}));
  EXPECT_EQ(test::Slurp(path), kHeader + second + first + kNote) << "in the order given";
  EXPECT_TRUE(writer.WriteMessages(path, {}));
  EXPECT_EQ(test::Slurp(path), std::string(kHeader) + kNote);
  EXPECT_TRUE(bench.boxes.shown().empty());
}

TEST(OutboxExportTest, TellsWhatCannotBeWritten) {
  test::OutboxBench bench;
  const ExportPlaces places;
  OutboxExport writer(bench.database, bench.fields, bench.texts, bench.boxes, places);
  std::size_t told = 0;
  for (const std::string& path :
       {bench.folder.path(), bench.folder.File("none/file"), std::string("/dev/full")}) {
    EXPECT_FALSE(writer.WriteAll(path));
    const auto shown = bench.boxes.shown();
    ASSERT_EQ(shown.size(), ++told);
    EXPECT_TRUE(shown.back().text.starts_with("Unable to open '" + path + "' for writing!\n\n"))
        << shown.back().text;
    EXPECT_EQ(shown.back().caption, "Unable to export!");
  }
}

class FakeExportWindow : public OutboxExportWindow {
 public:
  std::optional<std::string> PickFileToSave(const std::string& default_name,
                                            const std::string& filter,
                                            const std::string& default_pattern) override {
    asked = default_name + "|" + filter + "|" + default_pattern;
    return picked;
  }
  void ShowPath(const std::string& path) override { shown = path; }
  void EnableOk(bool enabled) override { ok = enabled; }
  void Close() override { ++closed; }

  std::optional<std::string> picked;
  std::string asked, shown;
  bool ok = false;
  int closed = 0;
};

TEST(OutboxExportDialogTest, GoesByTheSelectionAndThePath) {
  test::OutboxBench bench;
  bench.Add(kTime, ",1", "One");
  bench.Add(kTime, ",2", "Two");
  const ExportPlaces places;
  OutboxExport writer(bench.database, bench.fields, bench.texts, bench.boxes, places);
  FakeExportWindow window;
  OutboxExportDialog none({}, writer, bench.texts, window);
  none.ChooseSelected(true);
  EXPECT_FALSE(none.SelectedChosen());
  none.Ok();
  EXPECT_EQ(window.closed, 0) << "no path yet";

  OutboxExportDialog dialog({2}, writer, bench.texts, window);
  EXPECT_TRUE(dialog.SelectedOffered() && dialog.SelectedChosen());
  dialog.EditPath("x");
  EXPECT_TRUE(window.ok);
  dialog.EditPath("");
  EXPECT_FALSE(window.ok);
  dialog.Browse();
  EXPECT_EQ(window.asked, "Outbox.txt|Text Files (*.txt)\n*.txt\nAll Files (*.*)\n*.*\n\n|*.txt");
  EXPECT_FALSE(window.ok) << "given up";
  window.picked = std::string(261, 'x');
  dialog.Browse();
  EXPECT_FALSE(window.ok) << "longer than the field";
  window.picked = bench.folder.File("picked.txt");
  dialog.Browse();
  EXPECT_EQ(window.shown, *window.picked);
  dialog.Ok();
  EXPECT_EQ(window.closed, 1);
  EXPECT_EQ(test::Slurp(*window.picked).find("One"), std::string::npos);
  dialog.ChooseSelected(false);
  dialog.Ok();
  EXPECT_NE(test::Slurp(*window.picked).find("One"), std::string::npos);
}

class FakeClipboard : public platform::Clipboard {
 public:
  bool SetText(const std::string& text) override {
    if (!open) return false;
    held = text;
    return true;
  }
  bool open = true;
  std::string held;
};

TEST(OutboxCopyTest, CopiesTheDetails) {
  test::OutboxBench bench;
  const std::string long_id(32, 'a');
  const struct {
    MessageType type;
    std::string api_msg_id, text, ids;
  } cases[] = {
      {MessageType::kText, "", "Hello", ""},
      {MessageType::kFlash, ",ID: 12", "Binary message", "12"},
      {MessageType::kUnicode, ",ID: " + long_id + ",id: " + long_id + "|0831", "Hello",
       long_id + "," + long_id},
      {MessageType::kPictureMessage, ",x,ID: ,ID:7", "Binary message", "x,,ID:7"},
      {MessageType::kVCard, ",", "Binary message", ""},
  };
  FakeClipboard clipboard;
  OutboxCopy copy(bench.database, bench.fields, bench.texts, clipboard);
  for (const auto& c : cases) {
    const auto id = bench.Add(kTime, ",1,2", "Hello", SmsStatus::kSent, c.type);
    bench.database.SetApiMsgId(id, c.api_msg_id);
    EXPECT_TRUE(copy.Copy(id));
    EXPECT_EQ(clipboard.held,
              "Time:     01/01/2005 12:05\r\nStatus:   Sent\r\nCharge:   ?\r\nTo:       1,2\r\n"
              "Message:  " +
                  c.text + "\r\nApiMsgID: " + c.ids + "\r\n");
  }
  clipboard.held = "kept";
  EXPECT_FALSE(copy.Copy(99));
  clipboard.open = false;
  EXPECT_FALSE(copy.Copy(1));
  EXPECT_EQ(clipboard.held, "kept");
}

}  // namespace
}  // namespace orvalo
