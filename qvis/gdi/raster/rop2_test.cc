// Exhaustive check of the binary and ternary raster operations against their boolean definitions,
// and of the word fills' coverage.
#include "qvis/gdi/raster/rop2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <vector>

namespace qvis::gdi {
namespace {

using Def = std::function<std::uint32_t(std::uint32_t, std::uint32_t)>;

// The 16 codes as the platform documents them, written out independently of the truth-table
// decoding in Rop2().
const std::vector<Def>& Definitions() {
  static const std::vector<Def> defs = {
      [](std::uint32_t, std::uint32_t) { return 0u; },                   // 1 black
      [](std::uint32_t p, std::uint32_t d) { return ~(p | d); },         // 2 notmergepen
      [](std::uint32_t p, std::uint32_t d) { return ~p & d; },           // 3 masknotpen
      [](std::uint32_t p, std::uint32_t) { return ~p; },                 // 4 notcopypen
      [](std::uint32_t p, std::uint32_t d) { return p & ~d; },           // 5 maskpennot
      [](std::uint32_t, std::uint32_t d) { return ~d; },                 // 6 not
      [](std::uint32_t p, std::uint32_t d) { return p ^ d; },            // 7 xorpen
      [](std::uint32_t p, std::uint32_t d) { return ~(p & d); },         // 8 notmaskpen
      [](std::uint32_t p, std::uint32_t d) { return p & d; },            // 9 maskpen
      [](std::uint32_t p, std::uint32_t d) { return ~(p ^ d); },         // 10 notxorpen
      [](std::uint32_t, std::uint32_t d) { return d; },                  // 11 nop
      [](std::uint32_t p, std::uint32_t d) { return ~p | d; },           // 12 mergenotpen
      [](std::uint32_t p, std::uint32_t) { return p; },                  // 13 copypen
      [](std::uint32_t p, std::uint32_t d) { return p | ~d; },           // 14 mergepennot
      [](std::uint32_t p, std::uint32_t d) { return p | d; },            // 15 mergepen
      [](std::uint32_t, std::uint32_t) { return 0xFFFFFFFFu; },          // 16 white
  };
  return defs;
}

TEST(Rop2Test, EveryCodeOnEveryBytePairMatchesItsDefinition) {
  for (int code = 1; code <= 16; ++code) {
    const Def& def = Definitions()[static_cast<std::size_t>(code - 1)];
    const Rop2SpanFn span = ChooseRop2Span(code);
    const Rop2PixelFn pixel = ChooseRop2Pixel(code);
    for (std::uint32_t p = 0; p < 256; ++p) {
      // One span of 256 destination values, each byte value in all three colour channels.
      std::uint32_t row[256];
      for (std::uint32_t d = 0; d < 256; ++d) row[d] = d * 0x010101u;
      span(row, 256, p * 0x010101u);
      for (std::uint32_t d = 0; d < 256; ++d) {
        const std::uint32_t want = (def(p, d) & 0xFF) * 0x010101u;
        ASSERT_EQ(Rop2(code, p, d) & 0xFF, def(p, d) & 0xFF) << code << " " << p << " " << d;
        ASSERT_EQ(row[d], want) << "span, code " << code << " pen " << p << " dst " << d;
        ASSERT_EQ(pixel(p * 0x010101u, d * 0x010101u), want) << "pixel, code " << code;
      }
    }
  }
}

TEST(Rop2Test, TopByteStaysZeroAndBadCodesChangeNothing) {
  for (int code = 1; code <= 16; ++code) {
    std::uint32_t row[3] = {0x00123456u, 0x00FFFFFFu, 0};
    ChooseRop2Span(code)(row, 3, 0x00ABCDEFu);
    for (std::uint32_t v : row) EXPECT_EQ(v >> 24, 0u) << "code " << code;
  }
  for (int code : {0, -1, 17, 1000}) {
    std::uint32_t row[2] = {0x00123456u, 0x00654321u};
    ChooseRop2Span(code)(row, 2, 0x00FFFFFFu);
    EXPECT_EQ(row[0], 0x00123456u);
    EXPECT_EQ(row[1], 0x00654321u);
    EXPECT_EQ(ChooseRop2Pixel(code)(0xFFFFFF, 0x00112233u), 0x00112233u);
  }
}

// The word fills store differently by run length and alignment (single words for short runs,
// aligned 16-byte blocks between overlapping unaligned ends): every length at every word
// offset fills exactly its run and leaves the words either side alone.
TEST(Rop2Test, FillsCoverExactlyTheirRunAtAnyLengthAndAlignment) {
  const Rop2SpanFn fill = ChooseRop2Span(13);  // R2_COPYPEN
  const Rop2SpanFn white = ChooseRop2Span(16);  // R2_WHITE: a constant per span too
  alignas(64) std::uint32_t row[320];
  for (int offset = 0; offset < 9; ++offset) {
    for (int n = 0; n <= 300 - offset; n += (n < 80 ? 1 : 7)) {
      std::fill(std::begin(row), std::end(row), 0x00C0FFEEu);
      fill(row + offset, n, 0xFF123456u);
      for (int i = 0; i < 320; ++i) {
        const bool inside = i >= offset && i < offset + n;
        ASSERT_EQ(row[i], inside ? 0x00123456u : 0x00C0FFEEu) << "offset " << offset << " n " << n << " at " << i;
      }
      white(row + offset, n, 0);
      for (int i = offset; i < offset + n; ++i) ASSERT_EQ(row[i], 0x00FFFFFFu);
    }
  }
}

TEST(Rop3Test, NamedCodesMatchTheirFormulas) {
  struct Row {
    unsigned code;
    std::function<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t)> def;
  };
  const Row rows[] = {
      {0xCC, [](auto, auto s, auto) { return s; }},             // SRCCOPY
      {0xEE, [](auto, auto s, auto d) { return s | d; }},       // SRCPAINT
      {0x88, [](auto, auto s, auto d) { return s & d; }},       // SRCAND
      {0x66, [](auto, auto s, auto d) { return s ^ d; }},       // SRCINVERT
      {0x44, [](auto, auto s, auto d) { return s & ~d; }},      // SRCERASE
      {0x33, [](auto, auto s, auto) { return ~s; }},            // NOTSRCCOPY
      {0x11, [](auto, auto s, auto d) { return ~(s | d); }},    // NOTSRCERASE
      {0xC0, [](auto p, auto s, auto) { return p & s; }},       // MERGECOPY
      {0xBB, [](auto, auto s, auto d) { return ~s | d; }},      // MERGEPAINT
      {0xF0, [](auto p, auto, auto) { return p; }},             // PATCOPY
      {0xFB, [](auto p, auto s, auto d) { return p | ~s | d; }},// PATPAINT
      {0x5A, [](auto p, auto, auto d) { return p ^ d; }},       // PATINVERT
      {0x55, [](auto, auto, auto d) { return ~d; }},            // DSTINVERT
      {0x00, [](auto, auto, auto) { return 0u; }},              // BLACKNESS
      {0xFF, [](auto, auto, auto) { return 0xFFFFFFFFu; }},     // WHITENESS
  };
  for (const Row& row : rows) {
    for (std::uint32_t p : {0u, 0xFFu, 0x5Au}) {
      for (std::uint32_t s = 0; s < 256; s += 3) {
        for (std::uint32_t d = 0; d < 256; d += 5) {
          ASSERT_EQ(Rop3(row.code, p, s, d) & 0xFF, row.def(p, s, d) & 0xFF)
              << std::hex << row.code << " p=" << p << " s=" << s << " d=" << d;
        }
      }
    }
  }
}

}  // namespace
}  // namespace qvis::gdi
