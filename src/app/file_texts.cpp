#include "app/file_texts.h"

#include "app/texts.h"

namespace orvalo {
namespace {

constexpr int kSystemSaysId = 2160;

int TextIdOf(platform::FileError::Kind kind) {
  using Kind = platform::FileError::Kind;
  switch (kind) {
    case Kind::kOwn:
      return 2161;
    case Kind::kFolder:
      return 2162;
    case Kind::kMissing:
      return 2163;
    case Kind::kNotAllowed:
      return 2164;
    case Kind::kFull:
    case Kind::kTooLarge:
      return 2165;
    case Kind::kNoReader:
      return 2166;
    case Kind::kNotAFile:
      return 2167;
    case Kind::kNone:
    case Kind::kOther:
      break;
  }
  return kSystemSaysId;
}

}  // namespace

std::string WithReason(const std::string& text, const platform::FileError& error,
                       const Texts& texts) {
  if (!error) return text;
  const int id = TextIdOf(error.kind);
  const std::string reason = id == kSystemSaysId
                                 ? texts.Format(id, {error.detail}).value_or(error.detail)
                                 : texts.LoadOrEmpty(id);
  return reason.empty() ? text : text + "\n\n" + reason;
}

}  // namespace orvalo
