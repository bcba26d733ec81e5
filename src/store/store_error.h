#pragma once
#include <stdexcept>
#include <string>

namespace orvalo {

class Texts;

// Why a store refuses. The values are the ids of the texts that say so and what to do about it;
// they get the file's path (%1) and the particulars (%2).
enum class StoreProblem {
  kOther = 0,  // the error's own words tell all
  kDiskFull = 2180,
  kNotWritable = 2181,
  kInUse = 2182,
  kDamaged = 2183,
  kNoDatabase = 2184,
  kNotOpened = 2185,
  kTooLong = 2186,
  kUnknown = 2187,
  kNewer = 2188,
  kForeign = 2189,
};

// The disk or the file refused a write (full, read-only, damaged). What the operation was doing has
// been undone.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  // what() is then in the program's own language.
  StoreError(StoreProblem problem, const std::string& path, const std::string& particulars);

  StoreProblem problem() const { return problem_; }
  // For the operator, in the language of `texts`.
  std::string InWords(const Texts& texts) const;

 private:
  StoreProblem problem_ = StoreProblem::kOther;
  std::string path_, particulars_;
};

}  // namespace orvalo
