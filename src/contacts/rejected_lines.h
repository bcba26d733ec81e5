#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_error.h"

namespace orvalo {

class ExportPlaces;
class Texts;

// Why a line of an import file was not taken.
enum class RejectReason : std::uint8_t {
  kNoMobile,      // its mobile field is empty
  kDuplicate,     // its number is in the address book already
  kEndedImport,   // it does not reach the mobile column
  kBehindTheEnd,  // it stands behind a line that ended the import
  kOpenQuote,     // a quotation mark opens a field and nothing closes it
};
inline constexpr std::size_t kRejectReasonCount = 5;

// The lines of an import file that were not taken, for the operator to look at and to mend. One
// thread.
class RejectedLines {
 public:
  // Line ends within `line` become blanks.
  void Add(std::uint64_t number, RejectReason reason, std::string_view line);
  // Forgets the lines behind an end of the file that is made of blank lines only: nothing was lost.
  void DropBlankEnd();

  std::size_t Count() const { return lines_.size(); }
  std::size_t Count(RejectReason reason) const;

  // A text file: a header, then "line number<TAB>reason<TAB>line" for each, CR LF. Replaces what is
  // there when all is written; else says why it is not, and what was there is there still.
  platform::FileError Save(const std::string& path, const Texts& texts,
                           const ExportPlaces& places) const;

 private:
  struct Line {
    std::uint64_t number;
    std::size_t end;  // in text_; it begins where the one before ends
    RejectReason reason;
  };
  std::string_view TextAt(std::size_t i) const;

  std::vector<Line> lines_;
  std::string text_;
};

}  // namespace orvalo
