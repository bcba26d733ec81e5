#include "contacts/rejected_lines.h"

#include <algorithm>

#include "app/export_places.h"
#include "app/texts.h"
#include "platform/output_file.h"

namespace orvalo {

namespace {

constexpr int kRejectedHeaderId = 2010;
constexpr std::array<int, kRejectReasonCount> kReasonIds{2011, 2012, 2013, 2014, 2315};

}  // namespace

void RejectedLines::Add(std::uint64_t number, RejectReason reason, std::string_view line) {
  text_ += line;
  const auto added = text_.end() - static_cast<std::ptrdiff_t>(line.size());
  std::replace_if(
      added, text_.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
  lines_.push_back({number, text_.size(), reason});
}

std::string_view RejectedLines::TextAt(std::size_t i) const {
  const std::size_t begin = i == 0 ? 0 : lines_[i - 1].end;
  return std::string_view(text_).substr(begin, lines_[i].end - begin);
}

void RejectedLines::DropBlankEnd() {
  while (!lines_.empty() && lines_.back().reason >= RejectReason::kEndedImport &&
         TextAt(lines_.size() - 1).find_first_not_of(" \t\r\n") == std::string_view::npos) {
    lines_.pop_back();
  }
}

std::size_t RejectedLines::Count(RejectReason reason) const {
  return static_cast<std::size_t>(std::count_if(
      lines_.begin(), lines_.end(), [reason](const Line& line) { return line.reason == reason; }));
}

platform::FileError RejectedLines::Save(const std::string& path, const Texts& texts,
                                        const ExportPlaces& places) const {
  std::array<std::string, kRejectReasonCount> reasons;
  for (std::size_t i = 0; i < reasons.size(); ++i) reasons[i] = texts.Load(kReasonIds[i]);
  std::string bytes = texts.LoadOrEmpty(kRejectedHeaderId);
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    bytes.append(std::to_string(lines_[i].number)).append("\t");
    bytes.append(reasons[static_cast<std::size_t>(lines_[i].reason)]).append("\t");
    bytes.append(TextAt(i)).append("\r\n");
  }
  platform::OutputFile file(places.PathOf(path), places.Own());
  file.Write(bytes);
  file.Commit();
  return file.Error();
}

}  // namespace orvalo
