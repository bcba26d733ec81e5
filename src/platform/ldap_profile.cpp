#include "platform/ldap_profile.h"

#include <ldap.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/collation.h"
#include "platform/config_lines.h"
#include "platform/file.h"
#include "platform/number.h"

namespace orvalo::platform {
namespace {

constexpr std::uint64_t kLargestProfileFile = 1u << 20;  // bytes
constexpr int kLongestWait = 3600;                       // seconds

struct FreeUrl {
  void operator()(LDAPURLDesc* url) const { ldap_free_urldesc(url); }
};

std::string TextOf(const char* text) { return text == nullptr ? "" : text; }

bool IsLoopback(const std::string& host) {
  const bool is_address = host.find_first_not_of("0123456789.") == std::string::npos;
  return EqualNoCaseAscii(host, "localhost") || (is_address && host.starts_with("127.")) ||
         host == "::1" || host == "[::1]";
}

std::string HostOfServer(const std::string& server) {
  const auto begin = server.find("//");
  if (begin == std::string::npos) return server;
  const auto colon = server.rfind(':');
  return server.substr(begin + 2, colon > begin ? colon - begin - 2 : std::string::npos);
}

// "[!]name[=value]"; false for one that is not known and that the address insists on.
bool TakeExtension(std::string extension, LdapProfile* profile) {
  const bool critical = extension.starts_with('!');
  if (critical) extension.erase(0, 1);
  const auto equals = std::min(extension.find('='), extension.size());
  const std::string name = extension.substr(0, equals);
  if (EqualNoCaseAscii(name, "bindname")) {
    profile->bind_name = extension.substr(std::min(equals + 1, extension.size()));
  } else if (EqualNoCaseAscii(name, "StartTLS") || name == LDAP_EXOP_START_TLS) {
    profile->start_tls = true;
  } else {
    return !critical;
  }
  return true;
}

std::optional<bool> YesOrNo(std::string_view value) {
  if (EqualNoCaseAscii(value, "yes")) return true;
  if (EqualNoCaseAscii(value, "no")) return false;
  return std::nullopt;
}

bool TakeSeconds(std::string_view value, int* seconds) {
  const int number = ParseInteger(value);
  if (number < 1 || number > kLongestWait) return false;
  *seconds = number;
  return true;
}

}  // namespace

bool LdapProfile::NeedsStartTls(bool has_password) const {
  if (!server.starts_with("ldap://")) return false;
  return start_tls.value_or(has_password && !IsLoopback(HostOfServer(server)));
}

std::optional<LdapProfile> ParseLdapAddress(std::string_view address, std::string* problem) {
  LDAPURLDesc* parsed = nullptr;
  if (ldap_url_parse(std::string(address).c_str(), &parsed) != LDAP_URL_SUCCESS) {
    *problem = "\"" + std::string(address) + "\" is no LDAP address";
    return std::nullopt;
  }
  const std::unique_ptr<LDAPURLDesc, FreeUrl> url(parsed);
  LdapProfile profile;
  profile.name = address;
  profile.is_address = true;
  profile.base = TextOf(url->lud_dn);
  profile.filter = TextOf(url->lud_filter);
  const std::string scheme = TextOf(url->lud_scheme);
  if (scheme != "ldap" && scheme != "ldaps" && scheme != "ldapi") {
    *problem = "The directory must be reached through ldap, ldaps or ldapi, not " + scheme;
    return std::nullopt;
  }
  for (int i = 0; url->lud_exts != nullptr && url->lud_exts[i] != nullptr; ++i) {
    if (TakeExtension(url->lud_exts[i], &profile)) continue;
    *problem = std::string("The address demands \"") + url->lud_exts[i] + "\", which is not known";
    return std::nullopt;
  }
  // What is left of the address once everything else has been taken out of it.
  ldap_memfree(url->lud_dn);
  ldap_memfree(url->lud_filter);
  url->lud_dn = url->lud_filter = nullptr;
  url->lud_scope = LDAP_SCOPE_DEFAULT;
  ber_memvfree(reinterpret_cast<void**>(url->lud_attrs));
  ber_memvfree(reinterpret_cast<void**>(url->lud_exts));
  url->lud_attrs = url->lud_exts = nullptr;
  char* server = ldap_url_desc2str(url.get());
  profile.server = TextOf(server);
  ldap_memfree(server);
  while (profile.server.ends_with('/') && !profile.server.ends_with("://"))
    profile.server.pop_back();
  return profile;
}

std::string AddressWithBase(const std::string& address, const std::string& base) {
  LDAPURLDesc* parsed = nullptr;
  if (ldap_url_parse(address.c_str(), &parsed) != LDAP_URL_SUCCESS) return address;
  const std::unique_ptr<LDAPURLDesc, FreeUrl> url(parsed);
  ldap_memfree(url->lud_dn);
  url->lud_dn = ldap_strdup(base.c_str());
  url->lud_scope = LDAP_SCOPE_DEFAULT;
  char* written = ldap_url_desc2str(url.get());
  const std::string result = written == nullptr ? address : written;
  ldap_memfree(written);
  return result;
}

// One "[name]" of a profile file, with what its lines say.
struct LdapProfiles::Section {
  std::string name;
  bool is_default = false;
  std::string problem;  // the first line that cannot be used
  std::string address;
  LdapProfile wishes;  // all but the address

