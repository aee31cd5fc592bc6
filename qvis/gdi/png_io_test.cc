#include "qvis/gdi/png_io.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "qvis/compat/exceptions.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {
namespace {

std::string TempPath(const std::string& name) {
  return (std::filesystem::temp_directory_path() / ("qvis_png_" + name)).string();
}

std::vector<char> ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<char>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const std::vector<char>& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

PixelImage Gradient(int w, int h) {
  PixelImage image;
  image.width = w;
  image.height = h;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      image.pixels.push_back(static_cast<std::uint32_t>((x * 37 + y) & 255) << 16 |
                             static_cast<std::uint32_t>((y * 11) & 255) << 8 |
                             static_cast<std::uint32_t>((x ^ y) & 255));
    }
  }
  return image;
}

TEST(PngIoTest, RoundTripKeepsEveryPixelAndDropsTheHighByte) {
  PixelImage image = Gradient(37, 13);
  image.pixels[5] |= 0xAB000000u;  // the unused byte must not leak into the file
  const std::string path = TempPath("roundtrip.png");
  ASSERT_TRUE(WritePngImage(image, path));
  PixelImage back;
  ASSERT_TRUE(ReadPngImage(path, &back));
  ASSERT_EQ(back.width, 37);
  ASSERT_EQ(back.height, 13);
  for (int y = 0; y < 13; ++y) {
    for (int x = 0; x < 37; ++x) ASSERT_EQ(back.At(x, y), image.At(x, y)) << x << "," << y;
  }
  EXPECT_EQ(back.pixels[5] >> 24, 0u);
  std::remove(path.c_str());
}

TEST(PngIoTest, WriteRowsHonoursTheStride) {
  // A 3x2 window out of a 5-wide buffer.
  std::vector<std::uint32_t> buffer = {1, 2, 3, 99, 99, 4, 5, 6, 99, 99};
  const std::string path = TempPath("stride.png");
  ASSERT_TRUE(WritePngRows(buffer.data(), 3, 2, 5, path));
  PixelImage back;
  ASSERT_TRUE(ReadPngImage(path, &back));
  EXPECT_EQ(back.pixels, (std::vector<std::uint32_t>{1, 2, 3, 4, 5, 6}));
  std::remove(path.c_str());
}

TEST(PngIoTest, DegenerateWritesFail) {
  std::uint32_t one = 0;
  const std::string path = TempPath("never.png");
  EXPECT_FALSE(WritePngRows(nullptr, 1, 1, 1, path));
  EXPECT_FALSE(WritePngRows(&one, 0, 1, 1, path));
  EXPECT_FALSE(WritePngRows(&one, 1, -1, 1, path));
  EXPECT_FALSE(WritePngRows(&one, 2, 1, 1, path));  // stride shorter than a row
  EXPECT_THROW(WritePngRows(&one, 1, 1, 1, "/nonexistent-dir/x.png"), CFileException);
  PixelImage inconsistent;
  inconsistent.width = 4;
  inconsistent.height = 4;  // but no pixels
  EXPECT_FALSE(WritePngImage(inconsistent, path));
  EXPECT_FALSE(WritePng(nullptr, path.c_str()));
  EXPECT_EQ(ReadPng(nullptr), nullptr);
}

TEST(PngIoTest, DamagedFilesAreRejectedWithoutCrashing) {
  const std::string good = TempPath("good.png");
  ASSERT_TRUE(WritePngImage(Gradient(20, 20), good));
  const std::vector<char> bytes = ReadBytes(good);
  ASSERT_GT(bytes.size(), 60u);
  const std::string bad = TempPath("bad.png");
  PixelImage image;

  EXPECT_FALSE(ReadPngImage(TempPath("does-not-exist.png"), &image));
  EXPECT_TRUE(image.pixels.empty());

  // Truncated inside the signature, the header and the image data. (A file that loses only
  // its end marker still holds the whole image and may be read.)
  for (std::size_t n : std::initializer_list<std::size_t>{0, 7, 8, 20, 33, 40, bytes.size() / 2,
                                                          bytes.size() - 17}) {
    WriteBytes(bad,
               std::vector<char>(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n)));
    EXPECT_FALSE(ReadPngImage(bad, &image)) << "truncated to " << n;
    EXPECT_EQ(image.width, 0);
  }
  // A header that claims an enormous image (IHDR width at offset 16) is refused up front.
  std::vector<char> huge = bytes;
  huge[16] = 0x00;
  huge[17] = 0x10;  // width 0x0010xxxx > kMaxPngSide
  WriteBytes(bad, huge);
  EXPECT_FALSE(ReadPngImage(bad, &image));
  EXPECT_EQ(ReadPng(bad.c_str()), nullptr);

  // Random corruption of the body: either a clean failure or a complete image of the size.
  std::mt19937 rng(1234);
  for (int round = 0; round < 200; ++round) {
    std::vector<char> damaged = bytes;
    for (int k = 0; k < 4; ++k) damaged[rng() % damaged.size()] = static_cast<char>(rng());
    WriteBytes(bad, damaged);
    if (ReadPngImage(bad, &image)) {
      EXPECT_EQ(image.pixels.size(), static_cast<std::size_t>(image.width) * image.height);
    } else {
      EXPECT_TRUE(image.pixels.empty());
    }
  }
  std::remove(good.c_str());
  std::remove(bad.c_str());
}

TEST(PngIoTest, BitmapsRoundTripThroughFiles) {
  HBITMAP bitmap = CreateBitmap32(6, 4);
  BitmapView view = BitmapPixels(bitmap);
  ASSERT_NE(view.bits, nullptr);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 6; ++x) view.Row32(y)[x] = 0x010203u * static_cast<std::uint32_t>(x + 10 * y);
  }
  const std::string path = TempPath("bitmap.png");
  ASSERT_TRUE(WritePng(bitmap, path.c_str()));
  HBITMAP back = ReadPng(path.c_str());
  BitmapView bview = BitmapPixels(back);
  ASSERT_NE(bview.bits, nullptr);
  ASSERT_EQ(bview.width, 6);
  ASSERT_EQ(bview.height, 4);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 6; ++x) EXPECT_EQ(bview.Row32(y)[x] & 0xFFFFFFu, view.Row32(y)[x]);
  }
  DeleteObject(back);

  // A monochrome bitmap is written black and white, most significant bit leftmost.
  const BYTE bits[4] = {0xA0, 0x00, 0x40, 0x00};  // rows padded to 16 bits
  HBITMAP mono = CreateBitmap(3, 2, 1, 1, bits);
  ASSERT_TRUE(WritePng(mono, path.c_str()));
  PixelImage image;
  ASSERT_TRUE(ReadPngImage(path, &image));
  EXPECT_EQ(image.pixels, (std::vector<std::uint32_t>{0xFFFFFF, 0, 0xFFFFFF, 0, 0xFFFFFF, 0}));
  DeleteObject(mono);
  DeleteObject(bitmap);
  std::remove(path.c_str());
}

}  // namespace
}  // namespace qvis::gdi
