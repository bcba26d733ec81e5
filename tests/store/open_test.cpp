// What stands in the place of "SMS.db" when the program starts.
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "store/schema.h"
#include "store/storage.h"
#include "store/store_error.h"
#include "store_fixture.h"

namespace orvalo::test {
namespace {

using testing::HasSubstr;

// Changes the file as another program would, without our store.
void RunSql(const std::string& path, const std::string& statements) {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &handle), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(handle, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
      << sqlite3_errmsg(handle);
  sqlite3_close(handle);
}

class OpenTest : public StoreTest {
 protected:
  // Opens what `prepare` has left and expects a refusal that does not touch it.
  void ExpectRefused(const std::string& reason) {
    const std::string before = Slurp(Path());
    Reopen();
    EXPECT_FALSE(db().IsUsable());
    EXPECT_THAT(db().Problem(), HasSubstr(reason));
    EXPECT_EQ(Add("+1"), -1);
    EXPECT_EQ(AddPerson("x", {1}), -1);
    EXPECT_EQ(db().AddGroup("x").gid, -1);
    EXPECT_FALSE(db().SetSmsStatus(1, SmsStatus::kSent));
    EXPECT_TRUE(db().AllSms().empty());
    EXPECT_EQ(db().CountWaitingSms(), 0);
    SmsDatabase::Transaction(db()).Commit();
    db().Commit();
    database_.reset();
    EXPECT_EQ(Slurp(Path()), before);
  }
};

TEST_F(OpenTest, ANewFile) {
  EXPECT_TRUE(db().IsUsable());
  EXPECT_EQ(db().Problem(), "");
  ASSERT_EQ(db().AllGroups().size(), 1U);
  EXPECT_EQ(db().GetGroupName(1), "All Contacts");
  Add("+1");
  for (const char* suffix : {"", "-wal", "-shm"}) {
    struct stat status {};
    ASSERT_EQ(stat((Path() + suffix).c_str(), &status), 0) << suffix;
    EXPECT_EQ(status.st_mode & 0777, 0600U) << suffix;
  }
  database_.reset();
  EXPECT_FALSE(std::filesystem::exists(Path() + "-wal"));
  Reopen();
  EXPECT_EQ(db().AllGroups().size(), 1U);
  EXPECT_EQ(db().CountSms(), 1);
  std::filesystem::rename(Path(), Path() + ".away");
  EXPECT_FALSE(db().IsUsable());
  database_.reset();
  Spill(Path(), "");  // an empty file is as good as none
  Reopen();
  EXPECT_TRUE(db().IsUsable());
  EXPECT_EQ(Add("+1"), 1);
}

TEST_F(OpenTest, AllGroupsDeletedGivesANewFirstGroupWithAFreshId) {
  db().AddGroup("x");
  db().DeleteGroup(1);
  db().DeleteGroup(2);
  Reopen();
  ASSERT_EQ(db().AllGroups().size(), 1U);
  EXPECT_EQ(db().GetGroupName(3), "All Contacts");
}

TEST_F(OpenTest, FilesThatAreRefusedAndLeftAlone) {
  database_.reset();
  const std::string good = Slurp(Path());
  struct Case {
    std::string reason, bytes, statements;
  };
  const Case cases[] = {
      {"newer version", good, "PRAGMA user_version=4"},
      {"no such table", good, "DROP TABLE NextGroupID"},
      {"no such column", good, "ALTER TABLE SMS DROP COLUMN \"To\""},
      {"another program", "", "CREATE TABLE SMS(ID)"},
      {"not a message database", std::string(5000, 'x'), ""},
      {"damaged", good.substr(0, good.size() / 2), ""},
  };
  for (const Case& file : cases) {
    SCOPED_TRACE(file.reason);
    Spill(Path(), file.bytes);
    if (!file.statements.empty()) RunSql(Path(), file.statements);
    ExpectRefused(file.reason);
  }
  std::filesystem::remove(Path());
  std::filesystem::create_directory(Path());
  ExpectRefused("cannot be opened");
}

// A file as the first version of the program left it.
constexpr const char* kFirstSchema = R"(
PRAGMA journal_mode=WAL;
CREATE TABLE SMS(
  ID INTEGER PRIMARY KEY, Time INTEGER NOT NULL, Stat INTEGER NOT NULL, Type INTEGER NOT NULL,
  RefID INTEGER NOT NULL, "To" TEXT NOT NULL, ToInfo TEXT NOT NULL, Msg TEXT NOT NULL,
  ApiMsgID TEXT NOT NULL, SavedStat INTEGER NOT NULL, SenderID TEXT NOT NULL,
  Delay INTEGER NOT NULL, QueryTime INTEGER NOT NULL, StatQryTm INTEGER NOT NULL,
  Charge TEXT NOT NULL);
CREATE INDEX SMS_UNFINISHED ON SMS(Stat) WHERE (Stat = 0 OR Stat BETWEEN 4 AND 6 OR Stat = 10);
CREATE INDEX SMS_FOLLOWED ON SMS(Stat, StatQryTm) WHERE QueryTime >= 1 AND
  (Stat = 1 OR Stat = 3 OR Stat = 7 OR Stat = 8 OR Stat = 11);
CREATE TABLE NextSMSID(ID INTEGER NOT NULL);
CREATE TABLE "GROUP"(GID INTEGER PRIMARY KEY, Cnt INTEGER NOT NULL, Name TEXT NOT NULL);
CREATE TABLE NextGroupID(ID INTEGER NOT NULL);
CREATE TABLE CONTACTS(
  CID INTEGER PRIMARY KEY, Name TEXT NOT NULL, Surname TEXT NOT NULL, Title TEXT NOT NULL,
  Custom TEXT NOT NULL, Mobile TEXT NOT NULL);
CREATE TABLE NextContactID(ID INTEGER NOT NULL);
CREATE TABLE CONTACT_GROUP_MAP(CID INTEGER NOT NULL, GID INTEGER NOT NULL);
CREATE INDEX MAP_CID ON CONTACT_GROUP_MAP(CID);
CREATE INDEX CONTACTS_MOBILE ON CONTACTS(Mobile);
CREATE INDEX MAP_GID ON CONTACT_GROUP_MAP(GID);
PRAGMA application_id=1332901484; PRAGMA user_version=1;
INSERT INTO NextSMSID VALUES(8); INSERT INTO NextGroupID VALUES(2);
INSERT INTO NextContactID VALUES(2); INSERT INTO "GROUP" VALUES(1, 0, 'Friends');
INSERT INTO CONTACTS VALUES(1, 'Ann', 'Doe', '', '', '0821');
INSERT INTO SMS VALUES(7, 500, 9, 0, 7, ',A1', 'Ann Doe', 'Hello', ',ID: x', 0, 'Me', 0, 300, 900,
                       '1.5');
)";

TEST_F(OpenTest, AFileOfTheFirstSchema) {
  const std::string old_row = "7|500|9|0|7|,A1|Ann Doe|Hello|,ID: x|0|Me|0|300|900|1.5";
  const std::string copy = Path() + ".schema-1";
  const auto spill_first_schema = [&] {
    database_.reset();
    std::filesystem::remove(Path());
    RunSql(Path(), kFirstSchema);
  };
  spill_first_schema();
  const std::string before = Slurp(Path());
  Reopen(true);  // looking on reads it as it is
  ASSERT_TRUE(db().IsUsable()) << db().Problem();
  EXPECT_EQ(LineOf(7), old_row);
  EXPECT_EQ(Line(db().AllSms().at(0)), old_row);
  database_.reset();
  EXPECT_EQ(Slurp(Path()), before);

  // Killed at any moment, the file is whole: of this schema or of the last.
  for (const char* killed_after : {"SMS.db.schema-1.new", "SMS.db.schema-1", "SMS.db.schema-1-2"}) {
    Spill(folder_.File(killed_after), "left there");
    Spill(folder_.File(killed_after) + "-journal", "left there");
    spill_first_schema();
    Reopen();
    ASSERT_TRUE(db().IsUsable()) << db().Problem();
    EXPECT_EQ(LineOf(7), old_row);
    EXPECT_EQ(db().GetGroupName(1), "Friends");
    EXPECT_FALSE(std::filesystem::exists(copy + ".new"));
  }
  EXPECT_EQ(Slurp(copy + "-2"), "left there");
  db().SetOutcome(7, SmsStatus::kDelivered, {SmsStatus::kFailed, "", 0, 0, "+27821", "301: none"});
  Reopen();  // once is enough
  EXPECT_EQ(LineOf(7), "7|500|2|0|7|,A1|Ann Doe|Hello|,ID: x|0|Me|0|300|900|1.5|+27821|301: none");
  EXPECT_EQ(Add("+1"), 8);

  // Each copy is a file that the first version opens, private and with all in it.
  database_.reset();
  EXPECT_FALSE(std::filesystem::exists(copy + "-4"));
  struct stat status {};
  ASSERT_EQ(stat((copy + "-3").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  std::filesystem::rename(copy + "-3", Path());
  RunSql(Path(), "DROP TABLE NextGroupID");
  ExpectRefused("no such table");  // what is not whole is not touched
  EXPECT_FALSE(std::filesystem::exists(copy + "-3"));
}

TEST_F(OpenTest, StrangeValuesAreReadAndCountersRepaired) {
  Add("+1");
  AddPerson("Ann");
  database_.reset();
  RunSql(Path(),
         "DELETE FROM NextSMSID; INSERT INTO NextSMSID VALUES('many'), (-7);"
         "UPDATE NextContactID SET ID = 1; UPDATE NextGroupID SET ID = 99999999999;"
         "UPDATE SMS SET Stat = 'abc', Time = 1e300, Type = -99999999999, Msg = x'ff00fe',"
         "  \"To\" = '', RefID = '12x', Charge = 5.5, SenderID = zeroblob(3000000);"
         "INSERT INTO SMS VALUES(99999999999, 0, 5, 0, 0, ',A99999999999', '', '', '', 5, '', 0, "
         "  4, 5, '', '', '');");
  Reopen();
  ASSERT_TRUE(db().IsUsable()) << db().Problem();
  auto rows = db().AllSms();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].sender_id.size(), 3'000'000U);
  EXPECT_EQ(rows[0].msg, std::string("\xff\0\xfe", 3));
  rows[0].sender_id = rows[0].msg = "-";
  EXPECT_EQ(Line(rows[0]), "1|2147483647|0|-2147483648|12||+1|-||0|-|0|0|0|5.5");
  EXPECT_EQ(rows[1].id, INT32_MAX);
  EXPECT_EQ(db().DuplicateSms(1, std::nullopt), 2);
  EXPECT_EQ(AddPerson("Ben"), 2);
  EXPECT_EQ(db().AddGroup("x").gid, 2);
}

// A look at a file that may not be written leaves journals that may not either.
TEST_F(OpenTest, JournalsOfALookDoNotBlockTheNextWriter) {
  database_.reset();
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && (chown(folder_.path().c_str(), 65534, 65534) != 0 ||
                           chown(Path().c_str(), 65534, 65534) != 0 || setuid(65534) != 0)) {
      _exit(1);
    }
    chmod(Path().c_str(), 0400);
    Reopen(true);
    const bool looked = db().CountSms() == 0 && db().IsUsable();
    database_.reset();
    const bool left = access((Path() + "-shm").c_str(), F_OK) == 0;
    chmod(Path().c_str(), 0600);
    Reopen();
    if (!db().IsUsable()) std::fprintf(stderr, "%s\n", db().Problem().c_str());
    _exit(looked && left && db().IsUsable() && Add("+1") == 1 ? 0 : 2);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST_F(OpenTest, LookingOnNeitherCreatesNorChanges) {
  const auto id = Add("+1");
  db().BeginEditSms(id);
  {
    const SmsDatabase onlooker(folder_.path(), texts_, clock_, true);  // beside the running program
    EXPECT_TRUE(onlooker.IsUsable());
  }
  Reopen();
  db().BeginEditSms(id);
  db().DeleteGroup(1);
  database_.reset();
  // Opened read-only, the editing state and the missing group stay as they are.
  RunSql(Path(), "UPDATE NextSMSID SET ID = 0");
  Reopen(true);
  EXPECT_TRUE(db().IsUsable()) << db().Problem();
  EXPECT_EQ(StatusOf(id), SmsStatus::kEditing);
  EXPECT_TRUE(db().AllGroups().empty());
  EXPECT_THROW(Add("+1"), StoreError);
  EXPECT_THROW(db().DeleteSms(id), StoreError);
  db().Commit();
  EXPECT_EQ(db().CountSms(), 1);

  database_.reset();
  std::filesystem::remove(Path());
  Reopen(true);
  EXPECT_FALSE(db().IsUsable());
  EXPECT_FALSE(std::filesystem::exists(Path()));
}

}  // namespace
}  // namespace orvalo::test
