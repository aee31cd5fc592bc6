// Polygon scan converter. Pixel (x, y) is inside when the point (x, y) itself is inside the
// polygon, a point on a left or top edge counting as inside and on a right or bottom edge as
// outside; this is how the reference rasteriser fills (sampling at pixel centres would differ on
// every slanted edge). Edge crossings are computed exactly in integers.
#include "qvis/gdi/raster/polygon.h"

#include <algorithm>
#include <climits>

#include "qvis/compat/int_math.h"

namespace qvis::gdi {

// Active edge lists longer than this are sorted with a stable sort rather than by insertion.
constexpr std::size_t kInsertionSortLimit = 64;
namespace {

__extension__ typedef __int128 i128;  // exact products of 64-bit coordinates


}  // namespace

void PolygonScanner::AddEdge(PointFx a, PointFx b, const IRect& clip) {
  if (a.y == b.y) return;
  int dir = 1;
  if (a.y > b.y) {
    std::swap(a, b);
    dir = -1;
  }
  // Rows whose sample line y * kFixOne lies in [a.y, b.y).
  const std::int64_t row_top = CeilDiv(a.y, kFixOne);
  const std::int64_t row_end = CeilDiv(b.y, kFixOne);
  const std::int64_t top = std::max<std::int64_t>(row_top, clip.top);
  const std::int64_t end = std::min<std::int64_t>(row_end, clip.bottom);
  if (top >= end) return;
  Edge e;
  e.y_top = static_cast<int>(top);
  e.y_end = static_cast<int>(end);
  e.dir = dir;
  // x crossing at row y, in pixels: (a.x * dy + (y * kFixOne - a.y) * dx) / (kFixOne * dy).
  constexpr std::int64_t kSmall = std::int64_t{1} << 30;  // products stay below 2^62
  auto small = [](std::int64_t v) { return v > -kSmall && v < kSmall; };
  if (small(a.x) && small(a.y) && small(b.x) && small(b.y)) {
    const std::int64_t dy = b.y - a.y, dx = b.x - a.x, den = dy * kFixOne;
    const std::int64_t num = a.x * dy + (top * kFixOne - a.y) * dx;
    e.x = FloorDiv(num, den);
    e.rem = num - e.x * den;
    e.step = FloorDiv(dx * kFixOne, den);
    e.rem_step = dx * kFixOne - e.step * den;
    e.den = den;
  } else {
    const i128 dy = b.y - a.y;
    const i128 dx = b.x - a.x;
    const i128 den = dy * kFixOne;
    const i128 num = i128{a.x} * dy + (i128{top} * kFixOne - a.y) * dx;
    e.x = static_cast<std::int64_t>(FloorDiv(num, den));
    e.rem = static_cast<std::int64_t>(num - i128{e.x} * den);
    e.step = static_cast<std::int64_t>(FloorDiv(dx * kFixOne, den));
    e.rem_step = static_cast<std::int64_t>(dx * kFixOne - i128{e.step} * den);
    e.den = static_cast<std::int64_t>(den);
  }
  edges_.push_back(e);
}

void PolygonScanner::Fill(const PointI* points, const int* counts, int polygons, FillRule rule,
                          const IRect& clip, SpanSink& sink) {
  std::int64_t total = 0;
  for (int i = 0; i < polygons; ++i) total += std::max(counts[i], 0);
  fx_.resize(static_cast<std::size_t>(total));
  for (std::int64_t i = 0; i < total; ++i) fx_[static_cast<std::size_t>(i)] = ToFx(points[i]);
  std::vector<PointFx> pts;
  pts.swap(fx_);  // Fill(PointFx) below may not reuse fx_ while we read from it
  Fill(pts.data(), counts, polygons, rule, clip, sink);
  pts.swap(fx_);
}

void PolygonScanner::Fill(const PointFx* points, const int* counts, int polygons, FillRule rule,
                          const IRect& clip, SpanSink& sink) {
  if (clip.IsEmpty() || points == nullptr || counts == nullptr) return;
  edges_.clear();
  const PointFx* p = points;
  for (int i = 0; i < polygons; ++i) {
    const int n = counts[i];
    if (n <= 0) continue;
    if (n >= 2) {
      for (int k = 0; k < n; ++k) AddEdge(p[k], p[(k + 1) % n], clip);
    }
    p += n;
  }
  if (edges_.empty()) return;
  std::sort(edges_.begin(), edges_.end(),
            [](const Edge& a, const Edge& b) { return a.y_top < b.y_top; });

  // Pixel x of an edge on the current row: the first pixel at or right of the crossing.
  auto pixel_x = [](const Edge& e) { return e.x + (e.rem > 0 ? 1 : 0); };
  const int mask = rule == FillRule::kAlternate ? 1 : -1;

  SpanBatch batch(sink);
  active_.clear();
  std::size_t next = 0;
  int y = edges_.front().y_top;
  while (next < edges_.size() || !active_.empty()) {
    if (active_.empty()) y = std::max(y, edges_[next].y_top);
    while (next < edges_.size() && edges_[next].y_top <= y) {
      active_.push_back(static_cast<int>(next++));
    }
    // Keep the active edges ordered by their crossing: insertion sort while the list is short
    // and nearly sorted; a stable sort (the same order for equal crossings) once it is long,
    // where the outline of a very wide pen can cross most of its edges on every row.
    if (active_.size() > kInsertionSortLimit) {
      std::stable_sort(active_.begin(), active_.end(), [&](int a, int b) {
        return pixel_x(edges_[static_cast<std::size_t>(a)]) <
               pixel_x(edges_[static_cast<std::size_t>(b)]);
      });
    }
    for (std::size_t i = 1; i < active_.size(); ++i) {
      const int v = active_[i];
      const std::int64_t xv = pixel_x(edges_[static_cast<std::size_t>(v)]);
      std::size_t j = i;
      while (j > 0 && pixel_x(edges_[static_cast<std::size_t>(active_[j - 1])]) > xv) {
        active_[j] = active_[j - 1];
        --j;
      }
      active_[j] = v;
    }
    // Rows repeat exactly while every active edge is vertical: emit them as one box per span.
    bool all_vertical = true;
    int run_end = clip.bottom;
    for (int idx : active_) {
      const Edge& e = edges_[static_cast<std::size_t>(idx)];
      if (e.step != 0 || e.rem_step != 0) all_vertical = false;
      run_end = std::min(run_end, e.y_end);
    }
    if (next < edges_.size()) run_end = std::min(run_end, edges_[next].y_top);
    const int rows = all_vertical ? std::max(run_end - y, 1) : 1;

    int winding = 0;
    for (std::size_t i = 0; i + 1 < active_.size(); ++i) {
      winding += edges_[static_cast<std::size_t>(active_[i])].dir;
      if ((winding & mask) == 0) continue;
      const std::int64_t x0 = pixel_x(edges_[static_cast<std::size_t>(active_[i])]);
      const std::int64_t x1 = pixel_x(edges_[static_cast<std::size_t>(active_[i + 1])]);
      const int l = SaturateToInt(std::max<std::int64_t>(x0, clip.left));
      const int r = SaturateToInt(std::min<std::int64_t>(x1, clip.right));
      if (l >= r) continue;
      if (rows == 1) {
        batch.Add(y, l, r);
      } else {
        batch.Flush();
        sink.BlitRect(IRect{l, y, r, y + rows});
      }
    }
    y += rows;
    // Advance the edges and drop the finished ones.
    std::size_t kept = 0;
    for (std::size_t i = 0; i < active_.size(); ++i) {
      Edge& e = edges_[static_cast<std::size_t>(active_[i])];
      if (e.y_end <= y) continue;
      for (int k = 0; k < rows && (e.step != 0 || e.rem_step != 0); ++k) {
        e.x += e.step;
        e.rem += e.rem_step;
        if (e.rem >= e.den) {
          e.rem -= e.den;
          ++e.x;
        }
      }
      active_[kept++] = active_[i];
    }
    active_.resize(kept);
    if (y >= clip.bottom) break;
  }
}

}  // namespace qvis::gdi
