#include "platform/proxy_script.h"

#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/collation.h"
#include "platform/file.h"
#include "platform/http.h"

namespace orvalo::platform {
namespace {

constexpr std::size_t kLargestScript = 1u << 20;
constexpr std::size_t kMostProxies = 16;
constexpr int kLongestScriptWait = 5'000;  // milliseconds

QString Runner() { return QStandardPaths::findExecutable(QStringLiteral("pactester")); }

std::optional<std::string> FetchScript(const std::string& address) {
  const QUrl url(QString::fromStdString(address));
  if (url.isLocalFile()) return ReadFile(url.toLocalFile().toStdString(), kLargestScript);
  HttpClient directly;
  HttpRequest request;
  request.url = address;
  request.timeout_ms = request.connect_timeout_ms = kLongestScriptWait;
  request.max_reply = kLargestScript;
  HttpReply reply = directly.Perform(request);
  if (reply.failure != HttpFailure::kNone || reply.status != 200) return std::nullopt;
  return std::move(reply.body);
}

std::string OriginOf(std::string_view url) {
  return QUrl(QString::fromUtf8(url.data(), static_cast<qsizetype>(url.size())))
      .adjusted(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment)
      .toString(QUrl::FullyEncoded)
      .append(QLatin1Char('/'))
      .toStdString();
}

std::string RunScript(const std::string& script, const std::string& origin) {
  QProcess process;
  process.setProcessChannelMode(QProcess::SeparateChannels);
  process.start(Runner(), {QStringLiteral("-p"), QStringLiteral("-"), QStringLiteral("-u"),
                           QString::fromStdString(origin)});
  process.write(script.data(), static_cast<qint64>(script.size()));
  process.closeWriteChannel();
  if (!process.waitForFinished(kLongestScriptWait)) {
    process.kill();
    process.waitForFinished(kLongestScriptWait);
    return {};
  }
  if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) return {};
  return process.readAllStandardOutput().toStdString();
}

std::string_view TakeWord(std::string_view* text) {
  constexpr std::string_view kSpaces = " \t\r\n";
  text->remove_prefix(std::min(text->find_first_not_of(kSpaces), text->size()));
  const std::string_view word = text->substr(0, text->find_first_of(kSpaces));
  text->remove_prefix(word.size());
  return word;
}

// Nothing when it is none that libcurl knows.
std::optional<std::string> ProxyAddress(std::string_view choice) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kSchemes{
      {{"PROXY", "http://"},
       {"HTTP", "http://"},
       {"HTTPS", "https://"},
       {"SOCKS", "socks4a://"},
       {"SOCKS4", "socks4a://"},
       {"SOCKS5", "socks5h://"}}};
  const std::string_view kind = TakeWord(&choice);
  const std::string_view server = TakeWord(&choice);
  if (EqualNoCaseAscii(kind, "DIRECT")) return std::string();
  const bool plain = std::all_of(server.begin(), server.end(), [](char c) {
    return c > ' ' && c < 0x7F && c != '/' && c != '@';
  });
  if (server.empty() || !plain) return std::nullopt;
  for (const auto& [name, scheme] : kSchemes)
    if (EqualNoCaseAscii(kind, name)) return std::string(scheme).append(server);
  return std::nullopt;
}

}  // namespace

std::optional<ProxyScript> ProxyScript::Load(const std::string& address) {
  if (Runner().isEmpty()) return std::nullopt;
  auto text = FetchScript(address);
  if (!text) return std::nullopt;
  return ProxyScript(std::move(*text));
}

const std::vector<std::string>& ProxyScript::ProxiesFor(std::string_view url) {
  std::string origin = OriginOf(url);
  if (origin != origin_) {
    proxies_ = ParseScriptAnswer(RunScript(text_, origin));
    origin_ = std::move(origin);
  }
  return proxies_;
}

std::vector<std::string> ParseScriptAnswer(std::string_view answer) {
  std::vector<std::string> proxies;
  while (!answer.empty() && proxies.size() < kMostProxies) {
    const std::string_view choice = answer.substr(0, answer.find(';'));
    if (auto address = ProxyAddress(choice)) proxies.push_back(std::move(*address));
    answer.remove_prefix(std::min(choice.size() + 1, answer.size()));
  }
  if (proxies.empty()) proxies.emplace_back();
  return proxies;
}

}  // namespace orvalo::platform
