#include "translator/translation.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "platform/file.h"
#include "translator/form_texts.h"

namespace orvalo::translator {

namespace {

using Json = nlohmann::ordered_json;
using TextMap = std::map<std::string, std::string>;
using enum Finding::Kind;

constexpr char kStrings[] = "strings.json";
constexpr char kForms[] = "forms.json";
constexpr char kEveryForm[] = "*";

bool IsDialog(std::string_view path) { return path.starts_with("dialogs/"); }
bool IsMenu(std::string_view path) { return path.starts_with("menus/"); }
bool IsAccelerators(std::string_view path) { return path.starts_with("accelerators/"); }

TextMap ReadTexts(const Json& object, const std::string& file) {
  if (!object.is_object()) throw std::runtime_error(file + ": not an object of texts");
  TextMap texts;
  for (const auto& [name, text] : object.items()) {
    if (!text.is_string()) throw std::runtime_error(file + ": '" + name + "' is no text");
    texts[name] = text.get<std::string>();
  }
  return texts;
}

Json Parse(const std::string& bytes, const std::string& file) {
  auto parsed = Json::parse(bytes, nullptr, /*allow_exceptions=*/false);
  if (parsed.is_discarded()) throw std::runtime_error(file + ": not JSON");
  return parsed;
}

// What the program fills in or looks for in a text, in a canonical order: inserts as "%1s" by
// number and kind, "%d" and its like as they stand, fields as "<<NAME>>", and for lists of file
// types (which end in an empty line) the number of lines.
std::multiset<std::string> PlacesOf(const std::string& text) {
  std::multiset<std::string> places;
  for (std::size_t at = 0; (at = text.find('%', at)) != std::string::npos; ++at) {
    std::size_t end = at + 1;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    const bool numbered = end > at + 1;
    const char next = at + 1 < text.size() ? text[at + 1] : ' ';
    if (!numbered && next != '%' && !(next >= 'a' && next <= 'z')) continue;  // a plain sign
    std::string place = text.substr(at, numbered ? end - at : 2);
    const std::size_t close =
        end < text.size() && text[end] == '!' ? text.find('!', end + 1) : std::string::npos;
    if (numbered) place += close == std::string::npos ? 's' : text[close - 1];
    places.insert(place);
    at += numbered ? 0 : 1;
  }
  for (std::size_t at = 0; (at = text.find("<<", at)) != std::string::npos; ++at) {
    const std::size_t end = text.find(">>", at);
    if (end != std::string::npos) places.insert(text.substr(at, end + 2 - at));
  }
  if (text.ends_with("\n\n"))
    places.insert(std::to_string(std::count(text.begin(), text.end(), '\n')) + " lines");
  return places;
}

void CompareStrings(const TextMap& own, const TextMap& other, std::vector<Finding>* findings) {
  for (const auto& [id, text] : own) {
    const auto found = other.find(id);
    const std::string where = std::string(kStrings) + " " + id;
    if (found == other.end() || (found->second.empty() && !text.empty())) {
      findings->push_back({kMissing, where, text});
    } else if (PlacesOf(found->second) != PlacesOf(text)) {
      findings->push_back({kUnfit, where, found->second});
    }
  }
  for (const auto& [id, text] : other) {
    if (own.count(id) == 0) findings->push_back({kForeign, std::string(kStrings) + " " + id, text});
  }
}

// Both ways of a comparison of two sets of names.
void CompareNames(const std::set<std::string>& own, const std::set<std::string>& other,
                  const std::string& where, std::vector<Finding>* findings) {
  for (const auto& name : own)
    if (other.count(name) == 0) findings->push_back({kMissing, where, name});
  for (const auto& name : other)
    if (own.count(name) == 0) findings->push_back({kForeign, where, name});
}

std::set<std::string> CommandsOf(const std::string& bytes, const std::string& file) {
  std::set<std::string> commands;
  for (const auto& item : Parse(bytes, file)) {
    if (item.contains("command")) commands.insert("command " + item["command"].dump());
  }
  return commands;
}

// The translated texts of the dialogs and menus, and which of them have found their use.
class FormTable {
 public:
  FormTable(const std::string& bytes, std::vector<Finding>* findings) : findings_(findings) {
    const Json forms = Parse(bytes, kForms);
    if (!forms.is_object()) throw std::runtime_error(std::string(kForms) + ": not an object");
    for (const auto& [form, texts] : forms.items())
      forms_[form] = ReadTexts(texts, std::string(kForms) + ", " + form);
  }

