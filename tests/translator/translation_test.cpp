#include "translator/translation.h"

#include <gtest/gtest.h>

#include "app/texts.h"
#include "platform/resource_container.h"
#include "translator/form_texts.h"

namespace orvalo::translator {
namespace {

std::string Upper(const std::string& text) {
  std::string upper = text;
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return upper;
}

TEST(TranslationTest, ReplacesWhatAnOperatorReadsAndNothingElse) {
  const struct {
    const char* form;
    const char* translated;
  } cases[] = {
      {R"(<property name="text"><string>&amp;Save "a" &lt;b&gt;</string></property>)",
       R"(<property name="text"><string>&amp;SAVE "A" &lt;B&gt;</string></property>)"},
      {R"(<property name="text"><string notr="true">name</string></property>)", nullptr},
      {R"(<property name="text">
  <string comment="short">all</string></property>)",
       R"(<property name="text">
  <string comment="short">ALL</string></property>)"},
      {R"(<property name="role" stdset="0"><string>brand</string></property>)", nullptr},
      {R"(<property name="styleSheet"><string>color: red</string></property>)", nullptr},
      {R"(<attribute name="title"><string>tab</string></attribute>)",
       R"(<attribute name="title"><string>TAB</string></attribute>)"},
      {R"(<property name="text"><string>&gt;&gt; 17</string></property>)", nullptr},
      {R"(<property name="text"><string/></property><x>plain</x><stringlist>a</stringlist>)",
       nullptr},
      {"<property name=\"text\"><string>cut", nullptr},
      {"<string", nullptr},
      {"no form", nullptr},
      {"", nullptr}};
  for (const auto& c : cases)
    EXPECT_EQ(TranslateForm(c.form, Upper), c.translated != nullptr ? c.translated : c.form);
  EXPECT_EQ(
      TranslateMenu(R"([{"command": 1, "text": "go"}, {"separator": true}])", Upper),
      "[\n  {\n    \"command\": 1,\n    \"text\": \"GO\"\n  },\n  {\n    \"separator\": true\n"
      "  }\n]\n");
  EXPECT_THROW(TranslateMenu("{}", Upper), std::runtime_error);
}

std::string Lines(const std::vector<Finding>& findings) {
  std::string lines;
  for (const Finding& finding : findings) lines += ToLine(finding) + "\n";
  return lines;
}

const Entries kOwn = {
    {"strings.json", R"j({"1": "All", "2": "%1!s!: %2!02d! of %", "3": "<<NAME>>", "4": "A\n*\n\n",
                         "5": "Count (%d)", "6": ""})j"},
    {"dialogs/1.ui", R"(<widget class="QLabel" name="a"><property name="text"><string>One</string>
                        </property></widget><widget class="QLabel" name="b"/>)"},
    {"menus/2.json", R"([{"command": 7, "text": "Go"}])"},
    {"images/a.svg", "picture"}};

TEST(TranslationTest, TellsWhatALanguageLacksAndWhatIsForeignToIt) {
  std::vector<Finding> findings;
  const Entries made =
      Translated(kOwn,
                 {R"j({"1": "Alle", "2": "%2!d! %: %1!s!", "3": "<<NAME>>!", "4": "B\n*\n\n",
                      "5": "Zahl (%d)", "6": ""})j",
                  R"j({"*": {"Go": "Los"}, "dialogs/1.ui": {"One": "Eins & Ä"}})j"},
                 &findings);
  EXPECT_EQ(Lines(findings), "");
  EXPECT_EQ(Lines(Compare(kOwn, made)), "");
  EXPECT_NE(made.at("dialogs/1.ui").find("<string>Eins &amp; Ä</string>"), std::string::npos);
  EXPECT_NE(made.at("menus/2.json").find("Los"), std::string::npos);
  EXPECT_EQ(made.at("images/a.svg"), "picture");

  Translated(
      kOwn,
      {R"({"1": "", "2": "%1!d! %2!d! %", "3": "<<NOM>>", "4": "B\n\n", "5": "Zahl", "7": "x"})",
       R"({"menus/2.json": {"Halt": "Stopp"}})"},
      &findings);
  EXPECT_EQ(Lines(findings),
            "missing: dialogs/1.ui: \"One\"\nmissing: menus/2.json: \"Go\"\n"
            "foreign: menus/2.json: \"Halt\"\nmissing: strings.json 1: \"All\"\n"
            "unfit: strings.json 2: \"%1!d! %2!d! %\"\nunfit: strings.json 3: \"<<NOM>>\"\n"
            "unfit: strings.json 4: \"B\\n\\n\"\nunfit: strings.json 5: \"Zahl\"\n"
            "missing: strings.json 6: \"\"\nforeign: strings.json 7: \"x\"\n");

  Entries other = made;
  other["dialogs/1.ui"] = R"(<widget class="QLabel" name="a"/><widget class="QLabel" name="c"/>)";
  other["menus/2.json"] = R"([{"command": 8}])";
  other["dialogs/9.ui"] = "";
  EXPECT_EQ(Lines(Compare(kOwn, other)),
            "foreign: container: \"dialogs/9.ui\"\nmissing: dialogs/1.ui: \"QLabel b\"\n"
            "foreign: dialogs/1.ui: \"QLabel c\"\nmissing: menus/2.json: \"command 7\"\n"
            "foreign: menus/2.json: \"command 8\"\n");
  for (const char* broken : {"", "[]", "{\"1\": 2}"})
    EXPECT_THROW(Translated(kOwn, {broken, "{}"}, &findings), std::runtime_error) << broken;
  EXPECT_THROW(Translated(kOwn, {"{}", "[]"}, &findings), std::runtime_error);
}

TEST(TranslationTest, TheGermanContainerServesTheProgram) {
  std::string problem;
  const auto german = platform::ResourceContainer::Load(ORVALO_GERMAN, &problem);
  ASSERT_NE(german, nullptr) << problem;
  EXPECT_EQ(german->Paths(), platform::ResourceContainer::BuiltIn().Paths());
  Texts texts;
  ASSERT_TRUE(texts.UseContainer(*german));
  EXPECT_EQ(texts.Load(1026), "Schließen");
  EXPECT_EQ(texts.Format(1177, {"Freunde", 3}).value_or(""),
            "Möchten Sie die Gruppe Freunde mit allen 3 Mitgliedern wirklich löschen?");
  EXPECT_EQ(texts.Load(9), "String [9]");
  // Whatever has no translation yet is there in the program's own words, and nothing is damaged.
  Entries own, other;
  for (const std::string& path : german->Paths()) {
    own[path] = *platform::ResourceContainer::BuiltIn().Read(path);
    other[path] = *german->Read(path);
  }
  EXPECT_EQ(Lines(Compare(own, other)), "");
}

}  // namespace
}  // namespace orvalo::translator
