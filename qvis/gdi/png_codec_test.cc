#include "qvis/gdi/png_codec.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <vector>

namespace qvis::gdi {
namespace {

void PutU32(std::vector<std::uint8_t>* out, std::uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) out->push_back(static_cast<std::uint8_t>(v >> shift));
}

void Chunk(std::vector<std::uint8_t>* png, const char* type, const std::vector<std::uint8_t>& body) {
  PutU32(png, static_cast<std::uint32_t>(body.size()));
  std::vector<std::uint8_t> typed(type, type + 4);
  typed.insert(typed.end(), body.begin(), body.end());
  png->insert(png->end(), typed.begin(), typed.end());
  PutU32(png, static_cast<std::uint32_t>(crc32(0, typed.data(), static_cast<uInt>(typed.size()))));
}

// MakePng builds a file by hand from already filtered scanlines (each starting with its filter
// byte), so the decoder is checked against the format itself rather than against our encoder.
std::vector<std::uint8_t> MakePng(std::uint32_t w, std::uint32_t h, int depth, int color_type,
                                  int interlace, const std::vector<std::uint8_t>& scanlines,
                                  const std::vector<std::uint8_t>& palette = {}) {
  std::vector<std::uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  std::vector<std::uint8_t> ihdr;
  PutU32(&ihdr, w);
  PutU32(&ihdr, h);
  ihdr.insert(ihdr.end(), {static_cast<std::uint8_t>(depth), static_cast<std::uint8_t>(color_type),
                           0, 0, static_cast<std::uint8_t>(interlace)});
  Chunk(&png, "IHDR", ihdr);
  if (!palette.empty()) Chunk(&png, "PLTE", palette);
  uLongf size = compressBound(static_cast<uLong>(scanlines.size()));
  std::vector<std::uint8_t> packed(size);
  compress(packed.data(), &size, scanlines.data(), static_cast<uLong>(scanlines.size()));
  packed.resize(size);
  // Two IDAT chunks: the stream may be split anywhere.
  const std::size_t half = packed.size() / 2;
  Chunk(&png, "IDAT", std::vector<std::uint8_t>(packed.begin(), packed.begin() + half));
  Chunk(&png, "IDAT", std::vector<std::uint8_t>(packed.begin() + half, packed.end()));
  Chunk(&png, "IEND", {});
  return png;
}

PixelImage Decode(const std::vector<std::uint8_t>& png) {
  PixelImage image;
  EXPECT_TRUE(DecodePng(png.data(), png.size(), &image));
  return image;
}

TEST(PngCodecTest, DecodesPackedGreyPaletteAndSixteenBitSamples) {
  // 1-bit grey, 10 x 2: bits 1011001110 / 0100110001 (rows padded to whole bytes).
  PixelImage grey = Decode(MakePng(10, 2, 1, 0, 0, {0, 0xB3, 0x80, 0, 0x4C, 0x40}));
  ASSERT_EQ(grey.width, 10);
  const char* want = "10110011100100110001";
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(grey.At(i % 10, i / 10), want[i] == '1' ? 0xFFFFFFu : 0u) << i;
  }
  // 2-bit palette of three colours, indices 2 0 1 2 1.
  PixelImage pal = Decode(MakePng(5, 1, 2, 3, 0, {0, 0x86, 0x40},
                                  {0xFF, 0, 0, 0, 0x80, 0, 0x10, 0x20, 0x30}));
  ASSERT_EQ(pal.width, 5);
  EXPECT_EQ(pal.At(0, 0), 0x102030u);
  EXPECT_EQ(pal.At(1, 0), 0xFF0000u);
  EXPECT_EQ(pal.At(2, 0), 0x008000u);
  EXPECT_EQ(pal.At(3, 0), 0x102030u);
  EXPECT_EQ(pal.At(4, 0), 0x008000u);
  // 2-bit grey scales 0..3 to 0..255.
  PixelImage grey2 = Decode(MakePng(4, 1, 2, 0, 0, {0, 0x1B}));
  EXPECT_EQ(grey2.At(1, 0), 0x555555u);
  EXPECT_EQ(grey2.At(2, 0), 0xAAAAAAu);
  // 16-bit RGBA: samples round to the nearest 8-bit value; alpha is dropped.
  PixelImage deep = Decode(MakePng(1, 1, 16, 6, 0, {0, 0xFF, 0xFF, 0x80, 0x7F, 0x01, 0x00, 0, 0}));
  EXPECT_EQ(deep.At(0, 0), 0xFF8001u);
  // Grey + alpha, 8-bit, with an "Up" filter on the second row.
  PixelImage ga = Decode(MakePng(2, 2, 8, 4, 0, {0, 10, 255, 20, 0, 2, 5, 0, 5, 0}));
  EXPECT_EQ(ga.At(0, 1), 0x0F0F0Fu);
  EXPECT_EQ(ga.At(1, 1), 0x191919u);
}

