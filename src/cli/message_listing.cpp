#include "cli/message_listing.h"

#include "app/startup/program.h"
#include "gateway/message_submissions.h"
#include "platform/code_page.h"
#include "store/send_journal.h"

namespace orvalo::cli {

namespace {

constexpr std::size_t kIdWidth = 6;
constexpr std::size_t kTimeWidth = 16;
constexpr std::size_t kRecipientWidth = 24;
constexpr std::size_t kStatusWidth = 26;
constexpr std::size_t kChargeWidth = 7;
constexpr std::size_t kMessageWidth = 60;
constexpr int kTimeFormatId = 1033;

// One line of a list shows the beginning; the details of a message show all of it.
std::string Shortened(std::string_view text, std::size_t width) {
  if (platform::CountCharacters(text) <= width) return std::string(text);
  return std::string(platform::FirstCharacters(text, width - 1)) + "…";
}

}  // namespace

MessageListing::MessageListing(const Context& context, bool reasons)
    : program_(context.program), reasons_(reasons) {
  if (context.json) {
    json_.emplace(context.out);
    return;
  }
  const Texts& texts = program_.GetTexts();
  std::vector<Table::Column> columns = {{"ID", kIdWidth, true},
                                        {texts.Load(1408), kTimeWidth},
                                        {texts.Load(1409), kRecipientWidth},
                                        {texts.Load(1410), kStatusWidth},
                                        {texts.Load(1423), kChargeWidth, true},
                                        {texts.Load(1411), reasons ? kMessageWidth : 0}};
  if (reasons) columns.push_back({"Reason", 0});
  table_.emplace(context.out, columns);
}

void MessageListing::Add(const MessageRow& row) {
  if (json_) {
    Json message = MessageJson(program_, row);
    if (reasons_) message["Reason"] = ReasonOf(row);
    json_->Add(message);
  } else {
    std::vector<std::string> cells = {std::to_string(row.id),
                                      MessageTimeText(program_, row.time),
                                      Shortened(row.to_info, kRecipientWidth),
                                      program_.GetStatusNames().Name(row.stat),
                                      row.charge,
                                      Shortened(row.msg, kMessageWidth)};
    if (reasons_) cells.push_back(ReasonOf(row));
    table_->Add(cells);
  }
}

std::string MessageListing::ReasonOf(const MessageRow& row) const {
  if (row.stat != static_cast<std::int32_t>(SmsStatus::kProcessing)) return row.reason;
  const auto entry = SendJournal(program_.GetDatabase()).Find(row.id);
  if (!entry) return row.reason;
  const std::string progress = std::to_string(CountAnswered(*entry)) + " of " +
                               std::to_string(entry->recipients.size()) + " answered";
  return entry->since == kSendingStopped
             ? "Stopped, but the gateway is still to be asked: " + progress
             : "Waits for the gateway: " + progress;
}

void MessageListing::End() {
  if (json_) json_->End();
}

std::string MessageTimeText(Program& program, std::int32_t time) {
  const platform::LocalTime local = program.GetClock().ToLocal(time);
  return program.GetTexts()
      .Format(kTimeFormatId, {local.day, local.month, local.year, local.hour, local.minute})
      .value_or(std::to_string(time));
}

}  // namespace orvalo::cli
