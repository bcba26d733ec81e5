#include "cli/json_output.h"

#include <ostream>
#include <utility>

#include "app/startup/program.h"
#include "cli/command.h"
#include "platform/terminal.h"

namespace orvalo::cli {

namespace {

std::string JsonText(const Json& value) {
  return platform::PrintableJson(value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

Json MessageJson(const Program& program, const MessageRow& row) {
  return {
      {"ID", row.id},
      {"Time", row.time},
      {"Stat", row.stat},
      {"StatName", program.GetStatusNames().Name(row.stat)},
      {"Type", row.type},
      {"TypeName", program.GetTypeNames().Name(row.type)},
      {"RefID", row.ref_id},
      {"To", row.to},
      {"ToInfo", row.to_info},
      {"Msg", row.msg},
      {"ApiMsgID", row.api_msg_id},
      {"SavedStat", row.saved_stat},
      {"SenderID", row.sender_id},
      {"Delay", row.delay},
      {"QueryTime", row.query_time},
      {"StatQryTm", row.stat_qry_tm},
      {"Charge", row.charge},
      {"Number", row.number},
      {"Reason", row.reason},
  };
}

Json ContactJson(const ContactRow& contact, const std::vector<std::string>& groups) {
  return {
      {"CID", contact.cid},     {"Name", contact.name},     {"Surname", contact.surname},
      {"Title", contact.title}, {"Custom", contact.custom}, {"Mobile", contact.mobile},
      {"Groups", groups},
  };
}

Json GroupJson(const GroupRow& group, std::int32_t members) {
  return {{"GID", group.gid}, {"Name", group.name}, {"Members", members}};
}

void JsonArray::Add(const Json& value) {
  out_ << (std::exchange(empty_, false) ? "[\n " : ",\n ") << JsonText(value);
}

void JsonArray::End() { out_ << (empty_ ? "[]\n" : "\n]\n"); }

void PrintJson(std::ostream& out, const Json& value) { out << JsonText(value) << '\n'; }

void PrintIds(const Context& context, const char* name, const std::vector<std::int32_t>& ids) {
  if (!context.json) return;
  JsonArray list(context.out);
  for (const std::int32_t id : ids) list.Add({{name, id}});
  list.End();
}

}  // namespace orvalo::cli
