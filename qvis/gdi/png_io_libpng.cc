// PNG in and out of plain pixel buffers through libpng's simplified interface (the Linux build).
#include "qvis/gdi/png_io.h"

#include <png.h>

#include <cstring>

#include "qvis/compat/atomic_file.h"

namespace qvis::gdi {

bool WritePngRows(const std::uint32_t* pixels, int width, int height, std::ptrdiff_t stride_pixels,
                  const std::string& path) {
  if (pixels == nullptr || width <= 0 || height <= 0 || stride_pixels < width) return false;
  std::vector<std::uint8_t> rgb(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                                3);
  std::uint8_t* out = rgb.data();
  for (int y = 0; y < height; ++y) {
    const std::uint32_t* row = pixels + stride_pixels * y;
    for (int x = 0; x < width; ++x) {
      std::uint32_t p = row[x];
      *out++ = static_cast<std::uint8_t>(p >> 16);
      *out++ = static_cast<std::uint8_t>(p >> 8);
      *out++ = static_cast<std::uint8_t>(p);
    }
  }
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_RGB;
  // Encode in memory first, then write the file in one piece: a failed write leaves the old
  // file as it was (and throws) instead of a truncated image.
  png_alloc_size_t size = 0;
  if (!png_image_write_to_memory(&image, nullptr, &size, 0, rgb.data(), 0, nullptr)) {
    png_image_free(&image);
    return false;
  }
  std::vector<std::uint8_t> encoded(size);
  const int ok = png_image_write_to_memory(&image, encoded.data(), &size, 0, rgb.data(), 0, nullptr);
  png_image_free(&image);
  if (!ok) return false;
  WriteFileAtomically(path, encoded.data(), size);
  return true;
}

bool ReadPngImage(const std::string& path, PixelImage* result) {
  if (result == nullptr) return false;
  *result = PixelImage();
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return false;
  if (image.width == 0 || image.height == 0 || image.width > kMaxPngSide ||
      image.height > kMaxPngSide) {
    png_image_free(&image);
    return false;
  }
  // BGRA bytes are one little-endian 0xAARRGGBB word per pixel; colour stays unpremultiplied.
  image.format = PNG_FORMAT_BGRA;
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(image.width) * image.height);
  if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) {
    png_image_free(&image);
    return false;
  }
  for (std::uint32_t& p : pixels) {
    const auto* b = reinterpret_cast<const std::uint8_t*>(&p);
    p = static_cast<std::uint32_t>(b[2]) << 16 | static_cast<std::uint32_t>(b[1]) << 8 | b[0];
  }
  result->width = static_cast<int>(image.width);
  result->height = static_cast<int>(image.height);
  result->pixels = std::move(pixels);
  return true;
}

}  // namespace qvis::gdi
