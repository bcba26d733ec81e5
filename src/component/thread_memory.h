#pragma once
#include <memory>
#include <string>
#include <utility>

#include "platform/http.h"

namespace orvalo::component {

// What the component remembers for one calling thread. The client calls the same instance from two
// threads and reads the error of a call afterwards, in a call of its own: each thread must find
// the error of its own last call there.
struct ThreadMemory {
  int error = 0;
  std::string reason;  // of that error, in words
  platform::HttpObstacle obstacle = platform::HttpObstacle::kNotKnown;

  // What EncodeToUnicode returned last. A text of hexadecimal digits is taken as encoded only if it
  // is exactly this one: an operator's text may happen to look like hexadecimal digits.
  std::u16string encoded;

  // The key that this thread put for its next submission, which uses it up; "": it draws one.
  std::string submission_key;

  void Note(int last_error, std::string why = {},
            platform::HttpObstacle what = platform::HttpObstacle::kNotKnown) {
    error = last_error;
    reason = std::move(why);
    obstacle = what;
  }
};

// One ThreadMemory for each pair of owner and thread, created on first use. It goes away with the
// thread, or when the thread next meets a new owner after this one has gone. Any thread.
class ThreadMemories {
 public:
  ThreadMemory& Mine();

 private:
  std::shared_ptr<int> owner_ = std::make_shared<int>(0);
};

}  // namespace orvalo::component
