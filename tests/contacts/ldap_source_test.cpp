#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "app/settings.h"
#include "app/texts.h"
#include "contacts/outside_address_books.h"
#include "contacts_fixture.h"
#include "support/raw_server.h"
#include "support/scripted_message_boxes.h"
#include "support/slapd.h"
#include "support/temporary_folder.h"
#include "support/tls_certificate.h"

namespace orvalo::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr char kSuffix[] = "dc=orvalo,dc=test";

std::string Unit(const std::string& dn, const std::string& type = "organizationalUnit") {
  return "dn: " + dn + "\nobjectClass: " + type + "\n\n";
}
std::string Person(const std::string& dn, const std::string& more,
                   const std::string& type = "inetOrgPerson") {
  return "dn: " + dn + "\nobjectClass: " + type + "\nsn: Berg\n" + more + "\n\n";
}
std::string Group(const std::string& dn, const std::vector<std::string>& members,
                  const std::string& type = "groupOfNames") {
  std::string text = "dn: " + dn + "\nobjectClass: " + type + "\n";
  for (const std::string& member : members) text += "member: " + member + "\n";
  return text + "\n";
}

const std::string kTop =
    "dn: dc=orvalo,dc=test\nobjectClass: domain\n\n" + Unit("ou=Staff,dc=orvalo,dc=test");

// People and lists as directories really have them.
const std::string kTree =
    kTop + Unit("ou=Sales,ou=Staff,dc=orvalo,dc=test") + Unit("ou=Empty,dc=orvalo,dc=test") +
    Unit("ou=Lists,dc=orvalo,dc=test") +
    Person("cn=Anna Berg,ou=Sales,ou=Staff,dc=orvalo,dc=test",
           "userPassword: anna-pw\nmobile: +31 (6) 0555-0101") +
    Person("cn=Bo Li,ou=Sales,ou=Staff,dc=orvalo,dc=test",
           "displayName: Bo Li (Sales)\nmobile: +31605550102\nmobile: 0605550199") +
    Person("cn=Cees Without,ou=Sales,ou=Staff,dc=orvalo,dc=test", "telephoneNumber: 555") +
    Person("cn=Letters,ou=Staff,dc=orvalo,dc=test", "mobile: on request") +
    "dn:: Y249xbvDs8WCxIcgw4VzZSxvdT1TdGFmZixkYz1vcnZhbG8sZGM9dGVzdA==\n"
    "objectClass: inetOrgPerson\nsn:: w4VzZQ==\nmobile: +48605550104\n\n" +
    Person("cn=Comma\\, Dora+sn=Berg,ou=Staff,dc=orvalo,dc=test", "mobile: 105") +
    Group("cn=Sales list,ou=Lists,dc=orvalo,dc=test",
          {"cn=Anna Berg,ou=Sales,ou=Staff,dc=orvalo,dc=test",
           "CN=bo  li, OU=Sales, OU=Staff, DC=orvalo, DC=test",
           "cn=Cees Without,ou=Sales,ou=Staff,dc=orvalo,dc=test",
           "cn=Gone Person,ou=Staff,dc=orvalo,dc=test"}) +
    Group("cn=Everyone,ou=Lists,dc=orvalo,dc=test",
          {"cn=Sales list,ou=Lists,dc=orvalo,dc=test", "cn=Everyone,ou=Lists,dc=orvalo,dc=test",
           "sn=Berg+cn=Comma\\2C Dora,ou=Staff,dc=orvalo,dc=test"}) +
    Group("cn=Round,ou=Lists,dc=orvalo,dc=test", {"cn=And round,ou=Lists,dc=orvalo,dc=test"}) +
    Group("cn=And round,ou=Lists,dc=orvalo,dc=test",
          {"cn=Round,ou=Lists,dc=orvalo,dc=test",
           "cn=Anna Berg,ou=Sales,ou=Staff,dc=orvalo,dc=test"});

constexpr char kSales[] = "Sales{Anna Berg:31605550101 Bo Li (Sales):31605550102}";

class LdapSourceTest : public ::testing::Test {
 protected:
  LdapSourceTest() {
    settings_.SetFlag(FlagSetting::kMapiAddressBook, true);
    settings_.SetFlag(FlagSetting::kWriteLog, false);
  }

  void Use(const std::string& name, const std::string& password = "") {
    settings_.SetText(TextSetting::kOutlookName, name);
    settings_.SetText(TextSetting::kOutlookPassword, password);
  }
  void Profiles(const std::string& text) { Spill(folder_.File("profiles"), text); }
  // The tree after a load; "-" when there was none.
  std::string Load() {
    const bool was_loaded = book_.IsLoaded();
    book_.LoadExternalAddressBook(true);
    return book_.IsLoaded() || was_loaded ? Drawn(book_.tree()) : "-";
  }
  std::string Problems() {
    std::string all;
    for (const std::string& problem : book_.Problems()) all += problem + "\n";
    return all;
  }
  std::string NameInUse() { return settings_.Text(TextSetting::kOutlookName); }

