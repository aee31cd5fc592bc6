// Stores of one 32-bit word over a run of pixels, for the blitters and for the scan converters
// that write a plain-copy target themselves.
#ifndef QVIS_GDI_RASTER_SOLID_RUN_H_
#define QVIS_GDI_RASTER_SOLID_RUN_H_

#include <algorithm>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qvis::gdi {

// StoreUpTo16 fills n (1..16) pixels without a loop: three single stores cover one to three
// pixels, four 16-byte stores at 0, min(4, n-4), min(8, n-4) and n-4 cover four to sixteen,
// overlapping where n is less. The spans of a filled figure are a few pixels each with lengths
// that follow no pattern, so a loop's exit, mispredicted once per span, cost more than the
// stores.
inline void StoreUpTo16(std::uint32_t* p, int n, std::uint32_t value) {
#if defined(__SSE2__)
  if (n >= 4) {
    const __m128i v = _mm_set1_epi32(static_cast<int>(value));
    const int last = n - 4;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + std::min(4, last)), v);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + std::min(8, last)), v);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + last), v);
    return;
  }
  p[0] = value;
  p[n >> 1] = value;
  p[n - 1] = value;
#else
  for (int i = 0; i < n; ++i) p[i] = value;
#endif
}

// StoreRun fills n (>= 1) pixels: short runs as StoreUpTo16, longer ones eight at a time with
// unaligned 16-byte stores, the last eight overlapping the previous ones.
inline void StoreRun(std::uint32_t* p, int n, std::uint32_t value) {
  if (n <= 16) {
    StoreUpTo16(p, n, value);
    return;
  }
#if defined(__SSE2__)
  const __m128i v = _mm_set1_epi32(static_cast<int>(value));
  std::uint32_t* const end = p + n;
  for (; end - p > 8; p += 8) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), v);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(end - 8), v);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(end - 4), v);
#else
  for (int i = 0; i < n; ++i) p[i] = value;
#endif
}

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_SOLID_RUN_H_
