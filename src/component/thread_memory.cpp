#include "component/thread_memory.h"

#include <list>
#include <utility>

namespace orvalo::component {

ThreadMemory& ThreadMemories::Mine() {
  // A list, so that a reference handed out stays valid while others come and go.
  thread_local std::list<std::pair<std::weak_ptr<int>, ThreadMemory>> memories;
  for (auto& [owner, memory] : memories) {
    if (!owner.owner_before(owner_) && !owner_.owner_before(owner)) return memory;
  }
  memories.remove_if([](const auto& entry) { return entry.first.expired(); });
  return memories.emplace_back(owner_, ThreadMemory{}).second;
}

}  // namespace orvalo::component
