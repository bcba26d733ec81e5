#pragma once
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/smpp_stand_in.h"

namespace orvalo::test {

// One message of each kind that a client offers, each to a number of its own.
struct MessageKind {
  std::string number;
  const char* word;  // the type at the command line
  const char* name;  // and in the window
  std::string text;  // of a vCard: what is in its file
};

inline std::vector<MessageKind> MessageKinds() {
  std::string text;
  for (int i = 0; i < 50; ++i) text += "part " + std::to_string(i);
  return {{"27820000001", "text", "Text", "Bill: 5 €"},
          {"27820000002", "text", "Text", text},
          {"27820000003", "unicode", "Unicode", "Привет 😀"},
          {"27820000004", "flash", "Flash", "Fire!"},
          {"27820000005", "vcard", "Nokia vCard",
           "BEGIN:VCARD\r\nN:Möller;Ann\r\nTEL:+27821110001\r\nEND:VCARD\r\n"}};
}

// They have arrived as they must, field by field, the second in parts of 153 characters.
inline void ExpectMessageKinds(const SmppStandIn& network) {
  const auto kinds = MessageKinds();
  auto arrived = ArrivedByNumber(network);
  const struct {
    int esm_class, data_coding;
    std::string bytes;
  } expected[] = {
      {3, 0x00, "Bill: 5 \x1b\x65"},
      {0x43, 0x00, kinds[1].text},
      {3, 0x08,
       std::string("\x04\x1f\x04\x40\x04\x38\x04\x32\x04\x35\x04\x42\0\x20\xd8\x3d\xde\0", 18)},
      {3, 0xF0, "Fire!"},
      {0x43, 0xF5, std::string("\x06\x05\x04\x23\xf4\0\0", 7) + kinds[4].text},
  };
  constexpr std::size_t kLong = 1;
  for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
    const auto& parts = arrived[kinds[kind].number];
    ASSERT_EQ(parts.size(), kind == kLong ? kinds[kind].text.size() / 153 + 1 : 1u)
        << kinds[kind].number;
    std::string together;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      EXPECT_EQ(parts[i].esm_class, expected[kind].esm_class) << parts[i].dest;
      EXPECT_EQ(parts[i].data_coding, expected[kind].data_coding) << parts[i].dest;
      EXPECT_EQ(parts[i].source, "Orvalo");
      if (kind == kLong) {
        const char header[] = {
            5, 0, 3, parts[i].bytes[3], static_cast<char>(parts.size()), static_cast<char>(i + 1)};
        EXPECT_EQ(parts[i].bytes.substr(0, 6), std::string(header, 6));
      }
      together += parts[i].bytes.substr(kind == kLong ? 6 : 0);
    }
    EXPECT_EQ(together, expected[kind].bytes) << kinds[kind].number;
  }
}

}  // namespace orvalo::test
