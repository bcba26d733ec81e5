#include <gtest/gtest.h>

#include "platform/ldap_dn.h"
#include "platform/ldap_index.h"
#include "platform/ldap_profile.h"
#include "platform/vcard.h"
#include "support/temporary_folder.h"

namespace orvalo::platform {
namespace {

std::string Read(const std::string& bytes) {
  std::string all;
  for (const Vcard& card : ParseVcards(bytes)) {
    all += (all.empty() ? "" : " ") + std::string(card.is_group ? "*" : "") + card.name + "|" +
           card.mobile;
    for (const std::string& member : card.members) all += "|" + member;
  }
  return all;
}

std::string Card(const std::string& lines) {
  return "BEGIN:VCARD\r\n" + lines + "\r\nEND:VCARD\r\n";
}

TEST(LdapProfilesTest, AFileThatCannotBeReadIsNotTakenForNone) {
  const test::TemporaryFolder folder;
  test::Spill(folder.File("good"), "[Staff]\naddress = ldap://127.0.0.1\n");
  const std::string missing = folder.File("missing"), unreadable = folder.path();
  std::string problem;
  EXPECT_TRUE(LdapProfiles({missing, folder.File("good")}).Default(&problem));
  const LdapProfiles profiles({missing, unreadable, folder.File("good")});
  EXPECT_FALSE(profiles.Find("staff", &problem));
  EXPECT_TRUE(problem.starts_with(unreadable + " cannot be read: ")) << problem;
  problem.clear();
  EXPECT_FALSE(profiles.Default(&problem));
  EXPECT_NE(problem, "");
}

TEST(VcardTest, CardsAsPhonesAndProgramsWriteThem) {
  const struct {
    std::string lines, read;
  } cases[] = {
      // 2.1: bare types, quoted-printable with soft breaks, character sets, an agent within.
      {"VERSION:2.1\r\nN:Berg;Anna;;;\r\nTEL;HOME:1\r\nTEL;CELL;PREF:+31 6-5\r\nTEL;CELL:9",
       "Anna Berg|+31 6-5"},
      {"VERSION:2.1\r\nFN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C5=BB=C3=B3=C5=82=\r\n=C4=87 "
       "=\r\n"
       "=C3=85se\r\nTEL;CELL;VOICE:7",
       "Żółć Åse|7"},
      {"VERSION:2.1\r\nNOTE;ENCODING=QUOTED-PRINTABLE:a=\r\nEND:VCARD=\r\nTEL;CELL:1\r\nN:B;A\r\n"
       "TEL;CELL:2",
       "A B|2"},
      {"VERSION:2.1\r\nN;CHARSET=SHIFT_JIS:\x93\x63;\x91\xbe\x98\x59\r\nTEL;CELL:7", "太郎 田|7"},
      {"VERSION:2.1\r\nFN;CHARSET=NOBODY-KNOWS:Ren\xe9\r\nTEL;CELL:7", "René|7"},
      {"VERSION:2.1\r\nFN:A\r\n long name\r\nTEL;CELL:7", "A long name|7"},
      {"VERSION:2.1\r\nFN:Boss\r\nAGENT:\r\nBEGIN:VCARD\r\nFN:Aide\r\nTEL;CELL:1\r\nEND:VCARD\r\n"
       "TEL;CELL:2",
       "Boss|2"},
      // 3.0: folded within a character, groups with labels, pictures that are not for us.
      {"VERSION:3.0\nFN:Zo\xc3\n \xab Comma\\, Semi\\; Back\\\\\nTEL;TYPE=\"work,voice\":1\n"
       "TEL;TYPE=HOME,Cell:2",
       "Zoë Comma, Semi; Back\\|2"},
      {"VERSION:3.0\nFN:A\nitem1.TEL:1\nitem2.TEL;type=pref:2\nitem2.X-ABLabel:_$!<Mobile>!$_\n"
       "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQ\n SkZJRgABAQ\n TEL;CELL:3\nTEL;type=IPHONE;type=CELL:4",
       "A|2"},
      {"VERSION:3.0\nN:;;;;\nFN: \nORG:Orvalo\\; Co;Sales\nTEL;TYPE=CELL:5", "Orvalo; Co|5"},
      // 4.0: addresses for numbers, extensions and pauses left out.
      {"VERSION:4.0\nFN:A\nTEL;VALUE=uri;PREF=1;TYPE=\"voice,cell\":tel:+1-555-0100;ext=77",
       "A|+1-555-0100"},
      {"VERSION:4.0\nEMAIL:A@B.example\nTEL;TYPE=cell:+31%206", "a@b.example|+31%206"},
      {"VERSION:4.0\nFN:A\nTEL;TYPE=cell:555 0100,,12#", "A|555 0100"},
      {"VERSION:4.0\nKIND:group\nFN:All\nMEMBER:urn:uuid:03A0\nMEMBER:tel:+1555",
       "*All||urn:uuid:03A0|tel:+1555"},
      {"VERSION:3.0\nN:All\nX-ADDRESSBOOKSERVER-KIND:group\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:1",
       "*All||urn:uuid:1"},
      // Nothing to send to, nothing to show.
      {"VERSION:3.0\nFN:A\nTEL:1\nTEL;TYPE=fax:2", "A|"},
      {"no property\n:\n;;;:\nTEL\nTEL;CELL\nFN;X=\"open:A\nTEL;TYPE=cell:1", "A|1"},
  };
  for (const auto& [lines, read] : cases) EXPECT_EQ(Read(Card(lines)), read) << lines;
}

TEST(VcardTest, FilesInEveryShape) {
  const std::string two = Card("FN:\xc3\x85\r\nTEL;CELL:1") + "\r\n" + Card("FN:B\r\nTEL;CELL:2");
  std::string wide, swapped;
  for (const char16_t unit :
       std::u16string(u"\uFEFF") + u"BEGIN:VCARD\nFN:Å\nTEL;CELL:1\nEND:VCARD") {
    wide += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    swapped += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
  }
  const std::pair<std::string, std::string> cases[] = {
      {two, "Å|1 B|2"},
      {"\xEF\xBB\xBF" + two, "Å|1 B|2"},
      {wide, "Å|1"},
      {swapped, "Å|1"},
      {"BEGIN:VCARD\rFN:A\rTEL;CELL:1\rEND:VCARD", "A|1"},
      {"BEGIN:VCARD\nFN:cut\nTEL;CELL:1\nBEGIN:VCARD\nFN:B\nTEL;CELL:2", "cut|1 B|2"},
      {"begin:vcard\nfn:A\ntel;type=CELL:1\nend:vcard\nFN:outside", "A|1"},
      {"", ""},
      {std::string(100'000, ' '), ""},
  };
  for (const auto& [bytes, read] : cases) EXPECT_EQ(Read(bytes), read);
}

TEST(LdapDnTest, OneNameInManySpellings) {
  const std::string same[][3] = {
      {"cn=Anna Berg,ou=Sales,dc=orvalo", "CN = anna   berg , OU=SALES,DC=Orvalo",
       "2.5.4.3=Anna Berg,organizationalUnitName=Sales,dc=orvalo"},
      {"cn=Comma\\2C Dora,o=x", "cn=\"Comma, Dora\",o=x", "cn=comma\\, dora;o=X"},
      {"cn=a+sn=b,o=x", "sn=B+cn=A,o=x", "SN=b + CN=a,o=x"},
      {"cn=\\c3\\85se,o=x", "cn=Åse,o=x", "cn=åse,o=x"},
  };
  for (const auto& spellings : same) {
    const std::string first = ComparableDn(spellings[0]);
    EXPECT_FALSE(first.empty());
    for (const std::string& spelling : spellings)
      EXPECT_EQ(ComparableDn(spelling), first) << spelling;
    EXPECT_EQ(ParentDn(first), ComparableDn(spellings[0].substr(spellings[0].find(",o") + 1)));
  }
  for (const char* none : {"", "no name", "cn", "cn=a,,o=x", "=a", "cn=a\\", "cn=#zz"})
    EXPECT_EQ(ComparableDn(none), "") << none;
  EXPECT_NE(ComparableDn("cn=a\\,o\\=x"), ComparableDn("cn=a,o=x"));
  EXPECT_TRUE(IsBelowDn("cn=a,o=x", "o=x") && IsBelowDn("o=x", "o=x") && IsBelowDn("o=x", ""));
  EXPECT_FALSE(IsBelowDn("o=xo=x", "o=x") || IsBelowDn("o=x", "cn=a,o=x"));
}

// A server that gives the members of large groups in portions.
TEST(LdapIndexTest, MembersInPortions) {
  LdapIndex index("o=x");
  for (const std::string name : {"a", "b", "c"})
    index.Add({"cn=" + name + ",o=x", {{"cn", {name}}, {"mobile", {"1"}}}});
  index.Add({"cn=all,o=x", {{"member", {}}, {"member;range=0-1", {"cn=a,o=x", "CN=B,o=x"}}}});
  auto portions = index.TakePortions();
  ASSERT_EQ(portions.size(), 1u);
  EXPECT_EQ(portions[0].attribute, "member;range=2-*");
  index.AddMembers({"cn=all,o=x", {{"member;range=2-*", {"cn=c,o=x"}}}});
  EXPECT_TRUE(index.TakePortions().empty());
  index.ResolveMembers();
  const auto rows = index.Contents(AddressBook::kRootContainer);
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(index.Contents(rows[1].id).size() + index.Contents(rows[0].id).size(), 3u);
}

TEST(LdapProfileTest, EncryptsBeforeAPasswordLeavesTheMachine) {
  const struct {
    const char* address;
    bool with_password, without;
  } cases[] = {
      {"ldap://ldap.example/dc=x", true, false},
      {"ldap://ldap.example/dc=x?"
       "?"
       "?"
       "?StartTLS",
       true, true},
      {"ldap://127.0.0.1:389/dc=x", false, false},
      {"ldap://[::1]:1389/dc=x", false, false},
      {"ldap://127.0.0.1.example/dc=x", true, false},
      {"ldaps://ldap.example/dc=x", false, false},
      {"ldapi://%2frun%2fldapi/dc=x", false, false},
  };
  std::string problem;
  for (const auto& [address, with_password, without] : cases) {
    const auto profile = ParseLdapAddress(address, &problem);
    ASSERT_TRUE(profile) << problem;
    EXPECT_EQ(profile->base, "dc=x");
    EXPECT_EQ(profile->NeedsStartTls(true), with_password) << address;
    EXPECT_EQ(profile->NeedsStartTls(false), without) << address;
  }
  for (const char* none : {"http://x", "ldap:x", "cldap://x/",
                           "ldap://x/?"
                           "?"
                           "?"
                           "?!unheard-of"})
    EXPECT_FALSE(ParseLdapAddress(none, &problem)) << none;
}

}  // namespace
}  // namespace orvalo::platform
