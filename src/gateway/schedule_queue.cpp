#include "gateway/schedule_queue.h"

#include "store/sms_database.h"

namespace orvalo {

namespace {

constexpr std::int32_t kSecondsOfADay = 86'400;

}  // namespace

std::vector<std::int32_t> QueueOccurrences(
    SmsDatabase& database, const Schedule& schedule, QueuedMessage message,
    const std::function<std::int32_t(const QueuedMessage&)>& queue) {
  message.status = schedule.days_before > 0 ? SmsStatus::kDelayScheduled : SmsStatus::kScheduled;
  message.delay = schedule.days_before * kSecondsOfADay;
  std::vector<std::int32_t> ids;
  ids.reserve(schedule.occurrences.size());
  SmsDatabase::Transaction transaction(database);
  for (const Occurrence& occurrence : schedule.occurrences) {
    message.time = occurrence.time;
    ids.push_back(queue(message));
    message.ref_id = ids.front();
  }
  transaction.Commit();
  return ids;
}

}  // namespace orvalo