  TemporaryFolder folder_;
  AppSettings settings_;
  Texts texts_;
  ScriptedMessageBoxes boxes_;
  OutsideAddressBooks source_{settings_, texts_, boxes_, nullptr, {{folder_.File("profiles")}, {}}};
  ExternalAddressBook book_{settings_, &source_};
};

TEST_F(LdapSourceTest, UnitsPeopleAndListsBecomeTheTree) {
  const Slapd server(kTree);
  ASSERT_TRUE(server.IsUp());
  Use(server.url() + "/" + kSuffix);
  EXPECT_EQ(Load(),
            "Lists{And round{Anna Berg:31605550101} "
            "Everyone{Comma, Dora:105 "
            "Sales list{Anna Berg:31605550101 Bo Li (Sales):31605550102}} "
            "Round{And round{Anna Berg:31605550101}} "
            "Sales list{Anna Berg:31605550101 Bo Li (Sales):31605550102}} "
            "Staff{" +
                std::string(kSales) + " Comma, Dora:105 Żółć Åse:48605550104}");
  EXPECT_EQ(Problems(), "");
  // Members that lie outside the base, and lists among them.
  Use(server.url() + "/ou=Lists," + kSuffix);
  EXPECT_THAT(Load(), HasSubstr("Everyone{Comma, Dora:105 Sales list{Anna Berg:31605550101 "
                                "Bo Li (Sales):31605550102}}"));
  // A list as the base, and a filter for people.
  Use(server.url() + "/cn=Everyone,ou=Lists," + kSuffix +
      "?"
      "?"
      "?(displayName=*)");
  EXPECT_EQ(Load(), "Sales list{Bo Li (Sales):31605550102}");
}

TEST_F(LdapSourceTest, OtherKindsOfDirectoriesAreRead) {
  const std::string system = "instanceType: 4\nnTSecurityDescriptor: x\nobjectCategory: ";
  const std::string category = std::string("cn=x,") + kSuffix + "\n";
  const Slapd server(
      kTop + "dn: o=Branch,dc=orvalo,dc=test\nobjectClass: organization\n\n" +
          "dn: cn=Ida,o=Branch,dc=orvalo,dc=test\nobjectClass: user\nsn: V\nmobile: 1\n" + system +
          category + "\n" +
          "dn: cn=Crew,o=Branch,dc=orvalo,dc=test\nobjectClass: group\ncn: Crew\ngroupType: 2\n" +
          "member: cn=Ida,o=Branch,dc=orvalo,dc=test\n" + system + category + "\n" +
          // Containers of a kind that nobody asks for, one of them a person.
          "dn: uid=shelf,dc=orvalo,dc=test\nobjectClass: account\n\n" +
          Person("cn=Boss,uid=shelf,dc=orvalo,dc=test", "mobile: 2") +
          Person("cn=Aide,cn=Boss,uid=shelf,dc=orvalo,dc=test", "mobile: 3"),
      "sizelimit unlimited\n" + Slapd::SchemaLine("nis") + Slapd::SchemaLine("msuser"));
  ASSERT_TRUE(server.IsUp());
  Use(server.url() + "/" + kSuffix);
  EXPECT_EQ(Load(), "Branch{Crew{Ida:1} Ida:1} shelf{Boss{Aide:3} Boss:2}");
}

