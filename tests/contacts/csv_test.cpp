#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "contacts/contacts_bench.h"
#include "contacts/csv_import.h"
#include "platform/code_page.h"
#include "store/connection.h"
#include "store/storage.h"

namespace orvalo {
namespace {

using platform::BoxAnswer;
using test::Slurp;
using test::Spill;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string Utf16(std::string_view text, bool big) {
  std::string bytes = big ? "\xFE\xFF" : "\xFF\xFE";
  for (const char16_t unit : platform::ToWide(text)) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += {big ? high : low, big ? low : high};
  }
  return bytes;
}

class CsvTest : public testing::Test, protected test::AddressBook {
 protected:
  CsvImportResult Import(const std::string& bytes, char separator = ',', bool auto_create = false,
                         bool prevent_duplicates = false) {
    Spill(folder.File("in.csv"), bytes);
    return ImportContacts(
        database,
        {folder.File("in.csv"), separator, {staff, friends}, auto_create, prevent_duplicates}, {});
  }
  // "name/surname/title/custom/mobile" of every contact.
  std::vector<std::string> Book() {
    std::vector<std::string> rows;
    for (const ContactRow& row : database.AllContacts())
      rows.push_back(row.name + "/" + row.surname + "/" + row.title + "/" + row.custom + "/" +
                     row.mobile);
    return rows;
  }
  void Clear() {
    for (const ContactRow& row : database.AllContacts()) database.DeleteContact(row.cid, true, 0);
  }

