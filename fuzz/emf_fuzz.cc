// Fuzz target for enhanced-metafile loading and playback. Any input must either be refused
// (null handle) or load and play into a small bitmap through several boxes (the picture's own
// size, one far larger than the bitmap, an empty one) without a crash, a sanitizer report or a
// hang, and playback must leave the DC's state as it found it. Built as a libFuzzer target
// under clang and as a corpus replay driver otherwise (see README.md).
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"

namespace {

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "emf_fuzz: invariant failed: %s\n", what);
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  using namespace qvis;       // NOLINT: handle types
  using namespace qvis::gdi;  // NOLINT: the calls read as the platform's
  if (size > (1u << 20)) return 0;
  HENHMETAFILE emf = SetEnhMetaFileBits(static_cast<UINT>(size), data);
  if (emf == nullptr) return 0;
  HDC dc = CreateCompatibleDC(nullptr);
  HBITMAP bitmap = CreateBitmap32(48, 48);
  SelectObject(dc, bitmap);
  const CRect boxes[] = {CRect(0, 0, 48, 48), CRect(-1000000000, -7, 1000000000, 60),
                               CRect(5, 5, 5, 5)};
  HGDIOBJ pen = GetCurrentPen(dc);
  HGDIOBJ brush = GetCurrentBrush(dc);
  for (const CRect& box : boxes) {
    Check(PlayEnhMetaFile(dc, emf, &box) != 0, "a loaded metafile plays");
    Check(GetCurrentPen(dc) == pen && GetCurrentBrush(dc) == brush, "objects restored");
    Check(GetROP2(dc) == R2_COPYPEN && GetBkMode(dc) == OPAQUE, "modes restored");
    Check(GetArcDirection(dc) == AD_COUNTERCLOCKWISE, "arc direction restored");
  }
  Check(DeleteEnhMetaFile(emf) != 0, "delete once");
  Check(DeleteEnhMetaFile(emf) == 0, "delete twice refused");
  DeleteDC(dc);
  DeleteObject(bitmap);
  return 0;
}