TEST_F(LdapSourceTest, ProfilesPasswordsAndTheNameInUse) {
  const Slapd server(kTree, "sizelimit unlimited");
  ASSERT_TRUE(server.IsUp());
  const std::string address = server.url() + "/ou=Sales,ou=Staff," + kSuffix;
  const std::string anna = "cn=Anna Berg,ou=Sales,ou=Staff,dc=orvalo,dc=test";
  Profiles("# ours\n[Head Office]\naddress = " + server.url() + "\nbase = ou=Sales,ou=Staff," +
           kSuffix + "\nbind-name = " + anna +
           "\n[Other]\ndefault = yes\naddress = " + server.url() + "/ou=Empty," + kSuffix +
           "\n[Odd]\naddress = " + address + "\nstart-tsl = yes\n");
  const std::string with_bind_name =
      address +
      "?"
      "?"
      "?"
      "?bindname=cn=Anna%20Berg%2cou=Sales%2cou=Staff%2cdc=orvalo%2cdc=test";
  struct {
    std::string name, password, name_in_use, problem;
  } cases[] = {
      {address, "", address, ""},
      {with_bind_name, "anna-pw", with_bind_name, ""},
      {with_bind_name, "wrong", with_bind_name, "Invalid credentials"},  // then as nobody
      {"head office", "anna-pw", "Head Office", ""},
      {"", "", "Other", ""},
      {"Elsewhere", "", "Other", "There is no profile \"Elsewhere\""},
      {server.url(), "", server.url() + "/dc=orvalo,dc=test", ""},
  };
  for (const auto& [name, password, name_in_use, problem] : cases) {
    Use(name, password);
    source_.CloseAddressBookSession();
    Load();
    EXPECT_TRUE(book_.IsLoaded()) << name;
    EXPECT_EQ(NameInUse(), name_in_use);
    EXPECT_THAT(Problems(),
                problem.empty() ? testing::Matcher<std::string>(IsEmpty()) : HasSubstr(problem));
  }
  EXPECT_THAT(boxes_.shown(), IsEmpty());
  // A profile that says something else than its writer thinks is not used.
  Use("Odd");
  EXPECT_THAT((Load(), Problems()), HasSubstr("\"start-tsl\" is not known"));
  Use(server.url() + "/ou=Nowhere," + kSuffix);
  Load();
  ASSERT_EQ(boxes_.shown().size(), 1u);
  EXPECT_EQ(boxes_.shown()[0].text,
            "Failed to open the Outlook/MAPI Address Book. Make sure that you have one defined!");
  EXPECT_EQ(boxes_.shown()[0].caption, "Can not access Address Book");
}

TEST_F(LdapSourceTest, ASessionOutlivesItsConnectionAndEndsWithItsName) {
  Slapd server(kTree);
  ASSERT_TRUE(server.IsUp());
  Use(server.url() + "/ou=Staff," + kSuffix);
  const std::string staff = Load();
  server.Stop();
  server.Start();
  EXPECT_EQ(Load(), staff);
  Use(server.url() + "/ou=Sales,ou=Staff," + kSuffix);
  EXPECT_EQ("Sales{" + Load() + "}", kSales);
  for (const std::string base : {"ou=Staff,", "ou=Empty,"}) {
    Profiles("[P]\naddress=" + server.url() + "\nbase=" + base + kSuffix);
    Use("P");
    EXPECT_EQ(Load(), base == "ou=Staff," ? staff : "");
  }
  server.Stop();
  EXPECT_EQ(Load(), "");
  EXPECT_THAT(Problems(), HasSubstr("Can't contact LDAP server"));
  EXPECT_EQ(boxes_.shown().size(), 1u);
}

TEST_F(LdapSourceTest, AServersLimitHoldsForEachContainerByItself) {
  std::string ldif = kTop;
  for (const std::string unit : {"ou=A", "ou=B", "ou=Big"}) {
    ldif += Unit(unit + ",dc=orvalo,dc=test");
    for (int i = 0; i < (unit == "ou=Big" ? 12 : 8); ++i) {
      const std::string number = std::to_string(100 + i);
      ldif += Person("cn=" + number + "," + unit + ",dc=orvalo,dc=test", "mobile: " + number);
    }
  }
  const Slapd server(ldif, "sizelimit 10");
  ASSERT_TRUE(server.IsUp());
  Use(server.url() + "/" + kSuffix);
  Load();
  EXPECT_EQ(book_.tree().EntryCount(), 8u + 8u + 9u);  // and the unit itself
  EXPECT_THAT(book_.Problems(), testing::ElementsAre(StartsWith("ou=Big,dc=orvalo,dc=test: ")));

  std::string many = kTop;
  for (int i = 10000; i < 12500; ++i) {
    const std::string number = std::to_string(i);
    many += Person("cn=" + number + ",ou=Staff,dc=orvalo,dc=test", "mobile: " + number);
  }
  const Slapd paging(many, "sizelimit size.soft=1500 size.hard=1500 size.prtotal=unlimited");
  Use(paging.url() + "/" + kSuffix);
  Load();
  EXPECT_EQ(book_.tree().EntryCount(), 2500u);
  EXPECT_EQ(Problems(), "");
}

// A server's certificate and key, in files.
class TlsFiles {
 public:
  explicit TlsFiles(const TemporaryFolder& folder)
      : ours_(folder.File("ours.pem")), key_(folder.File("key.pem")) {
    const TlsCertificate certificate;
    Spill(ours_, certificate.CertificateText());
    Spill(key_, certificate.KeyText());
  }
  const std::string& ours() const { return ours_; }
  std::string config() const {
    return "TLSCertificateFile " + ours_ + "\nTLSCertificateKeyFile " + key_;
  }

 private:
  std::string ours_, key_;
};

