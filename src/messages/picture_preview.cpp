#include "messages/picture_preview.h"

#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/file.h"

namespace orvalo {

namespace {

constexpr std::uint64_t kLargestFile = 16u << 20;     // bytes
constexpr std::int64_t kLargestPicture = 16'000'000;  // pixels
constexpr std::size_t kSide = PicturePreview::kSide;

struct CloseGif {
  void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};
using Gif = std::unique_ptr<GifFileType, CloseGif>;

// Takes bytes off the front of the std::string_view that the file was opened with.
int ReadBytes(GifFileType* gif, GifByteType* to, int length) {
  auto& bytes = *static_cast<std::string_view*>(gif->UserData);
  const std::size_t count = std::min(bytes.size(), static_cast<std::size_t>(std::max(length, 0)));
  std::memcpy(to, bytes.data(), count);
  bytes.remove_prefix(count);
  return static_cast<int>(count);
}

// Moves to the first picture, its description read; false when there is none.
bool FindPicture(GifFileType* gif) {
  for (;;) {
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    if (DGifGetRecordType(gif, &type) == GIF_ERROR) return false;
    if (type == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(gif) != GIF_ERROR;
    if (type != EXTENSION_RECORD_TYPE) return false;
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return false;
    while (block != nullptr) {
      if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return false;
    }
  }
}

// The rows of an interlaced picture in the order in which the file holds them.
std::vector<int> RowOrder(int height, bool interlaced) {
  struct Pass {
    int first, step;
  };
  constexpr Pass kPasses[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
  constexpr Pass kPlain[] = {{0, 1}};
  std::vector<int> rows;
  rows.reserve(static_cast<std::size_t>(height));
  const auto add = [&](const Pass& pass) {
    for (int row = pass.first; row < height; row += pass.step) rows.push_back(row);
  };
  if (interlaced) {
    std::for_each(std::begin(kPasses), std::end(kPasses), add);
  } else {
    std::for_each(std::begin(kPlain), std::end(kPlain), add);
  }
  return rows;
}

// The colours of the two-colour preview, and which of them stands for each of the picture's.
class Palette {
 public:
  explicit Palette(const ColorMapObject& map) : entries_(static_cast<std::size_t>(map.ColorCount)) {
    const bool two = map.ColorCount == 2;
    colours_ = {PicturePreview::Colour{0, 0, 0}, PicturePreview::Colour{255, 255, 255}};
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      const GifColorType& colour = map.Colors[i];
      const bool light = colour.Red + colour.Green + colour.Blue > 3 * 255 / 2;
      entries_[i] = two ? i != 0 : light;
      if (two) colours_[i] = {colour.Red, colour.Green, colour.Blue};
    }
  }

  const std::array<PicturePreview::Colour, 2>& colours() const { return colours_; }
  // Pixels may name colours that the map does not have.
  std::uint8_t Of(GifPixelType pixel) const { return pixel < entries_.size() && entries_[pixel]; }

 private:
  std::array<PicturePreview::Colour, 2> colours_;
  std::vector<bool> entries_;
};

}  // namespace

std::optional<PicturePreview> DecodePicture(std::string_view bytes) {
  const Gif gif(DGifOpen(&bytes, &ReadBytes, nullptr));
  if (gif == nullptr || !FindPicture(gif.get())) return std::nullopt;
  const GifImageDesc& picture = gif->Image;
  const ColorMapObject* const map = picture.ColorMap != nullptr ? picture.ColorMap : gif->SColorMap;
  if (map == nullptr || picture.Width <= 0 || picture.Height <= 0 ||
      std::int64_t{picture.Width} * picture.Height > kLargestPicture)
    return std::nullopt;

  const Palette palette(*map);
  PicturePreview preview;
  preview.colours = palette.colours();
  const auto width = static_cast<std::size_t>(picture.Width);
  const auto height = static_cast<std::size_t>(picture.Height);
  std::vector<GifPixelType> line(width);
  for (const int row : RowOrder(picture.Height, picture.Interlace)) {
    if (DGifGetLine(gif.get(), line.data(), picture.Width) == GIF_ERROR) return std::nullopt;
    // The preview's rows whose nearest row this is: none, or several of a low picture.
    const auto source = static_cast<std::size_t>(row);
    for (std::size_t y = (source * kSide + height - 1) / height;
         y < kSide && y * height / kSide == source; ++y) {
      for (std::size_t x = 0; x < kSide; ++x)
        preview.pixels[y * kSide + x] = palette.Of(line[x * width / kSide]);
    }
  }
  return preview;
}

std::optional<PicturePreview> ReadPicture(const std::string& path) {
  const auto bytes = platform::ReadFile(path, kLargestFile);
  return bytes ? DecodePicture(*bytes) : std::nullopt;
}

}  // namespace orvalo
