// PNG in and out of bitmaps, over the pixel-buffer half that each build takes from its
// platform (png_io_libpng.cc on Linux, png_io_zlib.cc on Windows).
#include "qvis/gdi/png_io.h"

#include <cstring>

#include "qvis/compat/atomic_file.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {

bool WritePngImage(const PixelImage& image, const std::string& path) {
  if (image.pixels.size() !=
      static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height)) {
    return false;
  }
  return WritePngRows(image.pixels.data(), image.width, image.height, image.width, path);
}

// WritePng: 32-bpp bitmaps as they are; 1-bpp bitmaps as black (0) and white (1).
bool WritePng(HBITMAP bitmap, const char* path) {
  if (path == nullptr) return false;
  BitmapView view = BitmapPixels(bitmap);
  if (view.bits == nullptr || view.width <= 0 || view.height <= 0) return false;
  if (view.bits_per_pixel == 32) {
    if (view.stride % 4 != 0) return false;
    return WritePngRows(view.Row32(0), view.width, view.height, view.stride / 4, path);
  }
  if (view.bits_per_pixel != 1) return false;
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(view.width) * view.height);
  for (int y = 0; y < view.height; ++y) {
    const std::uint8_t* row = view.RowBytes(y);
    for (int x = 0; x < view.width; ++x) {
      bool white = (row[x >> 3] >> (7 - (x & 7))) & 1;
      pixels[static_cast<std::size_t>(y) * view.width + x] = white ? 0xFFFFFFu : 0u;
    }
  }
  return WritePngRows(pixels.data(), view.width, view.height, view.width, path);
}

HBITMAP ReadPng(const char* path) {
  if (path == nullptr) return nullptr;
  PixelImage image;
  if (!ReadPngImage(path, &image)) return nullptr;
  HBITMAP bitmap = CreateBitmap32(image.width, image.height);
  BitmapView view = BitmapPixels(bitmap);
  if (view.bits == nullptr || view.width != image.width || view.height != image.height) {
    if (bitmap != nullptr) DeleteObject(bitmap);
    return nullptr;
  }
  for (int y = 0; y < image.height; ++y) {
    std::memcpy(view.Row32(y), image.pixels.data() + static_cast<std::size_t>(y) * image.width,
                static_cast<std::size_t>(image.width) * 4);
  }
  return bitmap;
}

}  // namespace qvis::gdi
