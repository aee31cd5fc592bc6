// The ROP2 loops, one instantiation per code so that the choice is made once per primitive.
#include "qvis/gdi/raster/rop2.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qvis::gdi {
namespace {

// Only the colour bits of a 32-bpp pixel are written; the unused top byte stays zero.
constexpr std::uint32_t kColorBits = 0x00FFFFFFu;

// FillWords stores one word n times. Long runs (frame clears, wide boxes) use the processor's
// string store where there is one: it writes whole cache lines without reading them first,
// which is about twice as fast as a vector loop.
inline void FillWords(std::uint32_t* dst, int n, std::uint32_t value) {
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
  if (n >= 256) {
    std::size_t count = static_cast<std::size_t>(n);
    asm volatile("rep stosl" : "+D"(dst), "+c"(count) : "a"(value) : "memory");
    return;
  }
#endif
  std::fill_n(dst, n, value);
}

template <int kCode>
void SpanOp(std::uint32_t* dst, int n, std::uint32_t pen) {
  if constexpr (kCode == 11) {  // R2_NOP
    (void)dst, (void)n, (void)pen;
  } else if constexpr (kCode == 13) {  // R2_COPYPEN: a plain word fill
    FillWords(dst, n, pen & kColorBits);
  } else if constexpr (kCode == 1 || kCode == 4 || kCode == 16) {  // constant per span
    FillWords(dst, n, Rop2(kCode, pen, 0) & kColorBits);
  } else {
    for (int i = 0; i < n; ++i) dst[i] = Rop2(kCode, pen, dst[i]) & kColorBits;
  }
}

template <int kCode>
std::uint32_t PixelOp(std::uint32_t pen, std::uint32_t dst) {
  return Rop2(kCode, pen, dst) & kColorBits;
}

template <std::size_t... I>
constexpr std::array<Rop2SpanFn, 16> MakeSpanTable(std::index_sequence<I...>) {
  return {&SpanOp<static_cast<int>(I) + 1>...};
}
template <std::size_t... I>
constexpr std::array<Rop2PixelFn, 16> MakePixelTable(std::index_sequence<I...>) {
  return {&PixelOp<static_cast<int>(I) + 1>...};
}

constexpr auto kSpanTable = MakeSpanTable(std::make_index_sequence<16>{});
constexpr auto kPixelTable = MakePixelTable(std::make_index_sequence<16>{});

}  // namespace

Rop2SpanFn ChooseRop2Span(int code) {
  if (code < kRop2Min || code > kRop2Max) code = kRop2Nop;
  return kSpanTable[static_cast<std::size_t>(code - 1)];
}

Rop2PixelFn ChooseRop2Pixel(int code) {
  if (code < kRop2Min || code > kRop2Max) code = kRop2Nop;
  return kPixelTable[static_cast<std::size_t>(code - 1)];
}

}  // namespace qvis::gdi
