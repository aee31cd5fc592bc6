// The 16 binary raster operations (R2_BLACK 1 .. R2_WHITE 16) on pixel words, as single values and
// as whole-span loops chosen once per primitive.
#ifndef QVIS_GDI_RASTER_ROP2_H_
#define QVIS_GDI_RASTER_ROP2_H_

#include <cstdint>

namespace qvis::gdi {

inline constexpr int kRop2Min = 1;
inline constexpr int kRop2Max = 16;
inline constexpr int kRop2Nop = 11;
inline constexpr int kRop2CopyPen = 13;

// Rop2 combines pen bits P and destination bits D bitwise. The codes are numbered so that the four
// bits of (code - 1) are the truth table: bit 3 gives the result for P=1,D=1, bit 2 for P=1,D=0,
// bit 1 for P=0,D=1, bit 0 for P=0,D=0. Codes outside 1..16 act as R2_NOP.
inline std::uint32_t Rop2(int code, std::uint32_t p, std::uint32_t d) {
  if (code < kRop2Min || code > kRop2Max) return d;
  const unsigned table = static_cast<unsigned>(code - 1);
  std::uint32_t r = 0;
  if (table & 1) r |= ~p & ~d;
  if (table & 2) r |= ~p & d;
  if (table & 4) r |= p & ~d;
  if (table & 8) r |= p & d;
  return r;
}

// Rop2SpanFn writes `n` pixels starting at `dst`, combining each with `pen`. Only the low 24 bits
// of a 32-bpp pixel carry colour; the top byte is kept zero.
using Rop2SpanFn = void (*)(std::uint32_t* dst, int n, std::uint32_t pen);
// Rop2PixelFn combines one destination pixel with a pen pixel (pattern brushes).
using Rop2PixelFn = std::uint32_t (*)(std::uint32_t pen, std::uint32_t dst);

// ChooseRop2Span / ChooseRop2Pixel pick the loop for a code; codes outside 1..16 give R2_NOP.
Rop2SpanFn ChooseRop2Span(int code);
Rop2PixelFn ChooseRop2Pixel(int code);

// Rop3 applies a ternary raster operation (the code's bits 16..23) to pattern, source and
// destination bits.
inline std::uint32_t Rop3(unsigned rop3, std::uint32_t p, std::uint32_t s, std::uint32_t d) {
  std::uint32_t r = 0;
  for (unsigned i = 0; i < 8; ++i) {
    if (!((rop3 >> i) & 1)) continue;
    r |= ((i & 4) ? p : ~p) & ((i & 2) ? s : ~s) & ((i & 1) ? d : ~d);
  }
  return r;
}

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_ROP2_H_
