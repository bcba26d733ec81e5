#include "gateway/batch_reply.h"

#include <optional>

#include "platform/collation.h"

namespace orvalo {

namespace {

constexpr std::string_view kSeparators = " \n";

// The next token, or nothing at the end.
std::optional<std::string_view> TakeToken(std::string_view* rest) {
  const std::size_t begin = rest->find_first_not_of(kSeparators);
  if (begin == std::string_view::npos) return std::nullopt;
  rest->remove_prefix(begin);
  const std::string_view token = rest->substr(0, rest->find_first_of(kSeparators));
  rest->remove_prefix(token.size());
  return token;
}

bool BeginsWithWord(std::string_view token, std::string_view word) {
  return token.size() >= word.size() &&
         platform::EqualNoCaseAscii(token.substr(0, word.size()), word);
}

class BatchReplyReader {
 public:
  std::vector<BatchEntry> Read(std::string_view reply) {
    while (const auto token = TakeToken(&reply)) {
      if (BeginsWithWord(*token, "To:")) {
        const auto number = TakeToken(&reply);
        if (!number) break;
        number_ = *number;
      } else if (BeginsWithWord(*token, "ERR:")) {
        Begin(false);
      } else if (BeginsWithWord(*token, "ID:")) {
        Begin(true);
      } else if (current_) {
        if (!current_->text.empty()) current_->text += ' ';
        current_->text += *token;
      }
    }
    End();
    return std::move(entries_);
  }

 private:
  void Begin(bool success) {
    End();
    current_ = BatchEntry{success, {}, {}};
  }
  void End() {
    if (!current_) return;
    current_->number = number_;
    entries_.push_back(std::move(*current_));
    current_.reset();
  }

  std::vector<BatchEntry> entries_;
  std::optional<BatchEntry> current_;
  std::string number_;
};

}  // namespace

std::vector<BatchEntry> ParseBatchReply(std::string_view reply) {
  return BatchReplyReader().Read(reply);
}

}  // namespace orvalo