  std::string Find(const std::string& form, const std::string& text) {
    for (const std::string& place : {form, std::string(kEveryForm)}) {
      const auto texts = forms_.find(place);
      if (texts == forms_.end()) continue;
      const auto found = texts->second.find(text);
      if (found == texts->second.end()) continue;
      used_.insert({place, text});
      return found->second;
    }
    if (missing_.insert({form, text}).second) findings_->push_back({kMissing, form, text});
    return text;
  }

  void ReportUnused() const {
    for (const auto& [form, texts] : forms_) {
      for (const auto& entry : texts) {
        if (used_.count({form, entry.first}) == 0)
          findings_->push_back({kForeign, form, entry.first});
      }
    }
  }

 private:
  std::vector<Finding>* findings_;
  std::map<std::string, TextMap> forms_;
  std::set<std::pair<std::string, std::string>> used_, missing_;  // of each form, a text
};

// A dialog or menu with its texts replaced; anything else as it is.
std::string TranslateEntry(const std::string& path, const std::string& bytes,
                           const Translate& translate) {
  if (IsDialog(path)) return TranslateForm(bytes, translate);
  if (IsMenu(path)) return TranslateMenu(bytes, translate);
  return bytes;
}

}  // namespace

Translation ReadTranslation(const std::string& folder) {
  const auto read = [&](const std::string& name) {
    auto bytes = platform::ReadFile(folder + "/" + name);
    if (!bytes) throw std::runtime_error(folder + "/" + name + " cannot be read");
    return *std::move(bytes);
  };
  return {read(kStrings), read(kForms)};
}

std::string ToLine(const Finding& finding) {
  const char* const kKinds[] = {"missing", "foreign", "unfit"};
  return std::string(kKinds[static_cast<int>(finding.kind)]) + ": " + finding.where + ": " +
         Json(finding.what).dump();
}

Entries Translated(const Entries& own, const Translation& translation,
                   std::vector<Finding>* findings) {
  FormTable table(translation.forms, findings);
  Entries result;
  for (const auto& [path, bytes] : own) {
    result[path] = TranslateEntry(
        path, bytes, [&, &form = path](const std::string& text) { return table.Find(form, text); });
  }
  table.ReportUnused();

  const TextMap texts = ReadTexts(Parse(translation.strings, kStrings), kStrings);
  Json strings = Parse(own.at(kStrings), kStrings);
  CompareStrings(ReadTexts(strings, kStrings), texts, findings);
  for (auto& [id, text] : strings.items()) {
    const auto found = texts.find(id);
    if (found != texts.end() && !found->second.empty()) text = found->second;
  }
  result[kStrings] = strings.dump(2) + "\n";
  return result;
}

std::vector<Finding> Compare(const Entries& own, const Entries& other) {
  std::vector<Finding> findings;
  const auto relevant = [](const Entries& entries) {
    std::set<std::string> paths;
    for (const auto& entry : entries) {
      const std::string& path = entry.first;
      if (path == kStrings || IsDialog(path) || IsMenu(path) || IsAccelerators(path))
        paths.insert(path);
    }
    return paths;
  };
  CompareNames(relevant(own), relevant(other), "container", &findings);
  for (const auto& [path, bytes] : own) {
    const auto found = other.find(path);
    if (found == other.end()) continue;
    if (path == kStrings) {
      CompareStrings(ReadTexts(Parse(bytes, path), path),
                     ReadTexts(Parse(found->second, path), path), &findings);
    } else if (IsDialog(path)) {
      CompareNames(ControlsOf(bytes), ControlsOf(found->second), path, &findings);
    } else if (IsMenu(path) || IsAccelerators(path)) {
      CompareNames(CommandsOf(bytes, path), CommandsOf(found->second, path), path, &findings);
    }
  }
  return findings;
}

Translation Template(const Entries& own) {
  Json forms = Json::object();
  for (const auto& [path, bytes] : own) {
    TranslateEntry(path, bytes, [&, &form = path](const std::string& text) {
      forms[form][text] = text;
      return text;
    });
  }
  return {own.at(kStrings), forms.dump(2) + "\n"};
}

}  // namespace orvalo::translator
