// A small PNG codec over zlib: what the Windows build uses for PNG in and out (the platform has
// no PNG library of its own), portable and also built and tested on Linux, where its output is
// checked against libpng's.
#ifndef QVIS_GDI_PNG_CODEC_H_
#define QVIS_GDI_PNG_CODEC_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "qvis/gdi/png_io.h"

namespace qvis::gdi {

// EncodePng appends an 8-bit RGB PNG of width x height pixels (0x00RRGGBB, rows
// `stride_pixels` apart) to `out`. False for an empty or oversized image or a null buffer.
// `level` is zlib's compression level (-1: its default, 1: fastest).
QVIS_API bool EncodePng(const std::uint32_t* pixels, int width, int height,
                        std::ptrdiff_t stride_pixels, std::vector<std::uint8_t>* out,
                        int level = -1);

// EncodeIndexedPng appends an 8-bit palette PNG: one byte a pixel (`indices`, rows `width`
// apart), each an index into `palette` (0x00RRGGBB, 1 to 256 colours). A picture of few
// colours, such as a rendered board, is a third of the RGB data to compress. False for an
// empty or oversized image, a null buffer or a bad palette; an index beyond the palette is the
// caller's fault and makes a file readers refuse.
QVIS_API bool EncodeIndexedPng(const std::uint8_t* indices, int width, int height,
                               const std::uint32_t* palette, int colours,
                               std::vector<std::uint8_t>* out, int level = -1);

// DecodePng reads a PNG of any standard colour type and bit depth (grey, grey + alpha, RGB,
// RGBA, palette; 1 to 16 bits; plain or interlaced) into 0x00RRGGBB pixels: alpha is dropped,
// 16-bit samples are rounded to 8 bits, gamma chunks are ignored. Every chunk's CRC is checked;
// a damaged, truncated or oversized image (sides above kMaxPngSide) returns false and leaves
// `image` empty. The end marker is not required once all image data has been read.
QVIS_API bool DecodePng(const std::uint8_t* data, std::size_t size, PixelImage* image);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_PNG_CODEC_H_
