// The ROP2 loops, one instantiation per code so that the choice is made once per primitive.
#include "qvis/gdi/raster/rop2.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qvis::gdi {
namespace {

// Only the colour bits of a 32-bpp pixel are written; the unused top byte stays zero.
constexpr std::uint32_t kColorBits = 0x00FFFFFFu;

// FillWords stores one word n times: runs of 8 words or more as 16-byte stores (an unaligned
// head, aligned blocks, and an unaligned tail that may overlap the last block). The processor's
// string store and the C library's memset were both tried and are slower for a frame clear: for
// runs this long they stream past the cache, while the frame is about to be drawn on.
inline void FillWords(std::uint32_t* dst, int n, std::uint32_t value) {
#if defined(__SSE2__)
  if (n >= 8) {
    const __m128i v = _mm_set1_epi32(static_cast<int>(value));
    std::uint32_t* const end = dst + n;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), v);
    std::uint32_t* p = reinterpret_cast<std::uint32_t*>(
        (reinterpret_cast<std::uintptr_t>(dst) + 16) & ~std::uintptr_t{15});
    while (end - p >= 16) {
      _mm_store_si128(reinterpret_cast<__m128i*>(p), v);
      _mm_store_si128(reinterpret_cast<__m128i*>(p + 4), v);
      _mm_store_si128(reinterpret_cast<__m128i*>(p + 8), v);
      _mm_store_si128(reinterpret_cast<__m128i*>(p + 12), v);
      p += 16;
    }
    while (end - p >= 4) {
      _mm_store_si128(reinterpret_cast<__m128i*>(p), v);
      p += 4;
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(end - 4), v);
    return;
  }
#endif
  for (int i = 0; i < n; ++i) dst[i] = value;
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
