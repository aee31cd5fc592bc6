// Rasterises a board document through the device layer's polygon scan converter: each layer is
// composed in its own coverage mask (dark objects set it, clear objects erase what came earlier
// in the same layer), then laid onto the frame in its colour, layers in order.
#ifndef QVIS_ARTWORK_RENDER_H_
#define QVIS_ARTWORK_RENDER_H_

#include <cstdint>

#include "qvis/artwork/document.h"
#include "qvis/gdi/png_io.h"

namespace qvis {

// ArtView frames a board in an image. A board point (x, y) in nanometres lands at
//   u = (x - origin_x) * dpi / 25.4e6 from the left edge,
//   v = height - (y - origin_y) * dpi / 25.4e6 from the top,
// and pixel (i, j) is inked when its centre (i + 0.5, j + 0.5) is inside a dark area.
struct ArtView {
  double dpi = 300.0;
  Coord origin_x = 0;  // board point at the image's outer lower-left corner
  Coord origin_y = 0;
  int width = 0;
  int height = 0;
  std::uint32_t background = 0xFFFFFF;
  // Lines thinner than this many pixels are drawn this wide.
  double min_line_pixels = 1.0;
};

// Largest image RenderArtwork draws, per side; larger views are refused (an empty image).
inline constexpr int kMaxRenderSide = 32768;

// FitView frames `box` in a width x height image (0: derived from the other and the box at
// `dpi`) with `border` pixels around it.
ArtView FitView(const ArtBox& box, double dpi, int border);

gdi::PixelImage RenderArtwork(const ArtDocument& doc, const ArtView& view);

// RenderLayerMask draws one layer as coverage (1: dark) for tests and the comparison tools.
std::vector<std::uint8_t> RenderLayerMask(const Layer& layer, const ArtView& view);

}  // namespace qvis

#endif  // QVIS_ARTWORK_RENDER_H_
