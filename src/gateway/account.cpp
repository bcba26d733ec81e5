#include "gateway/account.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "app/log_file.h"
#include "app/settings.h"
#include "app/texts.h"
#include "gateway/engine_parts.h"
#include "gateway/gateway_client.h"
#include "platform/code_page.h"
#include "platform/message_box.h"
#include "platform/number.h"

namespace orvalo {

namespace {

constexpr std::size_t kVoucherLength = 16;
constexpr char kOwnClientId[] = "Orvalo";
constexpr int kBalanceHintTextId = 2265;

// Keeps the wait cursor on for its scope.
class Waiting {
 public:
  explicit Waiting(const std::function<void(bool)>& cursor) : cursor_(cursor) {
    if (cursor_) cursor_(true);
  }
  ~Waiting() {
    if (cursor_) cursor_(false);
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  const std::function<void(bool)>& cursor_;
};

}  // namespace

Account::Account(AppSettings& settings, GatewayClient& gateway, const Texts& texts,
                 platform::MessageBoxes& boxes, Log* log, std::function<void(bool)> wait_cursor,
                 std::function<void()> logged_in)
    : settings_(settings),
      gateway_(gateway),
      texts_(texts),
      boxes_(boxes),
      log_(log),
      wait_cursor_(std::move(wait_cursor)),
      logged_in_(std::move(logged_in)) {}

bool Account::LoginToGateway(std::string_view user, std::string_view password) {
  GatewayFailure failure;
  {
    Waiting waiting(wait_cursor_);
    std::u16string reply;
    gateway_.Authenticate(platform::ToWide(settings_.Text(TextSetting::kClientId)),
                          platform::ToWide(user), platform::ToWide(password), &reply);
    failure = gateway_.LastFailure(reply);
  }
  std::string why = Explain("Login", failure);
  {
    const std::lock_guard lock(mutex_);
    login_failure_ = std::move(why);
  }
  if (failure.code == kGatewayUnreachable) ShowNoConnection(boxes_, texts_, settings_, failure);
  if (failure.code != kGatewayOk) return false;
  AskBalance();
  if (logged_in_) logged_in_();
  return true;
}

std::int32_t Account::QueryBalanceTenths() {
  const std::int32_t last = settings_.Number(NumberSetting::kLastBalance);
  return settings_.Flag(FlagSetting::kWorkingOnLine) ? AskBalance() : last;
}

std::int32_t Account::AskBalance() {
  const std::int32_t last = settings_.Number(NumberSetting::kLastBalance);
  std::u16string reply;
  gateway_.QueryBalance(&reply);
  const GatewayFailure failure = gateway_.LastFailure(reply);
  std::string why = Explain("Balance query", failure);
  {
    const std::lock_guard lock(mutex_);
    balance_failure_ = std::move(why);
    balance_told_ = failure.code == kGatewayOk ? platform::FromWide(reply) : std::string();
  }
  if (failure.code != kGatewayOk) return last;
  const BalanceValue balance = ParseBalance(platform::FromWide(reply));
  settings_.SetNumber(NumberSetting::kLastBalance, balance.tenths);
  settings_.SetFlag(FlagSetting::kBalanceWithFraction, balance.with_fraction);
  return balance.tenths;
}

std::string Account::BalanceAsTold() const {
  const std::lock_guard lock(mutex_);
  return balance_told_;
}

std::string Account::LoginFailure() const {
  const std::lock_guard lock(mutex_);
  return login_failure_;
}

std::string Account::BalanceFailure() const {
  const std::lock_guard lock(mutex_);
  return balance_failure_;
}

std::string Account::Explain(const char* what, const GatewayFailure& failure) {
  if (failure.code != kGatewayOk && log_ != nullptr && log_->Enabled()) {
    log_->Write("%s failed: Error:%d, %s", what, static_cast<int>(failure.code),
                failure.words.c_str());
  }
  return FailureText(failure, texts_, settings_.Text(TextSetting::kComBaseUrl));
}

bool Account::RecoverPassword(std::string_view user, std::string_view email, std::string* why) {
  std::u16string reply;
  gateway_.RecoverPassword(platform::ToWide(user), platform::ToWide(email), &reply);
  const GatewayFailure failure = gateway_.LastFailure(reply);
  std::string text = Explain("Password recovery", failure);
  if (why != nullptr) *why = std::move(text);
  return failure.code == kGatewayOk;
}

bool Account::RedeemVoucher(std::string_view number) {
  using platform::BoxIcon;
  if (!settings_.Flag(FlagSetting::kWorkingOnLine)) {
    boxes_.Show(texts_.Load(1393), texts_.Load(1392), BoxIcon::kInformation);
    return false;
  }
  if (platform::CountCharacters(number) != kVoucherLength) {
    boxes_.Show(texts_.Load(1395), texts_.Load(1394), BoxIcon::kInformation);
    return false;
  }
  std::u16string reply;
  gateway_.PayToken(platform::ToWide(number), &reply);
  const GatewayFailure failure = gateway_.LastFailure(reply);
  const std::string why = Explain("Voucher", failure);
  switch (failure.code) {
    case kGatewayOk:
      QueryBalanceTenths();
      return true;
    case kGatewayUnreachable:
      ShowNoConnection(boxes_, texts_, settings_, failure);
      return false;
    case kProxyUnreachable:
    case kProxyRefused:
    case kNotUnderstood:
      boxes_.Show(why, texts_.Load(1028), BoxIcon::kStop);
      return false;
    case kVoucherUsed:
      boxes_.Show(texts_.Load(1396), texts_.Load(1394), BoxIcon::kInformation);
      return false;
    default:
      boxes_.Show(platform::FromWide(reply), texts_.Load(1394), BoxIcon::kNone);
      return false;
  }
}

std::string Account::AccountPageAddress() {
  std::string address = settings_.Text(TextSetting::kVoucherUrl);
  if (!settings_.Flag(FlagSetting::kWorkingOnLine)) return address;
  std::u16string token;
  gateway_.LoginToken(&token);
  if (settings_.Text(TextSetting::kClientId) == kOwnClientId && !token.empty()) {
    address += "?session_id=" + platform::FromWide(token);
  }
  return address;
}

std::string Account::BalanceText(int text_id) const {
  const std::int32_t tenths = settings_.Number(NumberSetting::kLastBalance);
  const bool told = settings_.Flag(FlagSetting::kWorkingOnLine) && BalanceFailure().empty();
  const char* stale = told ? "" : "?";
  return texts_.Format(text_id, {tenths / 10, std::abs(tenths % 10), stale})
      .value_or(std::string());
}

std::string Account::BalanceHint() const {
  const std::string why = BalanceFailure();
  if (why.empty() || !settings_.Flag(FlagSetting::kWorkingOnLine)) return {};
  return texts_.Format(kBalanceHintTextId, {why}).value_or(why);
}

BalanceValue ParseBalance(std::string_view text) {
  const std::int64_t whole = platform::ParseInteger(text);
  BalanceValue value;
  std::int64_t tenths = whole * 10;
  if (const std::size_t point = text.rfind('.'); point != std::string_view::npos) {
    const std::string_view decimals = text.substr(point + 1);
    if (!decimals.empty() && decimals.front() >= '0' && decimals.front() <= '9')
      tenths += decimals.front() - '0';
    value.with_fraction = true;
  }
  value.tenths = static_cast<std::int32_t>(
      std::min<std::int64_t>(std::max<std::int64_t>(tenths, INT32_MIN), INT32_MAX));
  return value;
}

}  // namespace orvalo
