// PNG encoding and decoding over zlib's deflate and inflate. The encoder writes one plain
// 8-bit RGB form; the decoder takes every form the format defines, so images from any writer
// (libpng, the platform's tools, our own fixtures) can be read.
#include "qvis/gdi/png_codec.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace qvis::gdi {
namespace {

constexpr std::array<std::uint8_t, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

void PutU32(std::vector<std::uint8_t>* out, std::uint32_t v) {
  out->push_back(static_cast<std::uint8_t>(v >> 24));
  out->push_back(static_cast<std::uint8_t>(v >> 16));
  out->push_back(static_cast<std::uint8_t>(v >> 8));
  out->push_back(static_cast<std::uint8_t>(v));
}

std::uint32_t GetU32(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16 |
         static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}

void PutChunk(std::vector<std::uint8_t>* out, const char type[4], const std::uint8_t* data,
              std::size_t size) {
  PutU32(out, static_cast<std::uint32_t>(size));
  const std::size_t start = out->size();
  out->insert(out->end(), type, type + 4);
  if (size > 0) out->insert(out->end(), data, data + size);
  uLong crc = crc32(0L, Z_NULL, 0);
  crc = crc32(crc, out->data() + start, static_cast<uInt>(4 + size));
  PutU32(out, static_cast<std::uint32_t>(crc));
}

// The Paeth predictor of the format: whichever of left, up and upper-left is closest to
// left + up - upper-left (ties in that order).
std::uint8_t Paeth(int a, int b, int c) {
  const int p = a + b - c;
  const int pa = std::abs(p - a);
  const int pb = std::abs(p - b);
  const int pc = std::abs(p - c);
  if (pa <= pb && pa <= pc) return static_cast<std::uint8_t>(a);
  if (pb <= pc) return static_cast<std::uint8_t>(b);
  return static_cast<std::uint8_t>(c);
}

// Unfilter undoes one row's filter in place; `prev` is the row above after unfiltering (zeros
// for a pass's first row). False for an unknown filter type.
bool Unfilter(int type, std::uint8_t* row, const std::uint8_t* prev, std::size_t len,
              std::size_t bpp) {
  switch (type) {
    case 0:
      return true;
    case 1:
      for (std::size_t i = bpp; i < len; ++i) row[i] = static_cast<std::uint8_t>(row[i] + row[i - bpp]);
      return true;
    case 2:
      for (std::size_t i = 0; i < len; ++i) row[i] = static_cast<std::uint8_t>(row[i] + prev[i]);
      return true;
    case 3:
      for (std::size_t i = 0; i < len; ++i) {
        const int left = i >= bpp ? row[i - bpp] : 0;
        row[i] = static_cast<std::uint8_t>(row[i] + ((left + prev[i]) >> 1));
      }
      return true;
    case 4:
      for (std::size_t i = 0; i < len; ++i) {
        const int left = i >= bpp ? row[i - bpp] : 0;
        const int upper_left = i >= bpp ? prev[i - bpp] : 0;
        row[i] = static_cast<std::uint8_t>(row[i] + Paeth(left, prev[i], upper_left));
      }
      return true;
    default:
      return false;
  }
}

struct Header {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int depth = 0;
  int color_type = 0;
  bool interlaced = false;

