#include "app/texts.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <utility>

namespace orvalo {
namespace {

constexpr std::string_view kStringsEntry = "strings.json";
constexpr int kLargestTextId = 65535;

// The id that a member's name spells, or nothing when it spells none.
std::optional<int> TextId(std::string_view name) {
  int id = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
  if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
  if (id < 0 || id > kLargestTextId) return std::nullopt;
  return id;
}

// Nothing when the entry is missing or no JSON object. A member that is no text under an id is left
// out: a slip of a translator costs that one text only.
std::optional<std::map<int, std::string>> ReadStrings(
    const platform::ResourceContainer& container) {
  const std::optional<std::string> bytes = container.Read(kStringsEntry);
  if (!bytes) return std::nullopt;
  const auto json = nlohmann::json::parse(*bytes, nullptr, /*allow_exceptions=*/false);
  if (!json.is_object()) return std::nullopt;
  std::map<int, std::string> texts;
  for (const auto& [name, value] : json.items()) {
    const std::optional<int> id = TextId(name);
    if (id && value.is_string()) texts.emplace(*id, value.get<std::string>());
  }
  return texts;
}

}  // namespace

Texts::Texts() { UseContainer(platform::ResourceContainer::BuiltIn()); }

bool Texts::UseContainer(const platform::ResourceContainer& container) {
  std::optional<std::map<int, std::string>> texts = ReadStrings(container);
  if (!texts) return false;
  texts_ = std::move(*texts);
  return true;
}

std::string Texts::Load(int id) const {
  std::string text = LoadOrEmpty(id);
  return text.empty() ? "String [" + std::to_string(id) + "]" : text;
}

std::string Texts::LoadOrEmpty(int id) const {
  const auto found = texts_.find(id);
  return found == texts_.end() ? std::string() : found->second;
}

std::optional<std::string> Texts::Format(
    int id, std::initializer_list<platform::FormatInsert> inserts) const {
  const auto found = texts_.find(id);
  if (found == texts_.end() || found->second.empty()) return std::nullopt;
  return platform::FormatText(found->second, inserts);
}

}  // namespace orvalo
