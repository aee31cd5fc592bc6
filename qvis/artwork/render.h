// Rasterises a board document through the device layer's polygon scan converter: each layer is
// composed in its own coverage mask (dark objects set it, clear objects erase what came earlier
// in the same layer), then laid onto the frame in its colour, layers in order.
#ifndef QVIS_ARTWORK_RENDER_H_
#define QVIS_ARTWORK_RENDER_H_

#include <cstdint>

#include "qvis/artwork/document.h"
#include "qvis/compat/export.h"
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
QVIS_API ArtView FitView(const ArtBox& box, double dpi, int border);

QVIS_API gdi::PixelImage RenderArtwork(const ArtDocument& doc, const ArtView& view);

// RenderLayerMask draws one layer as coverage (1: dark) for tests and the comparison tools.
QVIS_API std::vector<std::uint8_t> RenderLayerMask(const Layer& layer, const ArtView& view);

class ArtBoard;

struct ComposeOptions {
  // How much of a layer's colour covers what lies below it (255: opaque).
  std::uint8_t opacity = 255;
  // Per layer index, overriding `opacity` for the layers it covers (an editor's layer panel).
  std::vector<std::uint8_t> layer_opacity;
  // Selected objects are drawn once more over everything, in this colour at half strength.
  bool show_selection = true;
  std::uint32_t highlight = 0xFFFFFF;
  // false draws every object through the general outline and scan conversion instead of the
  // shortcuts for common shapes (the same pixels, slower); for tests comparing the two.
  bool fast_paths = true;
};

// PixelTarget is a 32-bit frame to draw onto: rows of 0x00RRGGBB, `stride` pixels apart.
struct PixelTarget {
  std::uint32_t* pixels = nullptr;
  int width = 0;
  int height = 0;
  std::ptrdiff_t stride = 0;
};

// ComposeBoard draws the board's visible layers onto `target` as `view` frames it (its width
// and height must be the target's; its background is not used). Only objects whose extent
// meets the view are visited. Each layer is composed in its own mask (clear objects erase
// what came earlier in that layer only), then laid over the frame in its colour, layers in
// ascending order.
QVIS_API void ComposeBoard(const ArtBoard& board, const ArtView& view, const PixelTarget& target,
                           const ComposeOptions& options = {});
// RenderBoard is ComposeBoard onto a frame of the view's background colour.
QVIS_API gdi::PixelImage RenderBoard(const ArtBoard& board, const ArtView& view,
                                     const ComposeOptions& options = {});
// The board area a view shows, with `margin_px` pixels around it.
QVIS_API ArtBox ViewArea(const ArtView& view, double margin_px);

}  // namespace qvis

#endif  // QVIS_ARTWORK_RENDER_H_
