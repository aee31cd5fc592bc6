// Helpers of the artwork tests: read Gerber text into a layer and draw it into a coverage mask
// framed in inches, and compare a mask with a shape given by its signed distance.
#ifndef QVIS_ARTWORK_ARTWORK_TEST_UTIL_H_
#define QVIS_ARTWORK_ARTWORK_TEST_UTIL_H_

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/render.h"

namespace qvis::testing_util {

inline Layer ReadOk(const std::string& text) {
  Layer layer;
  const ReadResult r = ReadGerber(text, &layer);
  EXPECT_TRUE(r.ok) << r.error.ToString();
  return layer;
}

// A w x h pixel view at `dpi` whose lower-left corner is board (x, y) inches.
inline ArtView View(double dpi, int w, int h, double x = 0, double y = 0) {
  ArtView v;
  v.dpi = dpi;
  v.width = w;
  v.height = h;
  v.origin_x = static_cast<Coord>(std::llround(x * kNmPerInch));
  v.origin_y = static_cast<Coord>(std::llround(y * kNmPerInch));
  return v;
}

struct Mask {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> bits;
  bool At(int i, int j) const { return bits[static_cast<std::size_t>(j) * width + i] != 0; }
  int Count() const {
    int n = 0;
    for (std::uint8_t b : bits) n += b != 0;
    return n;
  }
};

inline Mask Draw(const std::string& gerber, const ArtView& view) {
  const Layer layer = ReadOk(gerber);
  return Mask{view.width, view.height, RenderLayerMask(layer, view)};
}

// Checks every pixel whose centre (x, y), in pixels with y down, is further than `margin`
// from the edge of the shape: inked iff sd(x, y) < 0 (sd: signed distance, negative inside).
// Returns the number of pixels checked, so a test can tell that the shape was there at all.
inline int ExpectShape(const Mask& m, const std::function<double(double, double)>& sd,
                       double margin = 0.15) {
  int checked = 0, wrong = 0;
  for (int j = 0; j < m.height; ++j) {
    for (int i = 0; i < m.width; ++i) {
      const double d = sd(i + 0.5, j + 0.5);
      if (std::fabs(d) <= margin) continue;
      ++checked;
      if ((d < 0) != m.At(i, j)) {
        if (++wrong <= 5) {
          ADD_FAILURE() << "pixel (" << i << ", " << j << ") " << (m.At(i, j) ? "inked" : "blank")
                        << ", distance " << d;
        }
      }
    }
  }
  EXPECT_EQ(wrong, 0);
  return checked;
}

inline double CircleSd(double x, double y, double cx, double cy, double r) {
  return std::hypot(x - cx, y - cy) - r;
}

inline double BoxSd(double x, double y, double x0, double y0, double x1, double y1) {
  const double dx = std::max(x0 - x, x - x1), dy = std::max(y0 - y, y - y1);
  if (dx <= 0 && dy <= 0) return std::max(dx, dy);
  return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0));
}

// Gerber header in inches, 2.6 format, with the given apertures and macros.
inline std::string InchHeader(const std::string& defs) {
  return "%FSLAX26Y26*%\n%MOIN*%\nG75*\n" + defs;
}

}  // namespace qvis::testing_util

#endif  // QVIS_ARTWORK_ARTWORK_TEST_UTIL_H_
