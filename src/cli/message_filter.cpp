#include "cli/message_filter.h"

#include <CLI/CLI.hpp>
#include <deque>
#include <regex>
#include <set>

#include "app/startup/program.h"
#include "cli/command.h"
#include "gateway/recipients.h"
#include "messages/message_texts.h"
#include "platform/collation.h"

namespace orvalo::cli {

namespace {

// A status by its name, as it is shown or in English.
std::int32_t StatusByName(const SmsStatusNames& shown, const std::string& name) {
  const SmsStatusNames english;
  std::string known;
  for (std::int32_t status = 0; status < kSmsStatusCount; ++status) {
    if (platform::EqualNoCase(shown.Name(status), name) ||
        platform::EqualNoCase(english.Name(status), name))
      return status;
    known += (known.empty() ? "" : ", ") + shown.Name(status);
  }
  throw CommandError(ExitCode::kUsage, "There is no status " + name + ". There are: " + known);
}

[[noreturn]] void ThrowNoTime(const std::string& text) {
  throw CommandError(ExitCode::kUsage,
                     text + " is no time, such as 2026-11-23, \"2026-11-23 14:30\" or 2h");
}

std::string Canonical(std::string_view number, const std::string& prefix) {
  if (number.starts_with('+')) number.remove_prefix(1);
  return WithCountryPrefix(number, prefix);
}

}  // namespace

std::int64_t TimeOf(const std::string& text, bool last, const platform::Clock& clock) {
  static const std::regex ago(R"((\d{1,6})([mhd]))"), seconds(R"(@(\d{1,10}))");
  static const std::regex calendar(R"((\d{4})-(\d\d)-(\d\d)(?:[T ](\d\d):(\d\d)(?::(\d\d))?)?)");
  std::smatch part;
  if (std::regex_match(text, part, seconds)) return std::stoll(part[1]);
  if (std::regex_match(text, part, ago)) {
    const int unit = part[2] == "m" ? 60 : part[2] == "h" ? 3600 : 86'400;
    return clock.Now() - std::stoll(part[1]) * unit;
  }
  if (!std::regex_match(text, part, calendar)) ThrowNoTime(text);
  const auto number = [&](std::size_t i, int if_missing) {
    return part[i].matched ? std::stoi(part[i]) : if_missing;
  };
  platform::LocalTime local;
  local.year = number(1, 0);
  local.month = number(2, 0);
  local.day = number(3, 0);
  local.hour = number(4, last ? 23 : 0);
  local.minute = number(5, last ? 59 : 0);
  local.second = number(6, last ? 59 : 0);
  const bool in_range = local.year > 0 && local.hour < 24 && local.minute < 60 && local.second < 60;
  if (!in_range) ThrowNoTime(text);
  const std::int64_t time = clock.FromLocal(local);
  const platform::LocalTime back = clock.ToLocal(time);
  if (back.month != local.month || back.day != local.day) ThrowNoTime(text);
  return time;
}

void MessageFilter::Define(CLI::App& app) {
  app.add_option("--status", statuses_,
                 "Only the messages of this status, such as Pending; may be repeated")
      ->type_name("NAME")
      ->delimiter(',')
      ->allow_extra_args(false);
  app.add_option("--since", since_,
                 "Only from this time on: 2026-11-23, \"2026-11-23 14:30\", or 90m, 2h, 3d ago")
      ->type_name("TIME");
  app.add_option("--until", until_, "Only up to this time, the whole day or minute included")
      ->type_name("TIME");
  app.add_option("--recipient", recipient_,
                 "Only to this number, or to somebody whose name has this in it")
      ->type_name("WHO");
  app.add_option("--limit", limit_, "Only so many, the newest")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1'000'000'000}).description(""));
}

void MessageFilter::ForEach(Program& program,
                            const std::function<bool(const MessageRow&)>& visit) const {
  std::set<std::int32_t> statuses;
  for (const std::string& name : statuses_)
    statuses.insert(StatusByName(program.GetStatusNames(), name));
  const platform::Clock& clock = program.GetClock();
  const std::int64_t from = since_.empty() ? INT64_MIN : TimeOf(since_, false, clock);
  const std::int64_t to = until_.empty() ? INT64_MAX : TimeOf(until_, true, clock);
  const MessageTexts texts(program.GetDatabase(), program.GetSettings(), program.GetTexts(),
                           program.GetStatusNames(), program.GetTypeNames(), clock);
  const std::string prefix = program.GetSettings().Text(TextSetting::kPrefix);
  std::deque<MessageRow> newest;
  program.GetDatabase().ForEachSms([&](const MessageRow& row) {
    if (!statuses.empty() && statuses.count(row.stat) == 0) return true;
    if (row.time < from || row.time > to) return true;
    if (!recipient_.empty() && !IsTo(row, texts, prefix)) return true;
    if (limit_ == 0) return visit(row);
    newest.push_back(row);
    if (newest.size() > limit_) newest.pop_front();
    return true;
  });
  for (const MessageRow& row : newest) {
    if (!visit(row)) return;
  }
}

bool MessageFilter::IsTo(const MessageRow& row, const MessageTexts& texts,
                         const std::string& prefix) const {
  const std::string wanted = Canonical(recipient_, prefix);
  std::string numbers = row.number.empty() ? texts.Numbers(row.to) : row.number;
  for (std::string_view rest = numbers; !rest.empty();) {
    const std::string_view number = rest.substr(0, rest.find(','));
    if (Canonical(number, prefix) == wanted) return true;
    rest.remove_prefix(std::min(number.size() + 1, rest.size()));
  }
  const bool is_number = wanted.find_first_not_of("0123456789") == std::string::npos;
  return !is_number &&
         platform::FoldCase(row.to_info).find(platform::FoldCase(recipient_)) != std::string::npos;
}

}  // namespace orvalo::cli
