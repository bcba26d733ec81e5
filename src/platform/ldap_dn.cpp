#include "platform/ldap_dn.h"

#include <ldap.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "platform/collation.h"

namespace orvalo::platform {
namespace {

struct FreeDn {
  void operator()(LDAPRDN* dn) const { ldap_dnfree(dn); }
};
using ParsedDn = std::unique_ptr<LDAPRDN, FreeDn>;

ParsedDn ParseDn(std::string_view dn) {
  LDAPDN parsed = nullptr;
  berval text{dn.size(), const_cast<char*>(dn.data())};
  // The library reads up to a zero byte, whatever the length says.
  if (dn.find('\0') != std::string_view::npos ||
      ldap_bv2dn(&text, &parsed, LDAP_DN_FORMAT_LDAP) != LDAP_SUCCESS)
    return nullptr;
  return ParsedDn(parsed);
}

std::string_view ViewOf(const berval& text) { return {text.bv_val, text.bv_len}; }

// RFC 4519's other names of the attributes that names are made of.
std::string AttributeType(std::string_view type) {
  constexpr std::pair<std::string_view, std::string_view> kAliases[] = {
      {"commonname", "cn"},
      {"2.5.4.3", "cn"},
      {"surname", "sn"},
      {"2.5.4.4", "sn"},
      {"countryname", "c"},
      {"2.5.4.6", "c"},
      {"localityname", "l"},
      {"2.5.4.7", "l"},
      {"stateorprovincename", "st"},
      {"2.5.4.8", "st"},
      {"organizationname", "o"},
      {"2.5.4.10", "o"},
      {"organizationalunitname", "ou"},
      {"2.5.4.11", "ou"},
      {"userid", "uid"},
      {"0.9.2342.19200300.100.1.1", "uid"},
      {"domaincomponent", "dc"},
      {"0.9.2342.19200300.100.1.25", "dc"},
  };
  std::string lower = ToLower(type);
  for (const auto& [alias, name] : kAliases)
    if (lower == alias) return std::string(name);
  return lower;
}

// The value in lower case, its runs of blanks as one and none at its ends, with no comma, plus sign
// or equals sign of its own.
void AppendValue(std::string_view value, std::string* out) {
  const std::size_t begin = out->size();
  for (const char byte : ToLower(value)) {
    if (byte == ' ' && (out->size() == begin || out->back() == ' ')) continue;
    switch (byte) {
      case ',':
        *out += "\\2c";
        break;
      case '+':
        *out += "\\2b";
        break;
      case '=':
        *out += "\\3d";
        break;
      case '\\':
        *out += "\\5c";
        break;
      default:
        *out += byte;
    }
  }
  if (out->size() > begin && out->back() == ' ') out->pop_back();
}

std::string ComparableRdn(LDAPRDN rdn) {
  std::vector<std::string> parts;
  for (int i = 0; rdn[i] != nullptr; ++i) {
    std::string part = AttributeType(ViewOf(rdn[i]->la_attr)) + "=";
    AppendValue(ViewOf(rdn[i]->la_value), &part);
    parts.push_back(std::move(part));
  }
  std::sort(parts.begin(), parts.end());
  std::string all;
  for (const std::string& part : parts) all.append(all.empty() ? "" : "+").append(part);
  return all;
}

enum class ByteKind : unsigned char { kOther, kType, kValue, kBlank };

constexpr std::array<ByteKind, 256> kByteKinds = [] {
  std::array<ByteKind, 256> kinds{};
  for (const char c : std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"))
    kinds[static_cast<unsigned char>(c)] = ByteKind::kType;
  for (const char c : std::string_view("0123456789-_.@()/:'&!*?|~^[]{}$%`"))
    kinds[static_cast<unsigned char>(c)] = ByteKind::kValue;
  kinds[' '] = ByteKind::kBlank;
  return kinds;
}();

// The common case, in which lower case is all it takes: short attribute names, values of plain
// characters with single blanks within. False for any other name.
bool LowerPlainDn(std::string_view dn, std::string* out) {
  constexpr std::size_t kLongestShortType = 3;
  out->clear();
  out->reserve(dn.size());
  std::size_t begin = 0;  // of the type or value at hand
  bool in_type = true;
  for (std::size_t at = 0; at < dn.size(); ++at) {
    const char byte = dn[at];
    if (byte == '=' || byte == ',') {
      if (in_type != (byte == '=') || at == begin || dn[at - 1] == ' ') return false;
      if (in_type && at - begin > kLongestShortType) return false;
      in_type = !in_type;
      begin = at + 1;
      *out += byte;
      continue;
    }
    const ByteKind kind = kByteKinds[static_cast<unsigned char>(byte)];
    const bool lone_blank = kind == ByteKind::kBlank && at > begin && dn[at - 1] != ' ';
    if (kind == ByteKind::kOther || (in_type && kind != ByteKind::kType)) return false;
    if (kind == ByteKind::kBlank && !lone_blank) return false;
    *out += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
  }
  return !in_type && begin < dn.size() && dn.back() != ' ';
}

}  // namespace

std::string ComparableDn(std::string_view dn) {
  std::string comparable;
  if (LowerPlainDn(dn, &comparable)) return comparable;
  comparable.clear();
  const ParsedDn parsed = ParseDn(dn);
  for (int i = 0; parsed != nullptr && parsed.get()[i] != nullptr; ++i) {
    if (i > 0) comparable += ',';
    comparable += ComparableRdn(parsed.get()[i]);
  }
  return comparable;
}

std::string_view ParentDn(std::string_view comparable) {
  const auto comma = comparable.find(',');
  return comma == std::string_view::npos ? std::string_view() : comparable.substr(comma + 1);
}

bool IsBelowDn(std::string_view comparable, std::string_view base) {
  if (base.empty()) return true;
  if (!comparable.ends_with(base)) return false;
  const std::size_t before = comparable.size() - base.size();
  return before == 0 || comparable[before - 1] == ',';
}

std::string RdnValue(std::string_view dn, std::size_t number) {
  const ParsedDn parsed = ParseDn(dn);
  LDAPDN rdn = parsed.get();
  for (; rdn != nullptr && *rdn != nullptr && number > 0; --number) ++rdn;
  if (rdn == nullptr || *rdn == nullptr || **rdn == nullptr) return {};
  return std::string(ViewOf((**rdn)->la_value));
}

}  // namespace orvalo::platform
