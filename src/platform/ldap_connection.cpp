#include "platform/ldap_connection.h"

#include <ldap.h>

#include <algorithm>
#include <utility>

#include "platform/broken_pipe.h"
#include "platform/ldap_socket.h"

namespace orvalo::platform {
namespace {

constexpr ber_int_t kPageSize = 1000;  // the most that the common servers give
constexpr std::size_t kMostRequestsUnderWay = 32;
constexpr int kLogOnAnswers = 3;  // of StartTLS, the handshake and the bind
constexpr char kSystemAuthorities[] = "/etc/ssl/certs/ca-certificates.crt";

struct FreeControls {
  void operator()(LDAPControl** controls) const { ldap_controls_free(controls); }
  void operator()(LDAPControl* control) const { ldap_control_free(control); }
};

template <typename T>
void SetOption(LDAP* handle, int option, const T& value) {
  ldap_set_option(handle, option, &value);
}

LdapEnd EndOf(int code) {
  switch (code) {
    case LDAP_SUCCESS:
      return LdapEnd::kDone;
    case LDAP_NO_SUCH_OBJECT:
      return LdapEnd::kNoSuchEntry;
    case LDAP_SIZELIMIT_EXCEEDED:
    case LDAP_TIMELIMIT_EXCEEDED:
    case LDAP_ADMINLIMIT_EXCEEDED:
      return LdapEnd::kLimited;
    default:
      if (code == LDAP_FILTER_ERROR || code == LDAP_PARAM_ERROR) return LdapEnd::kRefused;
      // The library's own codes are negative: no connection, time-out, decoding.
      return code < 0 || code == LDAP_UNAVAILABLE ? LdapEnd::kGone : LdapEnd::kRefused;
  }
}

int ScopeCode(LdapScope scope) {
  switch (scope) {
    case LdapScope::kEntry:
      return LDAP_SCOPE_BASE;
    case LdapScope::kChildren:
      return LDAP_SCOPE_ONELEVEL;
    case LdapScope::kSubtree:
      return LDAP_SCOPE_SUBTREE;
  }
  return LDAP_SCOPE_BASE;
}

}  // namespace

void LdapConnection::FreeMessage::operator()(ldapmsg* message) const { ldap_msgfree(message); }

LdapConnection::LdapConnection(const LdapProfile& profile)
    : bind_name_(profile.bind_name),
      start_tls_if_secret_(profile.NeedsStartTls(true)),
      start_tls_always_(profile.NeedsStartTls(false)),
      tls_from_start_(profile.server.starts_with("ldaps:")),
      authorities_(profile.authorities),
      answer_time_(profile.timeout_s),
      limits_(std::make_unique<LdapSocketLimits>(answer_time_)) {
  SurviveBrokenPipes();
  if (ldap_initialize(&handle_, profile.server.c_str()) != LDAP_SUCCESS) handle_ = nullptr;
  if (handle_ != nullptr) SetOptions();
}

LdapConnection::~LdapConnection() {
  if (handle_ != nullptr) ldap_unbind_ext_s(handle_, nullptr, nullptr);
}

void LdapConnection::SetOptions() {
  SetOption(handle_, LDAP_OPT_PROTOCOL_VERSION, int{LDAP_VERSION3});
  ldap_set_option(handle_, LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
  SetOption(handle_, LDAP_OPT_DEREF, int{LDAP_DEREF_NEVER});
  SetOption(handle_, LDAP_OPT_NETWORK_TIMEOUT, AsTimeval(answer_time_));
  SetOption(handle_, LDAP_OPT_TIMEOUT, AsTimeval(answer_time_));
  limits_->Attach(handle_);
}

// With certificates checked, whatever the machine's own configuration says. A context of our own
// or none: the library would take the machine's in its place.
bool LdapConnection::SetUpTls() {
  SetOption(handle_, LDAP_OPT_X_TLS_REQUIRE_CERT, int{LDAP_OPT_X_TLS_DEMAND});
  SetOption(handle_, LDAP_OPT_X_TLS_PROTOCOL_MIN, int{LDAP_OPT_X_TLS_PROTOCOL_TLS1_2});
  char* configured = nullptr;
  ldap_get_option(handle_, LDAP_OPT_X_TLS_CACERTFILE, &configured);
  if (!authorities_.empty())
    ldap_set_option(handle_, LDAP_OPT_X_TLS_CACERTFILE, authorities_.c_str());
  else if (configured == nullptr)
    ldap_set_option(handle_, LDAP_OPT_X_TLS_CACERTFILE, kSystemAuthorities);
  ldap_memfree(configured);
  const int for_client = 0;
  return ldap_set_option(handle_, LDAP_OPT_X_TLS_NEWCTX, &for_client) == LDAP_OPT_SUCCESS;
}

LdapResult LdapConnection::LogOn(const std::string& password) {
  if (handle_ == nullptr) return Gone("The server's address cannot be used");
  const bool with_secret = !bind_name_.empty() && !password.empty();
  const bool start_tls = with_secret ? start_tls_if_secret_ : start_tls_always_;
  if ((start_tls || tls_from_start_) && !SetUpTls())
    return Gone("The certificates to trust cannot be read");
  SetTimeLimit(kLogOnAnswers * answer_time_);
  int code = LDAP_SUCCESS;
  if (start_tls) {
    code = ldap_start_tls_s(handle_, nullptr, nullptr);
    // A server that refuses to encrypt is as good as none: nothing must be sent to it.
    if (code != LDAP_SUCCESS) return Gone("StartTLS: " + Outcome(code).text);
  }
  berval secret{with_secret ? password.size() : 0, const_cast<char*>(password.c_str())};
  code = ldap_sasl_bind_s(handle_, with_secret ? bind_name_.c_str() : nullptr, LDAP_SASL_SIMPLE,
                          &secret, nullptr, nullptr, nullptr);
  return Outcome(code);
}

void LdapConnection::SetTimeLimit(std::chrono::seconds limit) {
  limits_->SetDeadline(std::chrono::steady_clock::now() + limit);
}

LdapResult LdapConnection::Search(const LdapQuery& query, const Taker& take) {
  std::string cookie;
  for (;;) {
    int request = 0;
    LdapResult result = Start(query, &cookie, &request);
    cookie.clear();
    while (result.end == LdapEnd::kDone) {
      const Message message = Next(request, &result);
      if (message == nullptr) break;
      const int type = ldap_msgtype(message.get());
      if (type == LDAP_RES_SEARCH_ENTRY && !Take(message.get(), take))
        result.end = LdapEnd::kStopped;
      if (type != LDAP_RES_SEARCH_RESULT) continue;
      result = Finish(message.get(), &cookie);
      break;
    }
    if (result.end == LdapEnd::kStopped) ldap_abandon_ext(handle_, request, nullptr, nullptr);
    if (result.end != LdapEnd::kDone || cookie.empty()) return result;
  }
}

LdapResult LdapConnection::ReadEntries(const std::vector<std::string>& names,
                                       const LdapQuery& query, const Taker& take) {
  LdapResult result;
  LdapQuery one = query;
  one.scope = LdapScope::kEntry;
  std::size_t started = 0, finished = 0;
  while (finished < names.size()) {
    while (started < names.size() && started - finished < kMostRequestsUnderWay) {
      int request = 0;
      one.base = names[started++];
      const LdapResult start = Start(one, nullptr, &request);
      if (start.end == LdapEnd::kGone) return start;
      if (start.end != LdapEnd::kDone) ++finished;
    }
    if (started == finished) continue;
    const Message message = Next(LDAP_RES_ANY, &result);
    if (message == nullptr) return result;
    const int type = ldap_msgtype(message.get());
    if (type == LDAP_RES_SEARCH_ENTRY && !Take(message.get(), take)) return {LdapEnd::kStopped, {}};
    if (type == LDAP_RES_SEARCH_RESULT) ++finished;
  }
  return result;
}

LdapResult LdapConnection::Start(const LdapQuery& query, const std::string* cookie, int* request) {
  if (gone_) return Gone("The connection is lost");
  std::vector<char*> attributes;
  attributes.reserve(query.attributes.size() + 1);
  for (const std::string& name : query.attributes)
    attributes.push_back(const_cast<char*>(name.c_str()));
  attributes.push_back(nullptr);
  LDAPControl* paging = nullptr;
  if (cookie != nullptr && query.scope != LdapScope::kEntry) {
    berval place{cookie->size(), const_cast<char*>(cookie->data())};
    constexpr char kNotCritical = 0;
    ldap_create_page_control(handle_, kPageSize, cookie->empty() ? nullptr : &place, kNotCritical,
                             &paging);
  }
  const std::unique_ptr<LDAPControl, FreeControls> owner(paging);
  LDAPControl* controls[] = {paging, nullptr};
  return Outcome(ldap_search_ext(
      handle_, query.base.c_str(), ScopeCode(query.scope), query.filter.c_str(), attributes.data(),
      0, paging == nullptr ? nullptr : controls, nullptr, nullptr, LDAP_NO_LIMIT, request));
}

LdapConnection::Message LdapConnection::Next(int request, LdapResult* result) {
  const auto left = limits_->TimeLeft();
  if (left.count() == 0) {
    *result = Gone("The time for the whole address book is over");
    return nullptr;
  }
  timeval wait = AsTimeval(left);
  LDAPMessage* message = nullptr;
  const int type = ldap_result(handle_, request, LDAP_MSG_ONE, &wait, &message);
  if (type > 0) return Message(message);
  if (type == 0) {
    *result = Gone("The server does not answer");
    return nullptr;
  }
  int code = LDAP_SERVER_DOWN;
  ldap_get_option(handle_, LDAP_OPT_RESULT_CODE, &code);
  *result = Gone(Outcome(code == LDAP_SUCCESS ? LDAP_SERVER_DOWN : code).text);
  return nullptr;
}

bool LdapConnection::Take(ldapmsg* message, const Taker& take) {
  BerElement* reader = nullptr;
  berval dn{};
  if (ldap_get_dn_ber(handle_, message, &reader, &dn) != LDAP_SUCCESS) return true;
  entry_.dn = {dn.bv_val, dn.bv_len};
  std::size_t count = 0;
  berval name{};
  berval* values = nullptr;
  while (ldap_get_attribute_ber(handle_, message, reader, &name, &values) == LDAP_SUCCESS &&
         name.bv_val != nullptr) {
    if (count == entry_.attributes.size()) entry_.attributes.emplace_back();
    LdapEntry::Attribute& attribute = entry_.attributes[count++];
    attribute.name = {name.bv_val, name.bv_len};
    attribute.values.clear();
    for (const berval* value = values; value != nullptr && value->bv_val != nullptr; ++value)
      attribute.values.emplace_back(value->bv_val, value->bv_len);
    ldap_memfree(values);
    values = nullptr;
  }
  entry_.attributes.resize(count);
  const bool more = take(entry_);
  ber_free(reader, 0);
  return more;
}

LdapResult LdapConnection::Finish(ldapmsg* message, std::string* cookie) {
  int code = LDAP_SUCCESS;
  LDAPControl** received = nullptr;
  const int parsed =
      ldap_parse_result(handle_, message, &code, nullptr, nullptr, nullptr, &received, 0);
  const std::unique_ptr<LDAPControl*, FreeControls> owner(received);
  if (parsed != LDAP_SUCCESS) return Outcome(parsed);
  LDAPControl* const page = ldap_control_find(LDAP_CONTROL_PAGEDRESULTS, received, nullptr);
  ber_int_t estimate = 0;
  berval place{};
  if (page != nullptr &&
      ldap_parse_pageresponse_control(handle_, page, &estimate, &place) == LDAP_SUCCESS) {
    cookie->assign(place.bv_val == nullptr ? "" : place.bv_val, place.bv_len);
    ber_memfree(place.bv_val);
  }
  return Outcome(code);
}

LdapResult LdapConnection::Outcome(int code) {
  LdapResult result{EndOf(code), {}};
  if (result.end == LdapEnd::kDone) return result;
  gone_ = gone_ || result.end == LdapEnd::kGone;
  result.text = ldap_err2string(code);
  char* detail = nullptr;
  ldap_get_option(handle_, LDAP_OPT_DIAGNOSTIC_MESSAGE, &detail);
  if (detail != nullptr && *detail != '\0') result.text.append(" (").append(detail).append(")");
  ldap_memfree(detail);
  return result;
}

LdapResult LdapConnection::Gone(std::string text) {
  gone_ = true;
  return {LdapEnd::kGone, std::move(text)};
}

}  // namespace orvalo::platform