  bool Take(std::string_view key, std::string_view value);
  std::optional<LdapProfile> Profile(std::string* why_not) const;
};

bool LdapProfiles::Section::Take(std::string_view key, std::string_view value) {
  const auto is = [key](std::string_view known) { return EqualNoCaseAscii(key, known); };
  if (is("address")) {
    address = value;
  } else if (is("base")) {
    wishes.base = value;
  } else if (is("bind-name")) {
    wishes.bind_name = value;
  } else if (is("filter")) {
    wishes.filter = value;
  } else if (is("ca-file")) {
    wishes.authorities = value;
  } else if (is("timeout")) {
    return TakeSeconds(value, &wishes.timeout_s);
  } else if (is("time-limit")) {
    return TakeSeconds(value, &wishes.time_limit_s);
  } else if (is("start-tls")) {
    wishes.start_tls = YesOrNo(value);
    return wishes.start_tls.has_value();
  } else if (is("default")) {
    is_default = YesOrNo(value).value_or(false);
    return YesOrNo(value).has_value();
  } else {
    return false;
  }
  return true;
}

std::optional<LdapProfile> LdapProfiles::Section::Profile(std::string* why_not) const {
  if (!problem.empty()) {
    *why_not = problem;
    return std::nullopt;
  }
  auto profile = ParseLdapAddress(address, why_not);
  if (!profile) {
    *why_not = "Profile " + name + ": " + *why_not;
    return std::nullopt;
  }
  profile->name = name;
  profile->is_address = false;
  const auto prefer = [](std::string* value, const std::string& wish) {
    if (!wish.empty()) *value = wish;
  };
  prefer(&profile->base, wishes.base);
  prefer(&profile->bind_name, wishes.bind_name);
  prefer(&profile->filter, wishes.filter);
  profile->authorities = wishes.authorities;
  if (wishes.start_tls) profile->start_tls = wishes.start_tls;
  profile->timeout_s = wishes.timeout_s;
  profile->time_limit_s = wishes.time_limit_s;
  return profile;
}

std::optional<std::vector<LdapProfiles::Section>> LdapProfiles::Sections(
    std::string* problem) const {
  std::vector<Section> sections;
  for (const std::string& file : files_) {
    FileError error;
    const std::optional<std::string> text = ReadFile(file, kLargestProfileFile, &error);
    if (!text && error.kind == FileError::Kind::kMissing) continue;
    if (!text) {
      *problem = file + " cannot be read: " + error.detail;
      return std::nullopt;
    }
    bool inside = false;  // a section of this file
    ReadConfigLines(*text, [&](const ConfigLine& line) {
      if (line.kind == ConfigLine::Kind::kSection) {
        sections.emplace_back().name = line.name;
        inside = true;
      } else if (inside && (line.kind != ConfigLine::Kind::kValue ||
                            !sections.back().Take(line.name, line.value))) {
        Section& section = sections.back();
        if (section.problem.empty())
          section.problem = "Profile " + section.name + ": \"" + std::string(line.name) +
                            "\" is not known, or not with this value";
      }
      return true;
    });
  }
  return sections;
}

std::optional<LdapProfile> LdapProfiles::Find(std::string_view name, std::string* problem) const {
  if (name.find("://") != std::string_view::npos) return ParseLdapAddress(name, problem);
  const auto sections = Sections(problem);
  if (!sections) return std::nullopt;
  for (const Section& section : *sections)
    if (EqualNoCase(section.name, name)) return section.Profile(problem);
  *problem = "There is no profile \"" + std::string(name) + "\"";
  return std::nullopt;
}

std::optional<LdapProfile> LdapProfiles::Default(std::string* problem) const {
  const auto sections = Sections(problem);
  if (!sections) return std::nullopt;
  if (sections->empty()) {
    *problem = "No LDAP profile is defined";
    return std::nullopt;
  }
  const auto chosen = std::find_if(sections->begin(), sections->end(),
                                   [](const Section& section) { return section.is_default; });
  return (chosen == sections->end() ? sections->front() : *chosen).Profile(problem);
}

}  // namespace orvalo::platform
