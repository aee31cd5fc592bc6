// Polygon scan converter: an edge list over integer or fixed-point vertices, walked row by row
// with the fill rule as a mask on the winding count (ALTERNATE and WINDING share the walker).
// Only rows and columns inside the clip box are visited, so far-off vertices cost nothing.
#ifndef QVIS_GDI_RASTER_POLYGON_H_
#define QVIS_GDI_RASTER_POLYGON_H_

#include <cstdint>
#include <vector>

#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/span.h"

namespace qvis::gdi {

enum class FillRule { kAlternate, kWinding };

// PolygonScanner keeps its edge tables between calls so a warm scanner does not allocate.
class PolygonScanner {
 public:
  // Fill sends the interior of the polygons (counts[i] vertices each, every one implicitly
  // closed) as spans inside `clip`. A pixel is inside when its centre is, a centre exactly on an
  // edge counting as inside for left and top edges only, so shapes that share an edge never
  // share a pixel. Polygons with fewer than 2 vertices contribute nothing; counts are trusted to
  // sum to the number of points.
  void Fill(const PointFx* points, const int* counts, int polygons, FillRule rule,
            const IRect& clip, SpanSink& sink);
  // Fill with integer vertices.
  void Fill(const PointI* points, const int* counts, int polygons, FillRule rule,
            const IRect& clip, SpanSink& sink);

  // Whether alternate fills of many edges may take the parity rows (on by default). Off, every
  // fill takes the sorted walker; the two give the same pixels, which the tests check.
  void set_parity_rows(bool on) { parity_rows_ = on; }

 private:
  // Edge: the crossing of the current row's sample line is x + rem / den pixels (0 <= rem <
  // den; the parity rows move rem to (-den, 0] when they take an edge in, see FillParity).
  struct Edge {
    int y_top = 0;         // first row whose sample line the edge crosses
    int y_end = 0;         // one past the last such row
    std::int64_t x = 0;    // whole pixels of the crossing
    std::int64_t step = 0; // whole pixels of the step per row
    std::int64_t rem = 0;  // the crossing's fraction, in 1/den pixels
    std::int64_t rem_step = 0;
    std::int64_t den = 0;
    int dir = 0;           // +1 downwards, -1 upwards

    bool Vertical() const { return step == 0 && rem_step == 0; }
    // Pixel: the first pixel at or right of the crossing.
    std::int64_t Pixel() const { return x + (rem > 0 ? 1 : 0); }
    // Advance moves to the next row's crossing; the carry is taken without a branch, since it
    // comes about half the time on a slanted edge.
    void Advance() {
      rem += rem_step;
      const std::int64_t carry = rem >= den ? 1 : 0;
      x += step + carry;
      rem -= den & -carry;
    }
  };

  void AddEdge(PointFx a, PointFx b, const IRect& clip);
  // FillParity walks the rows of an alternate fill two at a time, toggling one bit per edge
  // crossing in a row of bits per row over the pixel columns [lo, hi]; the set bits, in order,
  // are the span ends. With a target (the sink's plain-copy bitmap, which holds the clip box)
  // the runs are stored into it directly. kClamp: some edge reaches outside the clip columns;
  // kTrackRange: read back only the columns the rows' crossings span.
  template <bool kClamp, bool kTrackRange>
  void FillParity(const IRect& clip, std::int64_t lo, std::int64_t hi, SpanSink& sink,
                  const SolidTarget* target);

  std::vector<Edge> edges_;
  std::vector<std::uint64_t> active_;  // sort keys: clamped pixel x, then edge index
  std::vector<PointFx> fx_;
  std::vector<std::uint64_t> parity_;  // all zero between rows
  std::int64_t ext_lo_ = 0;  // first pixel column any kept edge can reach
  std::int64_t ext_hi_ = 0;  // last such column
  bool parity_rows_ = true;
  // Spans of single rows gather here before they go to the sink: a member, since a local array
  // of spans would be cleared on every call.
  static constexpr int kBlock = 128;
  Span block_[kBlock];
};

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_POLYGON_H_
