// Our PNG codec (the Windows build's) against libpng (the Linux build's), on Linux where both
// are present: each reads what the other writes, and both read the committed fixtures alike.
#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "qvis/gdi/png_codec.h"
#include "qvis/gdi/png_io.h"

namespace qvis::gdi {
namespace {

std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(in)),
                                   std::istreambuf_iterator<char>());
}

std::string TempPath(const std::string& name) {
  return (std::filesystem::temp_directory_path() / ("qvis_codec_" + name)).string();
}

TEST(PngCodecLibpngTest, EveryFixtureDecodesAsLibpngDecodesIt) {
  int files = 0;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(std::string(QVIS_TEST_DATA_DIR))) {
    if (entry.path().extension() != ".png") continue;
    PixelImage ours;
    PixelImage theirs;
    const std::vector<std::uint8_t> bytes = ReadBytes(entry.path());
    ASSERT_TRUE(ReadPngImage(entry.path().string(), &theirs)) << entry.path();
    ASSERT_TRUE(DecodePng(bytes.data(), bytes.size(), &ours)) << entry.path();
    EXPECT_EQ(ours.width, theirs.width) << entry.path();
    EXPECT_EQ(ours.height, theirs.height) << entry.path();
    EXPECT_TRUE(ours.pixels == theirs.pixels) << entry.path();
    ++files;
  }
  EXPECT_GT(files, 10);
}

TEST(PngCodecLibpngTest, ReadsWhatLibpngWritesInEachForm) {
  const int w = 13, h = 7;
  std::vector<std::uint8_t> rgba(static_cast<std::size_t>(w) * h * 4);
  for (std::size_t i = 0; i < rgba.size(); ++i) rgba[i] = static_cast<std::uint8_t>(i * 7 + i / 13);
  struct Form {
    png_uint_32 format;
    int channels;
  };
  for (Form form : {Form{PNG_FORMAT_GRAY, 1}, Form{PNG_FORMAT_GA, 2}, Form{PNG_FORMAT_RGB, 3},
                    Form{PNG_FORMAT_RGBA, 4}}) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = w;
    image.height = h;
    image.format = form.format;
    const std::string path = TempPath("form.png");
    ASSERT_TRUE(png_image_write_to_file(&image, path.c_str(), 0, rgba.data(), 0, nullptr));
    png_image_free(&image);
    PixelImage ours;
    PixelImage theirs;
    const std::vector<std::uint8_t> bytes = ReadBytes(path);
    ASSERT_TRUE(DecodePng(bytes.data(), bytes.size(), &ours)) << form.format;
    ASSERT_TRUE(ReadPngImage(path, &theirs));
    EXPECT_TRUE(ours.pixels == theirs.pixels) << form.format;
    // And the samples are where the format puts them.
    const std::uint8_t* px = rgba.data() + (3 * w + 5) * form.channels;
    const std::uint32_t want = form.channels >= 3
                                   ? static_cast<std::uint32_t>(px[0]) << 16 | px[1] << 8 | px[2]
                                   : static_cast<std::uint32_t>(px[0]) * 0x010101u;
    EXPECT_EQ(ours.At(5, 3), want) << form.format;
    std::filesystem::remove(path);
  }
  // A palette image.
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = w;
  image.height = h;
  image.format = PNG_FORMAT_RGB_COLORMAP;
  image.colormap_entries = 4;
  const std::uint8_t colormap[12] = {0, 0, 0, 255, 0, 0, 0, 255, 0, 10, 20, 30};
  std::vector<std::uint8_t> indices(static_cast<std::size_t>(w) * h);
  for (std::size_t i = 0; i < indices.size(); ++i) indices[i] = static_cast<std::uint8_t>(i % 4);
  const std::string path = TempPath("palette.png");
  ASSERT_TRUE(png_image_write_to_file(&image, path.c_str(), 0, indices.data(), 0, colormap));
  png_image_free(&image);
  PixelImage ours;
  const std::vector<std::uint8_t> bytes = ReadBytes(path);
  ASSERT_TRUE(DecodePng(bytes.data(), bytes.size(), &ours));
  EXPECT_EQ(ours.At(3, 0), 0x0A141Eu);
  EXPECT_EQ(ours.At(1, 0), 0xFF0000u);
  std::filesystem::remove(path);
}

TEST(PngCodecLibpngTest, LibpngReadsWhatWeWrite) {
  std::vector<std::uint32_t> pixels(40 * 30);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint32_t>(i * 0x010305u);
  std::vector<std::uint8_t> png;
  ASSERT_TRUE(EncodePng(pixels.data(), 40, 30, 40, &png));
  const std::string path = TempPath("ours.png");
  {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
  }
  PixelImage theirs;
  ASSERT_TRUE(ReadPngImage(path, &theirs));
  ASSERT_EQ(theirs.width, 40);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    ASSERT_EQ(theirs.pixels[i], pixels[i] & 0xFFFFFFu) << i;
  }
  std::filesystem::remove(path);
}

TEST(PngCodecLibpngTest, LibpngReadsOurPaletteImages) {
  // A board picture: a background and three layer colours, at the fastest level.
  const std::uint32_t palette[4] = {0x102010u, 0xC83232u, 0x3232C8u, 0xF0F0F0u};
  std::vector<std::uint8_t> indices(33 * 17);
  for (std::size_t i = 0; i < indices.size(); ++i) indices[i] = static_cast<std::uint8_t>((i * 7 / 5) % 4);
  std::vector<std::uint8_t> png;
  ASSERT_TRUE(EncodeIndexedPng(indices.data(), 33, 17, palette, 4, &png, 1));
  const std::string path = TempPath("ours_indexed.png");
  {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
  }
  PixelImage theirs;
  ASSERT_TRUE(ReadPngImage(path, &theirs));
  ASSERT_EQ(theirs.width, 33);
  ASSERT_EQ(theirs.height, 17);
  for (std::size_t i = 0; i < indices.size(); ++i) {
    ASSERT_EQ(theirs.pixels[i], palette[indices[i]]) << i;
  }
  std::filesystem::remove(path);
  // No palette, too many colours or no pixels: nothing is written.
  EXPECT_FALSE(EncodeIndexedPng(indices.data(), 33, 17, palette, 0, &png));
  EXPECT_FALSE(EncodeIndexedPng(indices.data(), 33, 17, palette, 257, &png));
  EXPECT_FALSE(EncodeIndexedPng(indices.data(), 0, 17, palette, 4, &png));
}

}  // namespace
}  // namespace qvis::gdi
