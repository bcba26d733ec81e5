#include "platform/desktop_proxy.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <algorithm>
#include <cstdlib>
#include <map>
#include <vector>

#include "platform/file.h"
#include "platform/number.h"

namespace orvalo::platform {
namespace {

constexpr std::uint64_t kLargestKdeFile = 1u << 20;
constexpr int kLongestReading = 3'000;  // milliseconds

using Values = std::map<std::string, std::string, std::less<>>;

std::string VariableText(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

std::string Lookup(const Values& values, std::string_view name) {
  const auto found = values.find(name);
  return found == values.end() ? std::string() : found->second;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
    text.remove_suffix(1);
  return text;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  parts.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), separator)) + 1);
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.push_back(Trimmed(text.substr(0, end)));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

// The texts between quotes in a printed value: "'a'" and "['a', \"b's\"]" alike.
std::vector<std::string> QuotedTexts(std::string_view value) {
  std::vector<std::string> texts;
  char quote = '\0';
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (quote == '\0') {
      if (c != '\'' && c != '"') continue;
      quote = c;
      texts.emplace_back();
    } else if (c == quote) {
      quote = '\0';
    } else {
      if (c == '\\' && i + 1 < value.size()) ++i;
      texts.back() += value[i];
    }
  }
  return texts;
}

// Hosts in the form that libcurl takes: "*.example.org" is ".example.org" there.
std::string JoinedHosts(const std::vector<std::string>& hosts) {
  std::string joined;
  for (std::string_view host : hosts) {
    if (host.starts_with("*.")) host.remove_prefix(1);
    if (host.empty()) continue;
    if (!joined.empty()) joined += ',';
    joined += host;
  }
  return joined;
}

std::string Encoded(const std::string& text) {
  return QUrl::toPercentEncoding(QString::fromStdString(text)).toStdString();
}

// The lines "schema key value" by "schema key", the common beginning of the schemas left out.
Values ReadListing(std::string_view listing) {
  constexpr std::string_view kCommon = "org.gnome.system.proxy";
  Values values;
  for (std::string_view line : Split(listing, '\n')) {
    if (!line.starts_with(kCommon)) continue;
    line.remove_prefix(kCommon.size());
    if (line.starts_with('.')) line.remove_prefix(1);
    line = Trimmed(line);
    std::size_t end = line.find(' ');
    // Keys of the schema itself have no name of a child before them.
    const bool child =
        line.starts_with("http") || line.starts_with("socks") || line.starts_with("ftp");
    if (child && end != std::string_view::npos) end = line.find(' ', end + 1);
    if (end == std::string_view::npos) continue;
    values.emplace(line.substr(0, end), Trimmed(line.substr(end)));
  }
  return values;
}

std::string TextValue(const Values& values, std::string_view name) {
  auto texts = QuotedTexts(Lookup(values, name));
  return texts.empty() ? std::string() : std::move(texts.front());
}

std::string GnomeAddress(const Values& values, const std::string& kind, const char* scheme) {
  const std::string host = TextValue(values, kind + " host");
  const std::int32_t port = ParseInteger(Lookup(values, kind + " port"));
  if (host.empty() || port <= 0) return {};
  std::string login;
  if (Lookup(values, kind + " use-authentication") == "true") {
    login = Encoded(TextValue(values, kind + " authentication-user")) + ":" +
            Encoded(TextValue(values, kind + " authentication-password")) + "@";
  }
  return scheme + login + host + ":" + std::to_string(port);
}

// "http://host 8080" or "http://host:8080".
std::string KdeAddress(std::string_view value) {
  std::string address(Trimmed(value));
  const std::size_t space = address.find(' ');
  if (space != std::string::npos) address[space] = ':';
  constexpr std::string_view kSocks = "socks://";
  if (address.starts_with(kSocks)) address.replace(0, kSocks.size(), "socks5h://");
  return address;
}

}  // namespace

bool HasProxyEnvironment() {
  const char* const names[] = {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy",
                               "ALL_PROXY"};
  return std::any_of(std::begin(names), std::end(names),
                     [](const char* name) { return !VariableText(name).empty(); });
}

DesktopProxy ParseGnomeProxy(std::string_view listing) {
  const Values values = ReadListing(listing);
  if (TextValue(values, "mode") == "auto") return {"", "", "", TextValue(values, "autoconfig-url")};
  if (TextValue(values, "mode") != "manual") return {};
  const std::string socks = GnomeAddress(values, "socks", "socks5h://");
  const auto address_or_socks = [&](const char* kind) {
    std::string address = GnomeAddress(values, kind, "http://");
    return address.empty() ? socks : address;
  };
  return {address_or_socks("http"), address_or_socks("https"),
          JoinedHosts(QuotedTexts(Lookup(values, "ignore-hosts"))), ""};
}

DesktopProxy ParseKdeProxy(std::string_view file) {
  Values values;
  bool ours = false;
  for (const std::string_view line : Split(file, '\n')) {
    if (line.starts_with('[')) ours = line == "[Proxy Settings]";
    const std::size_t equals = line.find('=');
    if (!ours || equals == std::string_view::npos) continue;
    values.emplace(Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)));
  }
  constexpr std::string_view kByHand = "1";
  constexpr std::string_view kByScript = "2";
  if (Lookup(values, "ProxyType") == kByScript)
    return {"", "", "", Lookup(values, "Proxy Config Script")};
  if (Lookup(values, "ProxyType") != kByHand) return {};
  const std::string socks = KdeAddress(Lookup(values, "socksProxy"));
  const auto address_or_socks = [&](const char* name) {
    std::string address = KdeAddress(Lookup(values, name));
    return address.empty() ? socks : address;
  };
  const std::string exceptions = Lookup(values, "NoProxyFor");
  const auto hosts = Split(exceptions, ',');
  return {address_or_socks("httpProxy"), address_or_socks("httpsProxy"),
          JoinedHosts({hosts.begin(), hosts.end()}), ""};
}

DesktopProxy ReadDesktopProxy() {
  if (VariableText("XDG_CURRENT_DESKTOP").find("KDE") != std::string::npos) {
    std::string folder = VariableText("XDG_CONFIG_HOME");
    if (folder.empty()) folder = VariableText("HOME") + "/.config";
    return ParseKdeProxy(ReadFile(folder + "/kioslaverc", kLargestKdeFile).value_or(""));
  }
  QProcess program;
  program.start(QStringLiteral("gsettings"),
                {QStringLiteral("list-recursively"), QStringLiteral("org.gnome.system.proxy")},
                QIODevice::ReadOnly);
  if (!program.waitForFinished(kLongestReading)) {
    program.kill();
    program.waitForFinished(kLongestReading);
    return {};
  }
  return ParseGnomeProxy(program.readAllStandardOutput().toStdString());
}

}  // namespace orvalo::platform
