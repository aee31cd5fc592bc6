// PNG in and out of plain pixel buffers through our own codec over zlib (the Windows build).
#include <cstdio>
#include <memory>

#include "qvis/compat/atomic_file.h"
#include "qvis/gdi/png_codec.h"
#include "qvis/gdi/png_io.h"

namespace qvis::gdi {
namespace {

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace

bool WritePngRows(const std::uint32_t* pixels, int width, int height, std::ptrdiff_t stride_pixels,
                  const std::string& path) {
  std::vector<std::uint8_t> bytes;
  if (!EncodePng(pixels, width, height, stride_pixels, &bytes)) return false;
  // The whole image goes to the file in one atomic write: a failed write keeps the old file
  // and throws.
  WriteFileAtomically(path, bytes.data(), bytes.size());
  return true;
}

bool ReadPngImage(const std::string& path, PixelImage* image) {
  if (image == nullptr) return false;
  *image = PixelImage();
  File f(std::fopen(path.c_str(), "rb"));
  if (f == nullptr) return false;
  std::vector<std::uint8_t> bytes;
  std::uint8_t buffer[1 << 16];
  std::size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, f.get())) > 0) {
    bytes.insert(bytes.end(), buffer, buffer + n);
  }
  if (std::ferror(f.get())) return false;
  return DecodePng(bytes.data(), bytes.size(), image);
}

}  // namespace qvis::gdi
