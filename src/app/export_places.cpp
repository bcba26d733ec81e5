#include "app/export_places.h"

#include <array>
#include <utility>

#include "platform/file.h"

namespace orvalo {

ExportPlaces::ExportPlaces(const std::string& data_folder, std::string relative_to)
    : relative_to_(std::move(relative_to)) {
  own_.folders = {data_folder, data_folder + "/temp", data_folder + "/vCards"};
  // The journals stand beside the database, wherever a link to it leads.
  const std::string database = platform::FollowLinks(data_folder + "/SMS.db");
  constexpr std::array kJournals = {"-wal", "-shm", "-journal"};
  for (const char* journal : kJournals) own_.files.push_back(database + journal);
}

std::string ExportPlaces::PathOf(const std::string& name) const {
  if (relative_to_.empty() || name.empty() || name.starts_with('/')) return name;
  return relative_to_ + "/" + name;
}

}  // namespace orvalo
