#include "gateway/listed_messages.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "gateway/gateway_client.h"
#include "platform/clock.h"
#include "platform/code_page.h"

namespace orvalo {
namespace {

using PageJson = nlohmann::json;

constexpr std::array<std::int64_t, 4> kPagePauses = {500, 1'000, 2'000, 4'000};  // milliseconds

GatewayFailure AskForPage(GatewayClient& gateway, platform::Clock& clock, const std::string& cursor,
                          const std::string& since, std::string* page) {
  GatewayFailure failure;
  for (std::size_t pause = 0;; ++pause) {
    std::u16string reply;
    gateway.ListMessages(platform::ToWide(cursor), platform::ToWide(since), &reply);
    failure = gateway.LastFailure(reply);
    *page = platform::FromWide(reply);
    if (!IsUnanswered(failure.code) || failure.code == kNoSession || pause == kPagePauses.size())
      break;
    clock.Sleep(kPagePauses[pause]);
  }
  return failure;
}

// False for a page that is not as it is to be. `next` is empty behind the last.
bool ReadPage(const std::string& text, const std::function<void(const ListedMessage&)>& visit,
              std::string* next) {
  try {
    const PageJson page = PageJson::parse(text);
    for (const PageJson& message : page.at("messages")) {
      visit({message.at("id"), message.at("key"), message.at("to"), message.at("charge"),
             message.at("status"), message.at("accepted")});
    }
    *next = page.value("next", std::string());
    return true;
  } catch (const PageJson::exception&) {
    return false;
  }
}

}  // namespace

GatewayFailure ForEachListed(GatewayClient& gateway, platform::Clock& clock, std::int64_t since,
                             const std::function<void(const ListedMessage&)>& visit,
                             const std::function<void()>& page_done) {
  if (!gateway.ListsMessages()) return {kGatewayCannot};
  const std::string from = since > 0 ? std::to_string(since) : std::string();
  std::string cursor, page;
  do {
    const GatewayFailure failure = AskForPage(gateway, clock, cursor, from, &page);
    if (failure.code != kGatewayOk) return failure;
    const std::string asked = cursor;
    if (!ReadPage(page, visit, &cursor)) return {kNotUnderstood};
    if (!cursor.empty() && cursor == asked) return {kNotUnderstood};  // would never end
    page_done();
  } while (!cursor.empty());
  return {};
}

bool AskFunds(GatewayClient& gateway, Funds* funds) {
  std::u16string reply;
  if (!platform::Succeeded(gateway.QueryFunds(&reply)) || gateway.LastError() != kGatewayOk)
    return false;
  try {
    const PageJson answer = PageJson::parse(platform::FromWide(reply));
    *funds = {answer.at("balance"), answer.at("credits")};
    return true;
  } catch (const PageJson::exception&) {
    return false;
  }
}

}  // namespace orvalo
