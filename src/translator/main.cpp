// orvalo-translator: makes translated resource containers and checks them.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

#include "platform/file.h"
#include "platform/resource_container.h"
#include "platform/terminal.h"
#include "translator/translation.h"

namespace {

namespace fs = std::filesystem;
using orvalo::platform::ResourceContainer;
using orvalo::translator::Entries;
using orvalo::translator::Finding;

Entries EntriesOf(const ResourceContainer& container) {
  Entries entries;
  for (const std::string& path : container.Paths())
    if (auto bytes = container.Read(path)) entries[path] = *std::move(bytes);
  return entries;
}

void Write(const fs::path& path, const std::string& bytes) {
  orvalo::platform::MakeFolder(path.parent_path().string());
  if (!orvalo::platform::ReplaceFile(path.string(), bytes))
    throw std::runtime_error(path.string() + " cannot be written");
}

// The status of the program: 0 when there is nothing to say.
int Tell(const std::vector<Finding>& findings) {
  for (const Finding& finding : findings)
    std::cout << orvalo::platform::PrintableLine(ToLine(finding)) << '\n';
  return findings.empty() ? 0 : 1;
}

// Never over a translation that somebody has worked on.
int Extract(const std::string& folder) {
  for (const char* name : {"strings.json", "forms.json"}) {
    if (fs::exists(fs::path(folder) / name))
      throw std::runtime_error((fs::path(folder) / name).string() +
                               " is there already: name another folder");
  }
  const auto files = orvalo::translator::Template(EntriesOf(ResourceContainer::BuiltIn()));
  Write(fs::path(folder) / "strings.json", files.strings);
  Write(fs::path(folder) / "forms.json", files.forms);
  return 0;
}

int Build(const std::string& translation, const std::string& folder) {
  std::vector<Finding> ignored;
  const Entries entries = Translated(EntriesOf(ResourceContainer::BuiltIn()),
                                     orvalo::translator::ReadTranslation(translation), &ignored);
  std::string list = "<RCC>\n  <qresource prefix=\"/\">\n";
  for (const auto& [path, bytes] : entries) {
    Write(fs::path(folder) / path, bytes);
    list += "    <file>" + path + "</file>\n";
  }
  Write(fs::path(folder) / "container.qrc", list + "  </qresource>\n</RCC>\n");
  return 0;
}

int Check(const std::string& path) {
  const Entries own = EntriesOf(ResourceContainer::BuiltIn());
  std::vector<Finding> findings;
  if (fs::is_directory(path)) {
    Translated(own, orvalo::translator::ReadTranslation(path), &findings);
  } else {
    std::string problem;
    const auto container = ResourceContainer::Load(path, &problem);
    if (container == nullptr) throw std::runtime_error("The file " + path + " " + problem);
    findings = orvalo::translator::Compare(own, EntriesOf(*container));
  }
  return Tell(findings);
}

}  // namespace

int main(int count, char** values) {
  CLI::App app("Translates Orvalo's texts, dialogs and menus. docs/translating.md tells how.");
  app.require_subcommand(1);
  std::string folder, output, path;
  int status = 0;
  auto* const extract = app.add_subcommand("extract", "Write the program's own texts to a folder");
  extract->add_option("FOLDER", folder, "Takes strings.json and forms.json")->required();
  extract->callback([&] { status = Extract(folder); });
  auto* const build = app.add_subcommand("build", "Make the files of a translated container");
  build->add_option("TRANSLATION", folder, "The folder of strings.json and forms.json")->required();
  build->add_option("OUTPUT", output, "Takes the files and container.qrc, for rcc")->required();
  build->callback([&] { status = Build(folder, output); });
  auto* const check =
      app.add_subcommand("check", "List the texts missing in or foreign to a translation");
  check->add_option("PATH", path, "A translation's folder, or a container file")->required();
  check->callback([&] { status = Check(path); });
  try {
    app.parse(count, values);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  } catch (const std::exception& problem) {
    std::cerr << "orvalo-translator: " << orvalo::platform::PrintableLine(problem.what()) << '\n';
    return 2;
  }
  return status;
}
