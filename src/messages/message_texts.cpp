#include "messages/message_texts.h"

#include "app/settings.h"
#include "app/texts.h"
#include "gateway/recipients.h"
#include "platform/code_page.h"
#include "platform/number.h"
#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr int kTimeTextId = 1033;

}  // namespace

std::string TimeText(const Texts& texts, const platform::Clock& clock, std::int32_t time) {
  const platform::LocalTime local = clock.ToLocal(time);
  return texts.Format(kTimeTextId, {local.day, local.month, local.year, local.hour, local.minute})
      .value_or(std::string());
}

const std::string& MessageTexts::Status(std::int32_t status) const {
  return status_names_.Name(status);
}

const std::string& MessageTexts::Type(std::int32_t type) const { return type_names_.Name(type); }

std::string MessageTexts::Numbers(std::string_view to) const {
  const std::string prefix = settings_.Text(TextSetting::kPrefix);
  std::string numbers;
  if (to.starts_with(',')) to.remove_prefix(1);
  for (bool more = !to.empty(); more;) {
    const std::size_t end = to.find(',');
    const std::string_view item = to.substr(0, end);
    more = end != std::string_view::npos;
    to.remove_prefix(more ? end + 1 : to.size());
    std::string mobile;
    if (item.starts_with('A')) {
      mobile = database_.GetContactMobile(platform::ParseInteger(item.substr(1)))
                   .value_or(std::string());
    } else {
      mobile = item;
    }
    numbers += WithCountryPrefix(platform::FirstCharacters(mobile, kContactMobileWidth), prefix);
    if (more) numbers += ',';
  }
  return numbers;
}

std::string MessageTexts::NumbersOf(const MessageRow& row) const {
  return row.number.empty() ? Numbers(row.to) : row.number;
}

}  // namespace orvalo