TEST_F(LdapSourceTest, NothingGoesOverAConnectionThatCannotBeTrusted) {
  const TlsFiles tls(folder_);
  Spill(folder_.File("other.pem"), TlsCertificate().CertificateText());
  const Slapd server(kTree, tls.config());
  const Slapd plain(kTree);
  ASSERT_TRUE(server.IsUp() && plain.IsUp());
  struct {
    std::string address, lines;
    bool trusted;
  } cases[] = {
      {server.tls_url(), "ca-file=" + tls.ours(), true},
      {server.tls_url(), "ca-file=" + folder_.File("other.pem"), false},
      {server.tls_url(), "", false},
      {server.tls_url(), "ca-file=" + folder_.File("missing.pem"), false},
      {server.url(), "start-tls=yes\nca-file=" + tls.ours(), true},
      {server.url(), "start-tls=yes\nca-file=" + folder_.File("other.pem"), false},
      {server.url() + "/?"
                      "?"
                      "?"
                      "?StartTLS",
       "ca-file=" + tls.ours(), true},
      {plain.url(), "start-tls=yes", false},  // it knows of no encryption
      {plain.url(), "start-tls=no", true},
  };
  for (const auto& [address, lines, trusted] : cases) {
    Profiles("[P]\naddress=" + address + "\nbase=ou=Sales,ou=Staff," + kSuffix +
             "\nbind-name=cn=admin," + kSuffix + "\n" + lines + "\n");
    Use("P", "secret");
    source_.CloseAddressBookSession();
    book_.LoadExternalAddressBook(true);
    EXPECT_EQ(book_.tree().EntryCount(), trusted ? 2u : 0u) << address << "\n" << lines;
    EXPECT_EQ(Problems().empty(), trusted) << Problems();
  }
}

// Stands between client and server and lets only so many bytes of the answers pass.
class Relay {
 public:
  enum class Then { kClose, kStall, kTalkNonsense };
  Relay(int port, std::size_t bytes, Then then)
      : server_([=](RawServer::Connection& client) { Run(client, port, bytes, then); }) {}
  std::string Url(bool encrypted) const {
    return (encrypted ? "ldaps://127.0.0.1:" : "ldap://127.0.0.1:") +
           std::to_string(server_.port());
  }

 private:
  static void Run(RawServer::Connection& client, int port, std::size_t bytes, Then then) {
    const int server = ConnectLoopback(port);
    char buffer[4096];
    while (bytes > 0) {
      pollfd ends[] = {{client.socket(), POLLIN, 0}, {server, POLLIN, 0}};
      ::poll(ends, 2, -1);
      const bool answer = ends[1].revents != 0;
      const ssize_t count = ::recv(answer ? server : client.socket(), buffer, sizeof buffer, 0);
      if (count <= 0) break;
      const std::size_t taken = std::min(static_cast<std::size_t>(count), answer ? bytes : 4096);
      (void)!::send(answer ? client.socket() : server, buffer, taken, MSG_NOSIGNAL);
      if (answer) bytes -= taken;
    }
    ::close(server);
    if (then == Then::kTalkNonsense) client.Send(std::string(5000, '\x42'));
    if (then == Then::kStall) client.WaitForClose();
  }
  RawServer server_;
};

TEST_F(LdapSourceTest, WhatWasReadStaysWhenTheServerGoesAwayMeanwhile) {
  const TlsFiles tls(folder_);
  const Slapd server(kTree, tls.config());
  ASSERT_TRUE(server.IsUp());
  using Then = Relay::Then;
  enum Stage { kLogOn, kBase, kEntries };
  struct {
    Then then;
    bool encrypted;
    std::size_t bytes;
    Stage stage;
  } cases[] = {
      {Then::kClose, false, 5, kLogOn},        {Then::kClose, false, 40, kBase},
      {Then::kClose, false, 900, kEntries},    {Then::kTalkNonsense, false, 0, kLogOn},
      {Then::kTalkNonsense, false, 40, kBase}, {Then::kTalkNonsense, false, 900, kEntries},
      {Then::kStall, false, 900, kEntries},    {Then::kStall, true, 300, kLogOn},
      {Then::kStall, true, 1800, kEntries},
  };
  for (const auto& [then, encrypted, bytes, stage] : cases) {
    const Relay relay(encrypted ? server.tls_port() : server.port(), bytes, then);
    Profiles("[P]\naddress=" + relay.Url(encrypted) + "\nbase=" + kSuffix + "\ntimeout=1\n" +
             "ca-file=" + tls.ours() + "\n");
    Use("P");
    const std::size_t boxes = boxes_.shown().size();
    book_.LoadExternalAddressBook(true);
    source_.CloseAddressBookSession();
    EXPECT_NE(Problems(), "") << bytes;
    EXPECT_EQ(book_.tree().EntryCount() > 0, stage == kEntries) << bytes;
    EXPECT_LT(book_.tree().EntryCount(), 9u);
    EXPECT_EQ(boxes_.shown().size() - boxes, stage == kBase ? 1u : 0u) << bytes;
  }
}

}  // namespace
}  // namespace orvalo::test
