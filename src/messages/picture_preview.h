#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvalo {

// The small picture that the compose page shows of a picture message's file.
struct PicturePreview {
  static constexpr std::size_t kSide = 48;  // pixels
  struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const Colour&) const = default;
  };

  std::array<Colour, 2> colours{};
  std::array<std::uint8_t, kSide * kSide> pixels{};  // 0 or 1, row by row from the top
};

// Decodes a GIF's first picture and squeezes it into the preview, whatever its proportions, taking
// the nearest pixel. A picture of two colours keeps them; any other becomes black and white, each
// pixel by itself.
//
// Nothing for bytes that are no sound GIF, or a picture of more than 16 million pixels. Memory for
// a row of the picture, whatever size it claims to have. Any thread.
std::optional<PicturePreview> DecodePicture(std::string_view bytes);

// The same of a file of at most 16 MB; nothing when it cannot be read.
std::optional<PicturePreview> ReadPicture(const std::string& path);

}  // namespace orvalo
