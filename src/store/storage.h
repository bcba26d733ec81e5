#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "store/connection.h"

namespace orvalo {

// The connections of all threads to one file. Any thread; a thread that ends leaves its connection
// to the next new one, and destruction (when no other thread uses it any more) closes them all.
class Storage {
 public:
  // Opens the first connection, the caller's; throws StoreError. With kReadWrite a missing file is
  // created.
  Storage(const std::string& path, StoreAccess access);
  ~Storage();
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;

  Connection& Here();  // the calling thread's
  std::uint64_t ContactChanges() const;

  struct Shared;  // what the threads share; of storage.cpp only

 private:
  std::shared_ptr<Shared> shared_;
  std::uint64_t generation_;  // tells this storage from an earlier one at the same address
};

}  // namespace orvalo
