// The long-run fill, with its instruction set chosen when the program runs.
#include "qvis/gdi/raster/solid_run.h"

#if defined(__GNUC__) && defined(__x86_64__)
#define QVIS_FILL_AVX2 1
#include <immintrin.h>
#endif

namespace qvis::gdi {
namespace {

#if defined(QVIS_FILL_AVX2)
bool HaveAvx2() {
  static const bool have = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
  }();
  return have;
}

// An unaligned head, aligned 32-byte blocks and an unaligned tail overlapping the last block.
__attribute__((target("avx2"))) void StoreLongRunAvx2(std::uint32_t* p, std::ptrdiff_t n,
                                                       std::uint32_t value) {
  const __m256i v = _mm256_set1_epi32(static_cast<int>(value));
  std::uint32_t* const end = p + n;
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
  std::uint32_t* q = reinterpret_cast<std::uint32_t*>(
      (reinterpret_cast<std::uintptr_t>(p) + 32) & ~std::uintptr_t{31});
  while (end - q >= 16) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(q), v);
    _mm256_store_si256(reinterpret_cast<__m256i*>(q + 8), v);
    q += 16;
  }
  if (end - q >= 8) _mm256_store_si256(reinterpret_cast<__m256i*>(q), v);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - 8), v);
}
#endif

}  // namespace

void StoreLongRun(std::uint32_t* p, std::ptrdiff_t n, std::uint32_t value) {
#if defined(QVIS_FILL_AVX2)
  if (HaveAvx2()) {
    StoreLongRunAvx2(p, n, value);
    return;
  }
#endif
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
  for (std::ptrdiff_t i = 0; i < n; ++i) p[i] = value;
#endif
}

}  // namespace qvis::gdi
