#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "app/settings.h"
#include "app/texts.h"
#include "contacts/outside_address_books.h"
#include "contacts_fixture.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

std::string Card(const std::string& name, const std::string& more) {
  return "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:" + name + "\r\n" + more + "\r\nEND:VCARD\r\n";
}
std::string Cell(const std::string& name, const std::string& number) {
  return Card(name, "TEL;TYPE=cell:" + number);
}

class VcardSourceTest : public ::testing::Test {
 protected:
  std::string Load() {
    book_.LoadExternalAddressBook(true);
    return Drawn(book_.tree());
  }

  TemporaryFolder folder_;
  AppSettings settings_;
  Texts texts_;
  ScriptedMessageBoxes boxes_;
  OutsideAddressBooks source_{
      settings_, texts_, boxes_, nullptr, {{}, {folder_.File("vCards"), folder_.File("contacts")}}};
  ExternalAddressBook book_{settings_, &source_};
};

TEST_F(VcardSourceTest, FoldersFilesCardsAndGroups) {
  namespace fs = std::filesystem;
  EXPECT_EQ(Load(), "");
  EXPECT_FALSE(book_.IsLoaded());
  fs::create_directories(folder_.File("contacts/Work/Empty"));
  Spill(folder_.File("contacts/phone.vcf"),
        Cell("Zora", "+1 (5)") + Card("Nobody", "TEL;TYPE=home:3") + Cell("", "2") +
            Card("Friends",
                 "KIND:group\r\nMEMBER:urn:uuid:ANNA-1\r\nMEMBER:tel:+99-8\r\n"
                 "MEMBER:mailto:Bo@x.example\r\nMEMBER:urn:uuid:gone\r\n"
                 "MEMBER:urn:uuid:club"));
  Spill(folder_.File("contacts/Work/9f.VCF"),
        Card("Anna", "TEL;TYPE=cell:6\r\nUID:urn:uuid:anna-1"));
  Spill(folder_.File("contacts/Work/1c.vcf"), Card("Bo", "TEL;TYPE=cell:7\r\nEMAIL:bo@X.example"));
  Spill(folder_.File("contacts/Work/club.vcard"),
        Card("Club", "KIND:group\r\nUID:club\r\nMEMBER:anna-1\r\nMEMBER:club"));
  Spill(folder_.File("contacts/Work/readme.txt"), Cell("Not", "1"));
  Spill(folder_.File("contacts/.hidden.vcf"), Cell("Not", "1"));
  fs::create_directory_symlink("..", folder_.File("contacts/Work/up"));
  mkfifo(folder_.File("contacts/pipe.vcf").c_str(), 0600);
  EXPECT_EQ(Load(),
            "phone{Zora:15 ?:2 Friends{Anna:6 +99-8:998 Bo:7 Club{Anna:6}}} "
            "Work{Anna:6 Bo:7 Club{Anna:6}}");
  ASSERT_EQ(book_.Problems().size(), 1u);
  EXPECT_NE(book_.Problems()[0].find("pipe.vcf cannot be read"), std::string::npos);

  // The data folder's own goes first.
  fs::create_directory(folder_.File("vCards"));
  Spill(folder_.File("vCards/a.vcf"), Cell("Own\tna\xC2\x9Bme\x01\x1B", "1"));
  EXPECT_EQ(Load(), "Own na me:1");
  EXPECT_TRUE(boxes_.shown().empty());
}

TEST_F(VcardSourceTest, AFolderThatCannotBeReadIsTold) {
  constexpr uid_t kNobody = 65534;
  std::filesystem::create_directory(folder_.File("vCards"));
  chmod(folder_.path().c_str(), 0755);
  chmod(folder_.File("vCards").c_str(), 0);
  const bool is_root = geteuid() == 0;  // who could read it
  if (is_root) {
    ASSERT_EQ(seteuid(kNobody), 0);
  }
  EXPECT_EQ(Load(), "");
  if (is_root) {
    ASSERT_EQ(seteuid(0), 0);
  }
  chmod(folder_.File("vCards").c_str(), 0700);
  EXPECT_FALSE(book_.IsLoaded());
  ASSERT_EQ(boxes_.shown().size(), 1u);
  EXPECT_EQ(boxes_.shown()[0].text,
            "Failed to open the Windows Address Book. Make sure that you have one defined!");
  EXPECT_EQ(boxes_.shown()[0].caption, "Can not access Address Book");
}

}  // namespace
}  // namespace orvalo::test
