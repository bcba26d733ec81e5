// What stands in the place of "SMS.db" when the program starts.
#include <sqlite3.h>
#include <sys/stat.h>

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
      {"newer version", good, "PRAGMA user_version=2"},
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
         "  4, 5, '');");
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