  std::int32_t friends = Group("Friends"), staff = Group("Staff");
};

TEST_F(CsvTest, ReadsWhatStandsBetweenSeparators) {
  struct Case {
    std::string bytes;
    char separator;
    std::int32_t discarded;
    std::vector<std::string> book;
  };
  const std::string twenty = "12345678901234567890";
  const Case cases[] = {
      {"FName,SNAME,title,Custom,mobile\r\nAnn,Lee,Professor Dr,VIP,+27821110001\r\n"
       " \"Bob,Ray\", x,,0\n",
       ',',
       0,
       {"Ann/Lee/Professo/VIP/+27821110001", " \"Bob/Ray\"/ x//0"}},
      {"mobile;Mobile No.;fname\n1;2;3\n4;5\n6\n", ';', 0, {"3////1", "5////4", "////6"}},
      {"mobile\tmobile\n1\t2\n3\n" + twenty + "\n",
       '\t',
       0,
       {"////2", "////3", "////" + twenty.substr(0, 16)}},
      {"fname,mobile\nAnn,\nBob,1\n,2", ',', 1, {"Bob////1", "////2"}},
      {"fname,mobile\nAnn,1\nBob\nEve,2\n", ',', 0, {"Ann////1"}},
      {"mobile,fname\n1,a\n\n2,b\n", ',', 0, {"a////1", "////\n", "b////2"}},
      {"fname,a,b,c,d,mobile,sname\n1,2,3,4,5,6,7\n", ',', 0, {"5////6"}},
      {"a,b,c,d,e,f,mobile\n1,2,3,4,5,6,7\n", ',', 0, {}},
      {"fname,number\nAnn,1\n", ',', 0, {}},
      {"\nfname,mobile\nAnn,1\n", ',', 0, {}},
      {"fname;mobile\nAnn;1\n", ',', 0, {}},
      {"", ',', 0, {}},
      {"\xEF\xBB\xBF"
       "fname,mobile\nÄnne,1\n",
       ',',
       0,
       {"Änne////1"}},
      {Utf16("fname,mobile\r\nÄnne 😀,1\r\n", false), ',', 0, {"Änne 😀////1"}},
      {Utf16("fname,mobile\n山田,1\n", true), ',', 0, {"山田////1"}},
      {"fname,mobile\nJos\xE9 \x80,1\nJosé,2\n", ',', 0, {"José €////1", "José////2"}},
  };
  for (const Case& test : cases) {
    const auto result = Import(test.bytes, test.separator);
    EXPECT_EQ(result.end, CsvImportResult::End::kFinished);
    EXPECT_EQ(result.discarded, test.discarded) << test.bytes;
    EXPECT_EQ(result.inserted, static_cast<std::int32_t>(test.book.size())) << test.bytes;
    EXPECT_EQ(Book(), test.book) << test.bytes;
    Clear();
  }
}

// Chunks of the file end in the middle of lines, characters and pairs of surrogates.
TEST_F(CsvTest, ReadsLongFilesInEveryEncoding) {
  std::string text = "fname,mobile\r\n";
  for (int i = 0; i < 9000; ++i)
    text += "日本😀é" + std::to_string(i) + "," + std::to_string(i) + "\r\n";
  std::vector<std::string> first;
  for (const std::string& bytes : {text, Utf16(text, false), Utf16(text, true)}) {
    EXPECT_EQ(Import(bytes).inserted, 9000);
    if (first.empty()) first = Book();
    EXPECT_EQ(first[8999], "日本😀é8999////8999");
    EXPECT_TRUE(Book() == first);
    Clear();
  }
}

TEST_F(CsvTest, ReadsALineThatIsTooLongInPieces) {
  // The piece would end in the middle of the last é: it ends before it.
  const std::string line = "1," + std::string(8188, 'x') + "é2,y\n3,z\n";
  Import("mobile,fname\n" + line);
  ASSERT_EQ(Book().size(), 3u);
  EXPECT_THAT(Book()[0], HasSubstr("xx////1"));
  EXPECT_EQ(Book()[1], "y////é2");
  EXPECT_EQ(Book()[2], "z////3");
}

TEST_F(CsvTest, RefusesWhatIsNoText) {
  using End = CsvImportResult::End;
  Contact("Ann", "", "1", {friends});
  std::string good = "fname,mobile\n";
  for (int i = 0; i < 10'000; ++i) good += "some\x02one\x1F,0\n";
  const std::string nul(1, '\0');
  const struct {
    std::string bytes;
    End end;
    std::uint64_t line;
  } cases[] = {{"PK\x03\x04mobile", End::kBinary, 0},
               {"\xD0\xCF\x11\xE0mobile", End::kBinary, 0},
               {"%PDF-1.7\nmobile\n", End::kBinary, 0},
               {"mobile\n1\n2" + nul + "\n", End::kNul, 3},
               {std::string("m\0o\0b\0i\0l\0e\0\n\0", 14), End::kNul, 1},
               {Utf16("mobile\n1\n" + nul, true), End::kNul, 3},
               {good + nul, End::kNul, 10'002},
               {good + std::string(100'000, '1') + nul, End::kNul, 10'002}};
  for (const auto& c : cases) {
    const auto result = Import(c.bytes);
    EXPECT_EQ(result.end, c.end) << c.bytes.substr(0, 20);
    EXPECT_EQ(result.line, c.line) << c.bytes.substr(0, 20);
    EXPECT_EQ(Book().size(), 1u) << "nothing is half imported";
  }
  EXPECT_EQ(Import(good).inserted, 10'000) << "other control characters do no harm";
  for (const std::string& path :
       {folder.path(), folder.File("none.csv"), std::string("/dev/null")}) {
    const auto result = ImportContacts(database, {path, ',', {friends}, false, false}, {});
    EXPECT_FALSE(result.opened || result.inserted > 0) << path;
  }
}

TEST_F(CsvTest, ReadsFieldsInQuotationMarks) {
  using End = CsvImportResult::End;
  const std::string many = std::string(9000, 'x');
  const struct {
    std::string bytes;
    std::vector<std::string> book;      // when they enclose
    std::uint64_t first = 0;            // the line that has the first
    std::vector<std::uint64_t> open{};  // lines that are not taken
  } cases[] = {
      {"\"fname\",\"mobile\"\r\n\"Lee, Ann\",1\r\n\"\"\"Bob\"\"\",\"2\"\r\n",
       {"Lee, Ann////1", "\"Bob\"////2"},
       1},
      {"fname,mobile\nAnn \"A\" Lee,1\n", {"Ann \"A\" Lee////1"}},
      {"fname,mobile,title\n\"Ann\r\nLee\",1,\n\"Bob\" Ray,2,\"a\nb\nc\"\n\"\",3,\n",
       {"Ann Lee////1", "Bob Ray//a b c//2", "////3"},
       2},
      {"a,b,c,d,mobile,e,f\n1,2,3,4,5,6,\"7\n7\"\n1,2,3,4,8,6,7\n", {"6////5", "6////8"}, 2},
      {"mobile,fname\n1,\"Ann\n2,Bob\n3,Eve\n", {}, 2, {2}},
      {"mobile,fname\n1,\"" + many + "\n2,Bob\n",
       {"////" + many.substr(0, 16), "Bob////2"},
       2,
       {2}},
  };
  for (const auto& c : cases) {
    Spill(folder.File("in.csv"), c.bytes);
    CsvImportOrder order{folder.File("in.csv"), ',', {friends}, false, false, CsvQuotes::kRefuse};
    const auto refused = ImportContacts(database, order, {});
    EXPECT_EQ(refused.end, c.first != 0 ? End::kQuoted : End::kFinished) << c.bytes;
    EXPECT_EQ(refused.line, c.first) << c.bytes;
    EXPECT_EQ(Book().empty(), c.first != 0) << "nothing is half imported";
    Clear();
    order.quotes = CsvQuotes::kEnclose;
    const auto result = ImportContacts(database, order, {});
    EXPECT_EQ(result.end, End::kFinished);
    EXPECT_EQ(Book(), c.book) << c.bytes.substr(0, 200);
    EXPECT_EQ(result.rejected.Count(RejectReason::kOpenQuote), c.open.size()) << c.bytes;
    Clear();
  }
}

TEST_F(CsvTest, LinksToGroupsAndLeavesDuplicatesOut) {
  const std::string file =
      "mobile,group,fname\n1,,a\n2,FRIENDS,b\n3,New group of a long name,c\n4,NEW GROUP OF A LONG "
      "n,d\n5,All contacts,e\n1,Club,f\n6,Club,g\n1234567890123456xx,,h\n1234567890123456yy,,i\n";
  EXPECT_EQ(Import(file).inserted, 9);
  EXPECT_THAT(database.GroupsOf(3), ElementsAre(staff, friends)) << "in the order given";
  EXPECT_EQ(database.AllGroups().size(), 3u);
  Clear();
  Contact("Ann", "", "6", {friends});
  const auto result = Import(file, ',', true, true);
  EXPECT_EQ(result.inserted, 6);
  EXPECT_EQ(result.discarded, 0);
  EXPECT_EQ(result.rejected.Count(RejectReason::kDuplicate), 3u) << "1, 6 and the cut number";
  const auto groups = database.AllGroups();
  ASSERT_EQ(groups.size(), 5u);
  EXPECT_EQ(groups[3].name, "New group of a long n");
  std::vector<std::vector<std::int32_t>> of;
  for (const ContactRow& row : database.AllContacts()) of.push_back(database.GroupsOf(row.cid));
  const std::vector<std::int32_t> given{staff, friends};
  EXPECT_THAT(
      of, ElementsAre(ElementsAre(friends), given, ElementsAre(friends), ElementsAre(groups[3].gid),
                      ElementsAre(groups[3].gid), given, given));
}

// The set of numbers that long files are held against answers as the table does.
TEST_F(CsvTest, FindsDuplicatesInLongFiles) {
  std::string text = "mobile,custom\n";
  for (int i = 0; i < 20'000; ++i)
    text +=
        std::to_string(i * 7919 % 15'000) + ",a text so long that many are expected of this file\n";
  Contact("Ann", "", "7", {friends});
  const auto result = Import(text, ',', false, true);
  EXPECT_EQ(result.inserted, 14'999);
  EXPECT_EQ(result.rejected.Count(RejectReason::kDuplicate), 5'001u);
  EXPECT_EQ(Import(text, ',', false, true).inserted, 0);
  auto& connection = database.storage()->Here();
  for (const char* by_index : {"SELECT 1 FROM CONTACTS INDEXED BY CONTACTS_MOBILE WHERE Mobile = 1",
                               "SELECT 1 FROM CONTACT_GROUP_MAP INDEXED BY MAP_GID WHERE GID = 1"})
    EXPECT_NO_THROW(connection.Execute(by_index)) << "the indices are there again";
}

TEST_F(CsvTest, LeavesTheBookAloneWhenItIsCancelledKilledOrTheDiskIsFull) {
  Contact("Ann", "", "1", {friends});
  std::string text = "mobile,group,fname\n";
  for (int i = 0; i < 20'000; ++i)
    text += std::to_string(i) + ",Club" + std::to_string(i % 9) +
            ",a name so long that many are expected\n";
  Spill(folder.File("in.csv"), text);
  const CsvImportOrder order{folder.File("in.csv"), ',', {friends}, true, true};
  const auto is_untouched = [this] {
    return Book() == std::vector<std::string>{"Ann////1"} && database.AllGroups().size() == 3 &&
           database.MemberCount(friends) == 1;
  };
  std::uint64_t last = 0;
  const auto cancelled =
      ImportContacts(database, order, [&](std::uint64_t done, std::uint64_t size) {
        EXPECT_EQ(size, text.size());
        EXPECT_GE(done, last);
        last = done;
        return done < size;
      });
  EXPECT_EQ(cancelled.end, CsvImportResult::End::kCancelled);
  EXPECT_EQ(last, text.size()) << "the progress goes all the way";
  EXPECT_TRUE(is_untouched());

  auto& connection = database.storage()->Here();
  connection.Execute("PRAGMA max_page_count=40");
  CsvImportDialog dialog(database, texts, boxes, places, friends);
  struct Window : CsvImportWindow {
    std::optional<std::string> PickFileToOpen(const std::string&, const std::string&) override {
      return {};
    }
    std::optional<std::string> PickFileToSave(const std::string&, const std::string&,
                                              const std::string&) override {
      return {};
    }
    void ShowPath(const std::string&) override {}
    void ShowEnclosesFields(bool) override {}
    bool ShowProgress(std::uint64_t, std::uint64_t) override { return shown = true; }
    void EndProgress() override { shown = false; }
    bool shown = false;
  } window;
  dialog.EditPath(order.path);
  EXPECT_FALSE(dialog.Ok(window)) << "the dialog stays";
  EXPECT_FALSE(window.shown);
  EXPECT_THAT(LastText(), HasSubstr("full"));
  EXPECT_TRUE(is_untouched());
  connection.Execute("PRAGMA max_page_count=1000000");

  const pid_t child = fork();
  if (child == 0) {
    SmsDatabase own(folder.path(), texts, clock);
    ImportContacts(own, order, [](std::uint64_t done, std::uint64_t size) {
      if (done == size) std::raise(SIGKILL);
      return true;
    });
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_TRUE(is_untouched());
  EXPECT_EQ(ImportContacts(database, order, {}).inserted, 19'999);
}

class CsvDialogTest : public CsvTest, public CsvImportWindow, public CsvExportWindow {
 protected:
  std::optional<std::string> PickFileToOpen(const std::string& filter,
                                            const std::string& pattern) override {
    asked = pattern + "|" + filter;
    return Next();
  }
  std::optional<std::string> PickFileToSave(const std::string& name, const std::string& filter,
                                            const std::string& pattern) override {
    asked = name + "|" + pattern + "|" + filter;
    return Next();
  }
  void ShowPath(const std::string& path) override { shown_path = path; }
  void ShowEnclosesFields(bool enclose) override { shown_enclose = enclose; }
  bool ShowProgress(std::uint64_t, std::uint64_t) override { return true; }
  void EndProgress() override {}
  std::optional<std::string> Next() {
    if (picks.empty()) return std::nullopt;
    const std::string pick = picks.front();
    picks.erase(picks.begin());
    return pick;
  }
  std::string Export(CsvExportDialog& dialog) {
    dialog.EditPath(folder.File("out.csv"));
    EXPECT_TRUE(dialog.OkEnabled());
    dialog.Ok();
    return Slurp(folder.File("out.csv"));
  }

  std::string asked, shown_path;
  std::optional<bool> shown_enclose;
  std::vector<std::string> picks;
};

TEST_F(CsvDialogTest, ImportsAndSavesWhatWasNotTaken) {
  const std::int32_t apes = Group("apes");
  Spill(folder.File("in.csv"), "fname;mobile\r\nAnn;1\r\nBob;\r\nAnna;1\r\nEve\r\nZoe;2\r\n\r\n");
  CsvImportDialog dialog(database, texts, boxes, places, staff);
  std::vector<std::string> names;
  for (const auto& group : dialog.Groups().Groups()) names.push_back(group.name);
  EXPECT_THAT(names, ElementsAre("apes", "Friends", "Staff"));
  EXPECT_THAT(dialog.Groups().CheckedGids(), ElementsAre(staff));
  EXPECT_FALSE(dialog.OkEnabled());
  picks = {std::string(261, 'x'), folder.File("in.csv")};
  dialog.Browse(*this);
  EXPECT_FALSE(dialog.OkEnabled()) << "a path is never cut";
  EXPECT_THAT(LastText(), HasSubstr("more than 260 characters"));
  dialog.Browse(*this);
  EXPECT_EQ(shown_path, folder.File("in.csv"));
  EXPECT_EQ(asked, "*.*|All Files (*.*)\n*.*\n\n");
  dialog.CheckGroup(2, false);
  EXPECT_FALSE(dialog.OkEnabled());
  dialog.CheckGroup(0, true);
  dialog.CheckGroup(0, true);
  dialog.CheckGroup(1, true);
  EXPECT_TRUE(dialog.OkEnabled());
  EXPECT_EQ(dialog.Separators()[dialog.ChosenSeparator()].value, ',');
  dialog.ChooseSeparator(1);
  dialog.PreventDuplicates(true);

  boxes.Answer(BoxAnswer::kAccepted);
  boxes.Answer(BoxAnswer::kYes);
  picks = {folder.File("no/such/folder.txt"), folder.File("rejects.txt")};
  EXPECT_TRUE(dialog.Ok(*this));
  ASSERT_EQ(boxes.shown().size(), 4u);
  EXPECT_EQ(boxes.shown()[1].text,
            "Finished importing new contacts!\n\n1 item was inserted into the database\n"
            "and 1 item was discarded.");
  EXPECT_EQ(boxes.shown()[1].caption, "Importing ...");
  EXPECT_THAT(boxes.shown()[2].text, HasSubstr("4 lines")) << "a blank end is no loss";
  EXPECT_THAT(boxes.shown()[3].text, HasSubstr("no/such/folder.txt' could not be written"));
  EXPECT_EQ(Slurp(folder.File("rejects.txt")),
            "Line\tReason\tText\r\n"
            "3\thas no mobile number\tBob;\r\n"
            "4\tis a duplicate: the mobile number is in the address book already\tAnna;1\r\n"
            "5\thas too few fields: the import ended here\tEve\r\n"
            "6\tstands behind the end of the import\tZoe;2\r\n");
  EXPECT_THAT(database.GroupsOf(1), ElementsAre(friends, apes)) << "from the last to the first";

  Spill(folder.File("in.csv"), std::string("mobile\n1\0", 9));
  EXPECT_FALSE(dialog.Ok(*this));
  EXPECT_THAT(LastText(), HasSubstr("Line 2 of '" + folder.File("in.csv") + "' holds a NUL byte"));
  Spill(folder.File("in.csv"), "%PDF-1.4");
  EXPECT_FALSE(dialog.Ok(*this));
  EXPECT_THAT(LastText(), HasSubstr("in.csv' is not a text file"));

  // Quotation marks: asked about before anything is imported, and the answer shows in the tick.
  Spill(folder.File("in.csv"), "fname;mobile\n\"Kay; Jo\";5\n");
  boxes.Answer(BoxAnswer::kCancel);
  EXPECT_FALSE(dialog.Ok(*this));
  EXPECT_THAT(LastText(), HasSubstr("Line 2 of the file has a field in quotation marks."));
  EXPECT_EQ(Book().size(), 1u);
  EXPECT_FALSE(shown_enclose);
  boxes.Answer(BoxAnswer::kYes);
  EXPECT_TRUE(dialog.Ok(*this));
  EXPECT_EQ(shown_enclose, true);
  EXPECT_EQ(Book().back(), "Kay; Jo////5");
  boxes.Answer(BoxAnswer::kNo);
  EXPECT_TRUE(dialog.Ok(*this));
  EXPECT_EQ(Book().back(), "\"Kay//// Jo\"");
  dialog.EditPath(folder.File("none.csv"));
  EXPECT_TRUE(dialog.Ok(*this));
  EXPECT_THAT(LastText(), HasSubstr("0 items")) << "no other message";
}

TEST_F(CsvDialogTest, ExportsTheSelectionOrGroups) {
  const std::int32_t empty = Group("Aardvarks");
  const std::int32_t ann = Contact("Ann", "Lee", "+1", {friends, staff});
  const std::int32_t bob = database.AddContact({"Bob, Jr", "", "", "x", "02", {staff, friends}});
  Contact("Eve", "", "3", {});
  const std::string header = "FName,SName,Title,Custom,Mobile";
  {
    CsvExportDialog dialog(database, texts, boxes, places, {bob, 77, ann});
    EXPECT_TRUE(dialog.SelectionChosen());
    EXPECT_FALSE(dialog.GroupsEnabled() || dialog.OkEnabled());
    dialog.Associate(true);
    EXPECT_EQ(Export(dialog), header + "\r\nBob, Jr,,,x,02\r\nAnn,Lee,,,+1\r\n");
    EXPECT_THAT(boxes.shown(), IsEmpty());
    dialog.EditPath(folder.path());
    dialog.Ok();
    EXPECT_THAT(LastText(), testing::StartsWith("Unable to open '" + folder.path() +
                                                "' for writing!\n\nThis is a folder"));
    EXPECT_EQ(LastCaption(), "Unable to export!");
  }
  CsvExportDialog dialog(database, texts, boxes, places, {});
  picks = {folder.File("out.csv")};
  dialog.Browse(*this);
  EXPECT_EQ(asked, "Contacts.csv|*.csv|CSV Files (*.csv)\n*.csv\nAll Files (*.*)\n*.*\n\n");
  dialog.ChooseSelection(true);
  EXPECT_TRUE(dialog.GroupsEnabled()) << "there is no selection";
  EXPECT_FALSE(dialog.OkEnabled());
  EXPECT_THAT(dialog.Groups().CheckedGids(), IsEmpty());
  std::remove(folder.File("out.csv").c_str());
  dialog.CheckGroup(0, true);
  EXPECT_EQ(dialog.Groups().CheckedGids().front(), empty);
  EXPECT_EQ(Export(dialog), "") << "no file, no message";
  EXPECT_EQ(boxes.shown().size(), 1u);
  dialog.CheckGroup(1, true);
  dialog.CheckGroup(2, true);
  EXPECT_EQ(Export(dialog), header + "\r\nAnn,Lee,,,+1\r\nBob, Jr,,,x,02\r\n");
  EXPECT_EQ(LastCaption(), "Export done");
  dialog.Associate(true);
  EXPECT_EQ(Export(dialog), header +
                                ",Group\r\nAnn,Lee,,,+1,Friends\r\nBob, Jr,,,x,02,Friends\r\n"
                                "Ann,Lee,,,+1,Staff\r\nBob, Jr,,,x,02,Staff\r\n");
  dialog.EditPath("/dev/full");
  dialog.Ok();
  EXPECT_EQ(LastCaption(), "Unable to export!") << "a full disk is no success";
}

TEST_F(CsvDialogTest, ReadsBackWhatItWrites) {
  database.AddContact({"Zoë", "Ødegård", "Dr", "10 %", "+27821110001", {friends}});
  database.AddContact({"山田", "太郎", "", "", "0049171", {friends}});
  database.AddContact({"Ελένη", "Дмитрий", "مرحبا", "שלום", "00", {friends}});
  database.AddContact({" \"q\" ", "😀", "e\xCC\x81", "tab\there", "", {friends}});
  database.AddContact({std::string(40, 'W'), "", "", "", "12345678901234567", {friends}});
  const auto before = Book();
  CsvExportDialog dialog(database, texts, boxes, places, {});
  dialog.CheckGroup(0, true);
  dialog.Associate(true);
  const std::string file = Export(dialog);
  Clear();
  const auto result = Import(file, ',', true);
  EXPECT_EQ(result.discarded, 1) << "an import takes no contact without a number";
  auto expected = before;
  expected.erase(expected.begin() + 3);
  EXPECT_EQ(Book(), expected);
  for (const ContactRow& row : database.AllContacts())
    EXPECT_THAT(database.GroupsOf(row.cid), ElementsAre(friends));
}

}  // namespace
}  // namespace orvalo
