#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace orvalo {

// What the gateway says of one recipient of a batch chunk.
struct BatchEntry {
  bool success = false;
  std::string number;
  std::string text;  // the gateway's id, or the error in its own words
};

// Reads the reply to a batch chunk. Tokens are separated by spaces and line feeds; a token that
// begins with "ID:" starts a success, with "ERR:" an error (any case), and either ends the entry
// before it; after "To:" the next token is the number, kept until the next "To:"; all other tokens
// are the entry's text, joined by single spaces. Never fails: text outside an entry is passed over,
// and a reply that breaks off ends its last entry.
std::vector<BatchEntry> ParseBatchReply(std::string_view reply);

}  // namespace orvalo
