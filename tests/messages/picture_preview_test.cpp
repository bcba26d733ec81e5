#include "messages/picture_preview.h"

#include <gif_lib.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <functional>
#include <random>
#include <vector>

#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

using Colour = PicturePreview::Colour;
constexpr Colour kBlack{0, 0, 0}, kWhite{255, 255, 255}, kRed{255, 0, 0}, kBlue{0, 0, 200},
    kYellow{250, 250, 0};

// What is drawn: the entry of the colour map at a place.
using Drawing = std::function<int(int x, int y)>;

std::string MakeGif(int width, int height, const std::vector<Colour>& colours,
                    const Drawing& drawing, bool interlaced = false, int pictures = 1) {
  std::string bytes;
  const auto write = [](GifFileType* gif, const GifByteType* from, int length) {
    static_cast<std::string*>(gif->UserData)
        ->append(reinterpret_cast<const char*>(from), static_cast<std::size_t>(length));
    return length;
  };
  GifFileType* const gif = EGifOpen(&bytes, write, nullptr);
  ColorMapObject* const map = GifMakeMapObject(static_cast<int>(colours.size()), nullptr);
  for (std::size_t i = 0; i < colours.size(); ++i)
    map->Colors[i] = {colours[i].red, colours[i].green, colours[i].blue};
  EGifPutScreenDesc(gif, width, height, map->BitsPerPixel, 0, map);
  EGifPutComment(gif, "a comment before the picture");
  for (int picture = 0; picture < pictures; ++picture) {
    EGifPutImageDesc(gif, 0, 0, width, height, interlaced, nullptr);
    const std::vector<std::pair<int, int>> passes =
        interlaced ? std::vector<std::pair<int, int>>{{0, 8}, {4, 8}, {2, 4}, {1, 2}}
                   : std::vector<std::pair<int, int>>{{0, 1}};
    std::vector<GifPixelType> line(static_cast<std::size_t>(width));
    for (const auto& [first, step] : passes) {
      for (int y = first; y < height; y += step) {
        for (int x = 0; x < width; ++x)
          line[static_cast<std::size_t>(x)] =
              static_cast<GifPixelType>(picture == 0 ? drawing(x, y) : 0);
        EGifPutLine(gif, line.data(), width);
      }
    }
  }
  GifFreeMapObject(map);
  EGifCloseFile(gif, nullptr);
  return bytes;
}

TEST(PicturePreviewTest, SqueezesAnyPictureIntoTwoColours) {
  const Drawing left_top = [](int x, int y) { return x < 36 && y < 14 ? 1 : 0; };
  const struct {
    const char* what;
    std::string gif;
    Colour off, on;
    Drawing drawing;  // of the preview
  } cases[] = {
      {"one bit, its own colours", MakeGif(72, 28, {kRed, kBlue}, left_top), kRed, kBlue,
       [](int x, int y) { return x < 24 && y < 24 ? 1 : 0; }},
      {"interlaced", MakeGif(72, 28, {kBlack, kWhite}, left_top, true), kBlack, kWhite,
       [](int x, int y) { return x < 24 && y < 24 ? 1 : 0; }},
      {"the first of an animation", MakeGif(72, 28, {kBlack, kWhite}, left_top, false, 3), kBlack,
       kWhite, [](int x, int y) { return x < 24 && y < 24 ? 1 : 0; }},
      {"as it is", MakeGif(48, 48, {kBlack, kWhite}, [](int x, int y) { return (x + y) % 2; }),
       kBlack, kWhite, [](int x, int y) { return (x + y) % 2; }},
      {"colours to black and white, each by itself",
       MakeGif(96, 96, {kRed, kYellow, kBlue, kWhite}, [](int x, int) { return x / 24; }), kBlack,
       kWhite, [](int x, int) { return x / 12 % 2; }},
      {"a single pixel", MakeGif(1, 1, {kBlack, kWhite}, [](int, int) { return 1; }), kBlack,
       kWhite, [](int, int) { return 1; }},
      {"a wide one", MakeGif(1000, 3, {kBlack, kWhite}, [](int x, int) { return x >= 500; }),
       kBlack, kWhite, [](int x, int) { return x >= 24; }},
  };
  for (const auto& c : cases) {
    const auto preview = DecodePicture(c.gif);
    ASSERT_TRUE(preview) << c.what;
    EXPECT_EQ(preview->colours[0], c.off) << c.what;
    EXPECT_EQ(preview->colours[1], c.on) << c.what;
    std::string seen, wanted;
    for (int i = 0; i < 48 * 48; ++i) {
      seen += static_cast<char>('0' + preview->pixels[static_cast<std::size_t>(i)]);
      wanted += static_cast<char>('0' + c.drawing(i % 48, i / 48));
    }
    EXPECT_EQ(seen, wanted) << c.what;
  }
}

TEST(PicturePreviewTest, ShowsNothingOfWhatIsNoPicture) {
  const TemporaryFolder folder;
  const std::string good =
      MakeGif(72, 28, {kBlack, kWhite}, [](int x, int y) { return x * y % 2; });
  Spill(folder.File("good"), good);
  EXPECT_TRUE(ReadPicture(folder.File("good")));
  for (const auto& path : {std::string(), folder.File("none"), folder.path()})
    EXPECT_FALSE(ReadPicture(path)) << path;
  EXPECT_FALSE(DecodePicture("no picture at all"));
  EXPECT_FALSE(DecodePicture("\x89PNG\r\n\x1a\n"));
  // The pixels end well before the file does.
  for (std::size_t length = 0; length + 8 < good.size(); ++length)
    EXPECT_FALSE(DecodePicture(std::string_view(good).substr(0, length))) << length;

  const std::size_t place = good.find(',') + 5;  // of the picture's width and height
  rusage before{}, after{};
  getrusage(RUSAGE_SELF, &before);
  for (const std::string_view size :
       {"\x60\xea\x60\xea", "\xff\xff\xff\xff", "\0\0\x1c\0", "\x48\0\0\0", "\xff\xff\xf0\0"}) {
    std::string claims = good;
    claims.replace(place, 4, std::string(size.data(), 4));
    EXPECT_FALSE(DecodePicture(claims));
  }
  getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss,
            128 << 10);  // KB; the sanitizers keep what is freed
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string damaged = good;
    for (int i = 0; i < 3; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
    DecodePicture(damaged);
  }
}

}  // namespace
}  // namespace orvalo::test