TEST(PngCodecTest, DecodesInterlacedImages) {
  // A 3 x 3 interlaced 8-bit grey image whose pixel (x, y) is 10 * (3y + x). Its passes:
  // 1: (0,0); 4: (2,0); 5: (0,2) (2,2); 6: (1,0) / (1,2); 7: row 1 whole.
  auto v = [](int x, int y) { return static_cast<std::uint8_t>(10 * (3 * y + x)); };
  std::vector<std::uint8_t> lines = {0, v(0, 0),
                                     0, v(2, 0),
                                     0, v(0, 2), v(2, 2),
                                     0, v(1, 0), 0, v(1, 2),
                                     0, v(0, 1), v(1, 1), v(2, 1)};
  PixelImage image = Decode(MakePng(3, 3, 8, 0, 1, lines));
  ASSERT_EQ(image.width, 3);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 3; ++x) {
      const std::uint32_t g = v(x, y);
      EXPECT_EQ(image.At(x, y), g << 16 | g << 8 | g) << x << "," << y;
    }
  }
}

TEST(PngCodecTest, EncodedImagesRoundTripWithTheirStride) {
  std::vector<std::uint32_t> pixels(7 * 5, 0xFFFFFFFFu);  // stride 7, image 6 x 5
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 6; ++x) pixels[y * 7 + x] = static_cast<std::uint32_t>(x * 0x314159 + y * 0x2718);
  }
  std::vector<std::uint8_t> png;
  ASSERT_TRUE(EncodePng(pixels.data(), 6, 5, 7, &png));
  PixelImage image = Decode(png);
  ASSERT_EQ(image.width, 6);
  ASSERT_EQ(image.height, 5);
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 6; ++x) EXPECT_EQ(image.At(x, y), pixels[y * 7 + x] & 0xFFFFFFu);
  }
  EXPECT_FALSE(EncodePng(pixels.data(), 0, 5, 7, &png));
  EXPECT_FALSE(EncodePng(pixels.data(), 8, 5, 7, &png));
  EXPECT_FALSE(EncodePng(nullptr, 6, 5, 7, &png));
}

TEST(PngCodecTest, DamagedStructureIsRejected) {
  const std::vector<std::uint8_t> good = MakePng(2, 1, 8, 2, 0, {0, 1, 2, 3, 4, 5, 6});
  PixelImage image;
  ASSERT_TRUE(DecodePng(good.data(), good.size(), &image));

  std::vector<std::uint8_t> bad_crc = good;
  bad_crc[29] ^= 1;  // inside the IHDR CRC
  EXPECT_FALSE(DecodePng(bad_crc.data(), bad_crc.size(), &image));
  EXPECT_TRUE(image.pixels.empty());

  // A file that only loses its end marker still holds the whole image.
  std::vector<std::uint8_t> no_end(good.begin(), good.end() - 12);
  EXPECT_TRUE(DecodePng(no_end.data(), no_end.size(), &image));

  // Unknown critical chunks, bad depths, a palette image without palette, short pixel data.
  std::vector<std::uint8_t> unknown;
  Chunk(&unknown, "ZZZZ", {});
  std::vector<std::uint8_t> critical(good.begin(), good.end() - 12);
  critical.insert(critical.end(), unknown.begin(), unknown.end());
  critical.insert(critical.end(), good.end() - 12, good.end());
  EXPECT_FALSE(DecodePng(critical.data(), critical.size(), &image));
  const auto rgb4 = MakePng(2, 1, 4, 2, 0, {0, 1, 2, 3});
  EXPECT_FALSE(DecodePng(rgb4.data(), rgb4.size(), &image));
  const auto no_palette = MakePng(2, 1, 8, 3, 0, {0, 0, 0});
  EXPECT_FALSE(DecodePng(no_palette.data(), no_palette.size(), &image));
  const auto short_data = MakePng(2, 2, 8, 2, 0, {0, 1, 2, 3, 4, 5, 6});
  EXPECT_FALSE(DecodePng(short_data.data(), short_data.size(), &image));
  const auto bad_filter = MakePng(2, 1, 8, 2, 0, {5, 1, 2, 3, 4, 5, 6});
  EXPECT_FALSE(DecodePng(bad_filter.data(), bad_filter.size(), &image));
  const auto palette_index = MakePng(2, 1, 8, 3, 0, {0, 0, 1}, {1, 2, 3});
  EXPECT_FALSE(DecodePng(palette_index.data(), palette_index.size(), &image));
}

}  // namespace
}  // namespace qvis::gdi
