#include "translator/form_texts.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace orvalo::translator {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kEntities{
    {{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}}};

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

// Ampersands last on the way in and first on the way out.
std::string Unescaped(std::string_view xml) {
  std::string text(xml);
  for (const auto& [entity, plain] : kEntities) text = Replaced(std::move(text), entity, plain);
  return text;
}

std::string Escaped(std::string text) {
  for (auto entry = kEntities.rbegin(); entry != kEntities.rend(); ++entry) {
    const auto& [entity, plain] = *entry;
    if (plain == "&" || plain == "<" || plain == ">")
      text = Replaced(std::move(text), plain, entity);
  }
  return text;
}

bool HasLetter(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) > 127;
  });
}

// The value of an attribute in a tag's text, or the empty text.
std::string_view Attribute(std::string_view tag, std::string_view name) {
  const std::string opening = " " + std::string(name) + "=\"";
  const std::size_t at = tag.find(opening);
  if (at == std::string_view::npos) return {};
  tag.remove_prefix(at + opening.size());
  return tag.substr(0, tag.find('"'));
}

// Whether a text of the property whose tag this is meets an operator's eye.
bool IsShown(std::string_view property, std::string_view text_tag) {
  constexpr std::string_view kTechnical[] = {"styleSheet", "inputMask", "displayFormat",
                                             "shortcut"};
  return Attribute(text_tag, "notr") != "true" && Attribute(property, "stdset") != "0" &&
         std::find(std::begin(kTechnical), std::end(kTechnical), Attribute(property, "name")) ==
             std::end(kTechnical);
}

// The tag that begins at `at`, up to its ">".
std::string_view TagAt(std::string_view xml, std::size_t at) {
  const std::size_t end = xml.find('>', at);
  return xml.substr(at, end == std::string_view::npos ? end : end + 1 - at);
}

}  // namespace

std::string TranslateForm(std::string_view form, const Translate& translate) {
  constexpr std::string_view kOpening = "<string", kClosing = "</string>", kProperty = "<property ";
  std::string result;
  result.reserve(form.size() + form.size() / 8);
  std::string_view property;
  for (std::size_t at = 0; at < form.size();) {
    const std::size_t next = form.find('<', at);
    if (next == std::string_view::npos) {
      result += form.substr(at);
      break;
    }
    const std::string_view tag = TagAt(form, next);
    result += form.substr(at, next - at);
    result += tag;
    at = next + tag.size();
    if (tag.starts_with(kProperty) || tag.starts_with("<attribute ")) property = tag;
    const bool is_text = tag.starts_with(kOpening) && !tag.ends_with("/>") &&
                         (tag[kOpening.size()] == '>' || tag[kOpening.size()] == ' ');
    const std::size_t end = is_text ? form.find(kClosing, at) : std::string_view::npos;
    if (end == std::string_view::npos) continue;
    const std::string text = Unescaped(form.substr(at, end - at));
    const bool replaced = HasLetter(text) && IsShown(property, tag);
    result += replaced ? Escaped(translate(text)) : std::string(form.substr(at, end - at));
    at = end;
  }
  return result;
}

std::string TranslateMenu(std::string_view menu, const Translate& translate) {
  auto items = nlohmann::ordered_json::parse(menu, nullptr, /*allow_exceptions=*/false);
  if (!items.is_array()) throw std::runtime_error("no menu");
  for (auto& item : items) {
    const auto text = item.find("text");
    if (text != item.end() && text->is_string()) *text = translate(text->get<std::string>());
  }
  return items.dump(2) + "\n";
}

std::set<std::string> ControlsOf(std::string_view form) {
  constexpr std::string_view kWidget = "<widget ";
  std::set<std::string> controls;
  for (std::size_t at = 0; (at = form.find(kWidget, at)) != std::string_view::npos; ++at) {
    const std::string_view tag = TagAt(form, at);
    controls.insert(std::string(Attribute(tag, "class")) + " " +
                    std::string(Attribute(tag, "name")));
  }
  return controls;
}

}  // namespace orvalo::translator
