#pragma once
#include <stdexcept>

namespace orvalo {

// The disk or the file refused a write (full, read-only, damaged). What the operation was doing has
// been undone.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace orvalo
