#include "shell/activity.h"

#include "app/texts.h"
#include "gateway/engine_notices.h"

namespace orvalo {

bool Activity::Take(std::uint32_t message, std::int32_t wparam, std::int32_t lparam) {
  switch (message) {
    case kWmBusy:
      text_ = texts_.Load(1184);
      return true;
    case kWmIdle:
      text_.clear();
      format_id_ = 0;
      return true;
    case kWmPromoting:
      return Begin(1185, 1186);
    case kWmSending:
      return Begin(1187, 1188);
    case kWmQuerying:
      return Begin(1189, 1190);
    case kWmProgress:
      return Progress(wparam, lparam);
    default:
      return false;
  }
}

bool Activity::Begin(int title_id, int format_id) {
  title_ = texts_.Load(title_id);
  format_id_ = format_id;
  text_ = title_;
  return true;
}

// A translated format that does not fit leaves the title alone.
bool Activity::Progress(std::int32_t index, std::int32_t recipients_to_go) {
  if (format_id_ == 0) return false;
  text_ = texts_.Format(format_id_, {title_, index, recipients_to_go}).value_or(title_);
  return true;
}

}  // namespace orvalo
