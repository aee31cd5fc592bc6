// PNG encoding and decoding of 0x00RRGGBB pixel buffers: the raw half of WritePng / ReadPng,
// also used by the golden-image tests and the scene runner, which hold pixels outside bitmaps.
#ifndef QVIS_GDI_PNG_IO_H_
#define QVIS_GDI_PNG_IO_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "qvis/compat/export.h"

namespace qvis::gdi {

// PixelImage is a plain top-down image of 0x00RRGGBB pixels (the high byte is ignored).
struct PixelImage {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;  // width * height, row after row

  std::uint32_t At(int x, int y) const {
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)] & 0xFFFFFFu;
  }
};

// Largest image, in pixels per side, that ReadPngImage accepts; a damaged header that claims
// more is rejected instead of allocating gigabytes.
inline constexpr int kMaxPngSide = 16384;

// WritePngRows writes width x height pixels whose rows lie `stride_pixels` apart as an 8-bit RGB
// PNG. Returns false for an empty image or a null buffer. The file is written through
// qvis::AtomicFile: one that cannot be written throws CFileException and keeps its old bytes.
QVIS_API bool WritePngRows(const std::uint32_t* pixels, int width, int height, std::ptrdiff_t stride_pixels,
                  const std::string& path);
// WritePngImage writes a PixelImage; false and exceptions as WritePngRows.
QVIS_API bool WritePngImage(const PixelImage& image, const std::string& path);
// ReadPngImage decodes any 8/16-bit grey, RGB, RGBA or palette PNG into 0x00RRGGBB pixels
// (alpha dropped). A missing, damaged or oversized file returns false and leaves `image` empty.
QVIS_API bool ReadPngImage(const std::string& path, PixelImage* image);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_PNG_IO_H_
