#include "app/file_texts.h"

#include "app/data_file.h"
#include "app/texts.h"
#include "platform/message_box.h"

namespace orvalo {
namespace {

constexpr int kSystemSaysId = 2160;
constexpr int kLostAtEndId = 2171;
constexpr int kSettingsCaptionId = 2172;
constexpr int kTriedAgainId = 2330;
constexpr int kSettingsDiskFullId = 2331;
constexpr int kSettingsNotAllowedId = 2332;

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

// `id`, unless the system's own words say it.
std::string Append(const std::string& text, int id, const platform::FileError& error,
                   const Texts& texts) {
  const std::string reason = id == kSystemSaysId
                                 ? texts.Format(id, {error.detail}).value_or(error.detail)
                                 : texts.LoadOrEmpty(id);
  return reason.empty() ? text : text + "\n\n" + reason;
}

// The file's name and folder are not the operator's to choose, unlike those of an export.
int SettingsTextIdOf(platform::FileError::Kind kind) {
  using Kind = platform::FileError::Kind;
  if (kind == Kind::kFull) return kSettingsDiskFullId;
  return kind == Kind::kNotAllowed ? kSettingsNotAllowedId : kSystemSaysId;
}

}  // namespace

std::string WithReason(const std::string& text, const platform::FileError& error,
                       const Texts& texts) {
  return error ? Append(text, TextIdOf(error.kind), error, texts) : text;
}

void TellSettingsNotSaved(const DataFile& file, bool at_end, const Texts& texts,
                          platform::MessageBoxes& boxes) {
  const platform::FileError& error = file.Error();
  std::string text =
      texts.Format(at_end ? kLostAtEndId : kTriedAgainId, {file.path()}).value_or(file.path());
  if (error) text = Append(text, SettingsTextIdOf(error.kind), error, texts);
  boxes.Show(text, texts.Load(kSettingsCaptionId), platform::BoxIcon::kStop);
}

}  // namespace orvalo