  int Channels() const {
    switch (color_type) {
      case 0: return 1;
      case 2: return 3;
      case 3: return 1;
      case 4: return 2;
      case 6: return 4;
      default: return 0;
    }
  }
  bool Valid() const {
    if (width == 0 || height == 0 || width > static_cast<std::uint32_t>(kMaxPngSide) ||
        height > static_cast<std::uint32_t>(kMaxPngSide)) {
      return false;
    }
    switch (color_type) {
      case 0: return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
      case 3: return depth == 1 || depth == 2 || depth == 4 || depth == 8;
      case 2: case 4: case 6: return depth == 8 || depth == 16;
      default: return false;
    }
  }
  std::size_t RowBytes(std::uint32_t pass_width) const {
    return (static_cast<std::size_t>(pass_width) * static_cast<std::size_t>(Channels()) *
                static_cast<std::size_t>(depth) + 7) / 8;
  }
};

// One pass of the image: the whole image when not interlaced, else one of the seven passes of
// the interlace scheme (start and step in x and y).
struct Pass {
  std::uint32_t x0, y0, dx, dy;
};
constexpr Pass kWholeImage = {0, 0, 1, 1};
constexpr std::array<Pass, 7> kAdam7 = {{{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                         {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}}};

std::uint32_t PassSide(std::uint32_t side, std::uint32_t start, std::uint32_t step) {
  return side > start ? (side - start + step - 1) / step : 0;
}

// Sample reads sample `index` of a row of `depth`-bit samples (big-endian, packed high bits
// first), scaled to 8 bits. Palette indices are returned unscaled.
int Sample(const std::uint8_t* row, std::size_t index, int depth, bool scale) {
  switch (depth) {
    case 16: {
      const unsigned v = static_cast<unsigned>(row[index * 2]) << 8 | row[index * 2 + 1];
      return static_cast<int>((v * 255u + 32767u) / 65535u);
    }
    case 8:
      return row[index];
    default: {
      const std::size_t bit = index * static_cast<std::size_t>(depth);
      const int shift = 8 - depth - static_cast<int>(bit % 8);
      const int v = (row[bit / 8] >> shift) & ((1 << depth) - 1);
      return scale ? v * 255 / ((1 << depth) - 1) : v;
    }
  }
}

// WriteImage compresses filtered rows and appends the whole file: signature, header, the
// palette when given, the data and the end marker. `color_type` 2 is RGB, 3 palette.
bool WriteImage(const std::vector<std::uint8_t>& raw, int width, int height, std::uint8_t color_type,
                const std::vector<std::uint8_t>& plte, int level, std::vector<std::uint8_t>* out) {
  uLongf packed_size = compressBound(static_cast<uLong>(raw.size()));
  std::vector<std::uint8_t> packed(packed_size);
  if (level < -1 || level > 9) level = Z_DEFAULT_COMPRESSION;
  if (compress2(packed.data(), &packed_size, raw.data(), static_cast<uLong>(raw.size()), level) !=
      Z_OK) {
    return false;
  }
  out->insert(out->end(), kSignature.begin(), kSignature.end());
  std::vector<std::uint8_t> ihdr;
  PutU32(&ihdr, static_cast<std::uint32_t>(width));
  PutU32(&ihdr, static_cast<std::uint32_t>(height));
  // 8 bits a sample, deflate, adaptive filters, progressive.
  ihdr.insert(ihdr.end(), {8, color_type, 0, 0, 0});
  PutChunk(out, "IHDR", ihdr.data(), ihdr.size());
  if (!plte.empty()) PutChunk(out, "PLTE", plte.data(), plte.size());
  PutChunk(out, "IDAT", packed.data(), packed_size);
  PutChunk(out, "IEND", nullptr, 0);
  return true;
}

}  // namespace

bool EncodePng(const std::uint32_t* pixels, int width, int height, std::ptrdiff_t stride_pixels,
               std::vector<std::uint8_t>* out, int level) {
  if (pixels == nullptr || out == nullptr || width <= 0 || height <= 0 || width > kMaxPngSide ||
      height > kMaxPngSide || stride_pixels < width) {
    return false;
  }
  const std::size_t row_bytes = static_cast<std::size_t>(width) * 3;
  std::vector<std::uint8_t> raw((row_bytes + 1) * static_cast<std::size_t>(height));
  std::uint8_t* dst = raw.data();
  for (int y = 0; y < height; ++y) {
    // Every row is "Sub" filtered: flat runs of colour, the usual content, become zeros.
    *dst++ = 1;
    const std::uint32_t* row = pixels + stride_pixels * y;
    std::uint32_t left = 0;
    for (int x = 0; x < width; ++x) {
      const std::uint32_t p = row[x];
      *dst++ = static_cast<std::uint8_t>((p >> 16) - (left >> 16));
      *dst++ = static_cast<std::uint8_t>((p >> 8) - (left >> 8));
      *dst++ = static_cast<std::uint8_t>(p - left);
      left = p;
    }
  }
  return WriteImage(raw, width, height, 2, {}, level, out);
}

bool EncodeIndexedPng(const std::uint8_t* indices, int width, int height,
                      const std::uint32_t* palette, int colours, std::vector<std::uint8_t>* out,
                      int level) {
  if (indices == nullptr || palette == nullptr || out == nullptr || width <= 0 || height <= 0 ||
      width > kMaxPngSide || height > kMaxPngSide || colours < 1 || colours > 256) {
    return false;
  }
  const auto row_bytes = static_cast<std::size_t>(width);
  std::vector<std::uint8_t> raw((row_bytes + 1) * static_cast<std::size_t>(height));
  std::uint8_t* dst = raw.data();
  for (int y = 0; y < height; ++y) {
    *dst++ = 0;  // no filter: differences of palette indices compress no better
    std::memcpy(dst, indices + row_bytes * static_cast<std::size_t>(y), row_bytes);
    dst += row_bytes;
  }
  std::vector<std::uint8_t> plte;
  for (int k = 0; k < colours; ++k) {
    plte.push_back(static_cast<std::uint8_t>(palette[k] >> 16));
    plte.push_back(static_cast<std::uint8_t>(palette[k] >> 8));
    plte.push_back(static_cast<std::uint8_t>(palette[k]));
  }
  return WriteImage(raw, width, height, 3, plte, level, out);
}

bool DecodePng(const std::uint8_t* data, std::size_t size, PixelImage* result) {
  if (result == nullptr) return false;
  *result = PixelImage();
  if (data == nullptr || size < kSignature.size() ||
      std::memcmp(data, kSignature.data(), kSignature.size()) != 0) {
    return false;
  }
  Header header;
  bool have_header = false;
  std::vector<std::uint32_t> palette;
  std::vector<std::uint8_t> compressed;
  bool data_done = false;  // IDAT chunks must follow each other
  std::size_t pos = kSignature.size();
  while (pos < size) {
    if (size - pos < 12) return false;
    const std::uint32_t length = GetU32(data + pos);
    if (length > 0x7FFFFFFFu || size - pos - 12 < length) return false;
    const std::uint8_t* type = data + pos + 4;
    const std::uint8_t* body = type + 4;
    uLong crc = crc32(0L, Z_NULL, 0);
    crc = crc32(crc, type, static_cast<uInt>(4 + length));
    if (GetU32(body + length) != static_cast<std::uint32_t>(crc)) return false;
    pos += 12 + static_cast<std::size_t>(length);
    const bool first = !have_header;
    if (std::memcmp(type, "IHDR", 4) == 0) {
      if (!first || length != 13) return false;
      header.width = GetU32(body);
      header.height = GetU32(body + 4);
      header.depth = body[8];
      header.color_type = body[9];
      if (body[10] != 0 || body[11] != 0 || body[12] > 1) return false;
      header.interlaced = body[12] == 1;
      if (!header.Valid()) return false;
      have_header = true;
    } else if (first) {
      return false;
    } else if (std::memcmp(type, "PLTE", 4) == 0) {
      if (length % 3 != 0 || length == 0 || length / 3 > 256 || !compressed.empty()) return false;
      palette.clear();
      for (std::uint32_t i = 0; i < length; i += 3) {
        palette.push_back(static_cast<std::uint32_t>(body[i]) << 16 |
                          static_cast<std::uint32_t>(body[i + 1]) << 8 | body[i + 2]);
      }
    } else if (std::memcmp(type, "IDAT", 4) == 0) {
      if (data_done) return false;
      compressed.insert(compressed.end(), body, body + length);
    } else if (std::memcmp(type, "IEND", 4) == 0) {
      break;
    } else if ((type[0] & 0x20) == 0) {
      return false;  // an unknown chunk that is critical to the image
    } else if (!compressed.empty()) {
      data_done = true;
    }
  }
  if (!have_header || compressed.empty()) return false;
  if (header.color_type == 3 && palette.empty()) return false;

  // The passes, each with its rows of (filter byte + row bytes), in order in one stream.
  std::vector<Pass> passes;
  if (header.interlaced) {
    passes.assign(kAdam7.begin(), kAdam7.end());
  } else {
    passes.push_back(kWholeImage);
  }
  std::size_t raw_size = 0;
  for (const Pass& p : passes) {
    const std::uint32_t w = PassSide(header.width, p.x0, p.dx);
    const std::uint32_t h = PassSide(header.height, p.y0, p.dy);
    if (w != 0 && h != 0) raw_size += (header.RowBytes(w) + 1) * h;
  }
  std::vector<std::uint8_t> raw(raw_size);
  z_stream zs{};
  if (inflateInit(&zs) != Z_OK) return false;
  std::size_t in_pos = 0;
  std::size_t out_pos = 0;
  int status = Z_OK;
  // zlib counts in 32-bit units; feed and drain it in pieces that fit.
  constexpr std::size_t kPiece = 1u << 30;
  while (out_pos < raw_size) {
    zs.next_in = compressed.data() + in_pos;
    zs.avail_in = static_cast<uInt>(std::min(kPiece, compressed.size() - in_pos));
    zs.next_out = raw.data() + out_pos;
    zs.avail_out = static_cast<uInt>(std::min(kPiece, raw_size - out_pos));
    const uInt avail_in = zs.avail_in;
    const uInt avail_out = zs.avail_out;
    status = inflate(&zs, Z_NO_FLUSH);
    in_pos += avail_in - zs.avail_in;
    out_pos += avail_out - zs.avail_out;
    if (status == Z_STREAM_END) break;
    if (status != Z_OK || (avail_in == zs.avail_in && avail_out == zs.avail_out)) break;
  }
  inflateEnd(&zs);
  if (out_pos != raw_size) return false;

  PixelImage image;
  image.width = static_cast<int>(header.width);
  image.height = static_cast<int>(header.height);
  image.pixels.assign(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height),
                      0);
  const int channels = header.Channels();
  const std::size_t bpp = std::max<std::size_t>(
      1, static_cast<std::size_t>(channels) * static_cast<std::size_t>(header.depth) / 8);
  std::uint8_t* cursor = raw.data();
  for (const Pass& p : passes) {
    const std::uint32_t w = PassSide(header.width, p.x0, p.dx);
    const std::uint32_t h = PassSide(header.height, p.y0, p.dy);
    if (w == 0 || h == 0) continue;
    const std::size_t row_bytes = header.RowBytes(w);
    std::vector<std::uint8_t> zero(row_bytes, 0);
    const std::uint8_t* prev = zero.data();
    for (std::uint32_t r = 0; r < h; ++r) {
      const int filter = *cursor++;
      std::uint8_t* row = cursor;
      if (!Unfilter(filter, row, prev, row_bytes, bpp)) return false;
      const std::size_t y = p.y0 + static_cast<std::size_t>(r) * p.dy;
      std::uint32_t* out = image.pixels.data() + y * header.width;
      for (std::uint32_t i = 0; i < w; ++i) {
        const std::size_t x = p.x0 + static_cast<std::size_t>(i) * p.dx;
        const std::size_t s = static_cast<std::size_t>(i) * static_cast<std::size_t>(channels);
        std::uint32_t pixel = 0;
        switch (header.color_type) {
          case 0:
          case 4: {
            const auto g = static_cast<std::uint32_t>(Sample(row, s, header.depth, true));
            pixel = g << 16 | g << 8 | g;
            break;
          }
          case 2:
          case 6:
            pixel = static_cast<std::uint32_t>(Sample(row, s, header.depth, true)) << 16 |
                    static_cast<std::uint32_t>(Sample(row, s + 1, header.depth, true)) << 8 |
                    static_cast<std::uint32_t>(Sample(row, s + 2, header.depth, true));
            break;
          case 3: {
            const auto index = static_cast<std::size_t>(Sample(row, s, header.depth, false));
            if (index >= palette.size()) return false;
            pixel = palette[index];
            break;
          }
          default:
            return false;
        }
        out[x] = pixel;
      }
      prev = row;
      cursor += row_bytes;
    }
  }
  *result = std::move(image);
  return true;
}

}  // namespace qvis::gdi
