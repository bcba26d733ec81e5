#include <filesystem>

#include "orvaloctl_fixture.h"

namespace orvalo::test {
namespace {

class AddressBookTest : public OrvaloctlTest {
 protected:
  void SetUp() override {
    Init();
    ASSERT_THAT(Run({"group", "add", "Friends"}), EndsWith(0));
    ASSERT_THAT(Run({"group", "add", "Staff"}), EndsWith(0));
  }
  nlohmann::json Contact(int cid) { return Json({"contact", "show", std::to_string(cid)}).First(); }
  void AddAnn() {
    ASSERT_THAT(Run({"contact", "add", "--name", "Ann", "--surname", "Archer", "--title", "Ms",
                     "--custom", "VIP", "--mobile", "27821110001", "--group", "friends"}),
                EndsWith(0));
  }
};

TEST_F(AddressBookTest, KeepsGroupNamesApart) {
  EXPECT_THAT(Run({"group", "add", "FRIENDS"}), FailsWith(1, "Friends already"));
  EXPECT_THAT(Run({"group", "rename", "staff", "friends"}), FailsWith(1, "Friends already"));
  EXPECT_THAT(Run({"group", "rename", "staff", "STAFF"}), EndsWith(0));
  EXPECT_THAT(Run({"group", "rename", "Nobody", "x"}), FailsWith(1, "no group Nobody"));
  EXPECT_THAT(Run({"group", "delete", "all contacts"}), FailsWith(1, "every contact"));
  EXPECT_THAT(Run({"group", "rename", "All Contacts", "x"}), FailsWith(1, "every contact"));
  EXPECT_THAT(Run({"group", "add", "list"}), EndsWith(0)) << "a name may be a command's";
  AddAnn();
  EXPECT_EQ(Json({"group", "list"}).All(), nlohmann::json::parse(R"([
      {"GID": 1, "Name": "All Contacts", "Members": 1}, {"GID": 2, "Name": "Friends", "Members": 1},
      {"GID": 3, "Name": "STAFF", "Members": 0}, {"GID": 4, "Name": "list", "Members": 0}])"));
}

TEST_F(AddressBookTest, AddsAndChangesContacts) {
  AddAnn();
  EXPECT_EQ(Contact(1), nlohmann::json::parse(R"({"CID": 1, "Name": "Ann", "Surname": "Archer",
      "Title": "Ms", "Custom": "VIP", "Mobile": "27821110001", "Groups": ["Friends"]})"));
  EXPECT_THAT(Run({"contact", "edit", "1", "--surname", "", "--mobile", "+27821110009"}),
              EndsWith(0));
  EXPECT_THAT(Run({"contact", "edit", "1", "--group", "Staff", "--group", "Friends"}), EndsWith(0));
  EXPECT_EQ(Contact(1), nlohmann::json::parse(R"({"CID": 1, "Name": "Ann", "Surname": "",
      "Title": "Ms", "Custom": "VIP", "Mobile": "+27821110009", "Groups": ["Staff", "Friends"]})"));

  EXPECT_THAT(Run({"contact", "edit", "1", "--title", "Professor"}), FailsWith(2, "8 characters"));
  EXPECT_THAT(Run({"contact", "edit", "1", "--name", " "}), FailsWith(2, "empty"));
  EXPECT_THAT(Run({"contact", "edit", "1", "--group", "Nobody"}), FailsWith(1, "no group"));
  EXPECT_THAT(Run({"contact", "edit", "9", "--title", "Dr"}), FailsWith(1, "no contact 9"));
  EXPECT_THAT(Run({"contact", "add", "--name", "Bob", "--mobile", "27821110002", "--group",
                   "All Contacts"}),
              FailsWith(1, "every contact"));
  EXPECT_EQ(Json({"contact", "list"}).All().size(), 1u);
}

TEST_F(AddressBookTest, DeletesContactsEverywhereOrFromAGroup) {
  AddAnn();
  ASSERT_THAT(Run({"contact", "add", "--name", "Bob", "--mobile", "27821110002", "--group", "Staff",
                   "--group", "Friends"}),
              EndsWith(0));
  EXPECT_EQ(Json({"contact", "list", "--group", "staff"}).All().size(), 1u);
  EXPECT_THAT(Run({"contact", "delete", "2", "1", "--group", "Staff"}), FailsWith(1, "not in"));
  EXPECT_THAT(Run({"contact", "delete", "1", "9"}), FailsWith(1, "no contact 9"));
  EXPECT_EQ(Json({"contact", "list"}).All().size(), 2u) << "all of them or none";

  EXPECT_THAT(Run({"contact", "delete", "2", "--group", "Staff"}), EndsWith(0));
  EXPECT_EQ(Contact(2).at("Groups"), nlohmann::json::parse(R"(["Friends"])"));
  EXPECT_THAT(Run({"contact", "edit", "1", "--group", "Staff"}), EndsWith(0));
  EXPECT_THAT(Run({"group", "delete", "Friends"}), EndsWith(0));
  EXPECT_THAT(Run({"contact", "show", "2"}), FailsWith(1, "no contact 2"));
  EXPECT_THAT(Run({"contact", "delete", "1"}), EndsWith(0));
  EXPECT_EQ(Json({"contact", "list"}).All().size(), 0u);
}

TEST_F(AddressBookTest, ImportsAndExports) {
  const std::string in = folder() + "/in.csv", out = Outside("out.csv");
  const std::string rejects = Outside("rejects.txt");
  Spill(in, "fname;mobile;group\nAnn;0821;\nBob;\nCy;+49;Club\nAnna;0821;\nDee\nEve;3;\n");
  EXPECT_THAT(Run({"import", in, "--group", "Friends"}), FailsWith(1, "no column \"mobile\""));
  EXPECT_THAT(Run({"import", in}), FailsWith(2, "--group"));
  EXPECT_THAT(Run({"import", in, "--group", "Friends", "--separator", "dot"}), FailsWith(2, "dot"));
  EXPECT_THAT(Run({"import", in + "x", "--group", "Friends"}), FailsWith(1, "cannot be opened"));
  Spill(folder() + "/quoted.csv", "fname,mobile\n\"Ann\",1\n");
  EXPECT_THAT(Run({"import", folder() + "/quoted.csv", "--group", "Friends"}),
              FailsWith(1, "quotation marks in line 2: say --quotes enclose"));
  EXPECT_THAT(Run({"import", in, "--group", "Nobody"}), FailsWith(1, "no group Nobody"));
  const auto imported =
      Json({"import", in, "--separator", "semicolon", "--group", "Friends", "--group", "staff",
            "--group", "FRIENDS", "--auto-create", "--no-duplicates", "--rejects", rejects});
  EXPECT_EQ(imported.First(), nlohmann::json::parse(R"({"Inserted": 2, "Discarded": 1,
      "Duplicates": 1, "NotRead": 2})"));
  EXPECT_NE(Slurp(rejects).find("6\thas too few fields: the import ended here\tDee\r\n"),
            std::string::npos);
  EXPECT_EQ(Contact(1).at("Groups"), nlohmann::json::parse(R"(["Friends", "Staff"])"));
  EXPECT_EQ(Contact(2).at("Groups"), nlohmann::json::parse(R"(["Club"])"));

  EXPECT_THAT(Run({"export", out, "--group", "Friends", "--group", "Club"}), EndsWith(0));
  EXPECT_EQ(Slurp(out), "FName,SName,Title,Custom,Mobile\r\nAnn,,,,0821\r\nCy,,,,+49\r\n");
  EXPECT_THAT(Run({"export", out, "--group", "Club", "--with-group"}), EndsWith(0));
  EXPECT_EQ(Slurp(out), "FName,SName,Title,Custom,Mobile,Group\r\nCy,,,,+49,Club\r\n");
  EXPECT_THAT(Run({"export", out, "--contact", "2", "--contact", "1"}), EndsWith(0));
  EXPECT_EQ(Slurp(out), "FName,SName,Title,Custom,Mobile\r\nCy,,,,+49\r\nAnn,,,,0821\r\n");
  EXPECT_THAT(Run({"export", out, "--contact", "9"}), FailsWith(1, "no contact 9"));
  EXPECT_THAT(Run({"export", out, "--contact", "1", "--group", "Club"}), FailsWith(2, "Either"));
  EXPECT_THAT(Run({"export", folder(), "--contact", "1"}), FailsWith(1, "for writing"));
}

TEST_F(AddressBookTest, ShowsTheBookOutside) {
  std::filesystem::create_directory(folder() + "/vCards");
  Spill(folder() + "/vCards/phone.vcf",
        "BEGIN:VCARD\nFN:Ann\nTEL;CELL:+1 2\nEND:VCARD\nBEGIN:VCARD\nFN:Bo\nTEL;CELL:3\nEND:VCARD");
  EXPECT_EQ(Run({"addressbook"}).out, "phone\n  Ann (12)\n  Bo (3)\n");
  EXPECT_EQ(Json({"addressbook", "--source", "vcard"}).First(),
            nlohmann::json::parse(R"({"Folders": ["phone"], "Name": "Ann", "Mobile": "12"})"));
  Spill(folder() + "/vCards/empty.vcf", "nothing");
  const auto partly = Run({"addressbook"});
  EXPECT_THAT(partly, FailsWith(1, "empty.vcf holds no vCard"));
  EXPECT_NE(partly.out, "");
  ASSERT_THAT(Run({"settings", "Outlook_Name", "ldap://127.0.0.1:1/dc=x"}), EndsWith(0));
  EXPECT_THAT(Run({"addressbook", "--source", "ldap"}), FailsWith(1, "Can't contact LDAP server"));
  EXPECT_EQ(Json({"addressbook", "--source", "ldap"}).All().size(), 0u);
  EXPECT_NE(Run({"settings", "MAPI_AddressBook"}).out, "1\n");
}

}  // namespace
}  // namespace orvalo::test
