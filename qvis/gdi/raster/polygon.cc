// Polygon scan converter. Pixel (x, y) is inside when the point (x, y) itself is inside the
// polygon, a point on a left or top edge counting as inside and on a right or bottom edge as
// outside; this is how the reference rasteriser fills (sampling at pixel centres would differ on
// every slanted edge). Edge crossings are computed exactly in integers.
#include "qvis/gdi/raster/polygon.h"

#include <algorithm>
#include <bit>
#include <climits>

#include "qvis/compat/int128.h"
#include "qvis/compat/int_math.h"
#include "qvis/gdi/raster/solid_run.h"

namespace qvis::gdi {

// Active edge lists longer than this are sorted in full rather than by insertion.
constexpr std::size_t kInsertionSortLimit = 64;
// Alternate fills with more edges than this take the parity rows: a star or any outline whose
// edges cross keeps reordering a sorted list, while a toggled bit needs no order at all. Fewer
// edges (boxes, triangles) keep the walker, which also emits runs of equal rows as one box.
constexpr std::size_t kParityMinEdges = 4;
// Widest pixel range the parity rows cover (a bit per pixel: 8 KB per row, two rows).
constexpr std::int64_t kParityMaxBits = std::int64_t{1} << 16;
// Figures narrower than this read back every word of their columns on each row.
constexpr std::int64_t kParityNarrowColumns = 512;
namespace {

using i128 = Int128;  // exact products of 64-bit coordinates

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
  // Filled in place: an edge built on the stack and then copied into the list was stored
  // field by field and read back in wider pieces, which the processor cannot forward.
  Edge& e = edges_.emplace_back();
  e.y_top = static_cast<int>(top);
  e.y_end = static_cast<int>(end);
  e.dir = dir;
  // The crossings lie between the end points, so the pixels they give (the first at or right
  // of each) lie between the ceilings of the end points' x.
  ext_lo_ = std::min<std::int64_t>(ext_lo_, CeilDiv(std::min(a.x, b.x), kFixOne));
  ext_hi_ = std::max<std::int64_t>(ext_hi_, CeilDiv(std::max(a.x, b.x), kFixOne));
  // x crossing at row y, in pixels: (a.x * dy + (y * kFixOne - a.y) * dx) / (kFixOne * dy).
  constexpr std::int64_t kSmall = std::int64_t{1} << 30;  // products stay below 2^62
  auto small = [](std::int64_t v) { return v > -kSmall && v < kSmall; };
  if (a.x == b.x && small(a.y) && small(b.y)) {
    // A vertical edge (the stair steps of every dot and round cap): the crossing is a.x on
    // every row, so the floor and remainder come from the fraction bits without a division.
    const std::int64_t dy = b.y - a.y;
    e.x = a.x >> kFixShift;  // arithmetic shift: the floor for negative x too
    e.rem = (a.x & (kFixOne - 1)) * dy;
    e.den = dy * kFixOne;
  } else if (small(a.x) && small(a.y) && small(b.x) && small(b.y)) {
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
                          const IRect& clip_box, SpanSink& sink) {
  if (points == nullptr || counts == nullptr) return;
  // A sink that only stores words into a bitmap keeps nothing outside it: filling the part of
  // the clip inside the bitmap gives the same pixels there (a crossing left of the box still
  // counts for every pixel right of it), and lets the parity rows store their runs directly.
  SolidTarget target;
  const bool direct = sink.Solid(&target);
  const IRect clip = direct ? clip_box.Intersect(target.bounds) : clip_box;
  if (clip.IsEmpty()) return;
  edges_.clear();
  ext_lo_ = INT64_MAX;
  ext_hi_ = INT64_MIN;
  const PointFx* p = points;
  for (int i = 0; i < polygons; ++i) {
    const int n = counts[i];
    if (n <= 0) continue;
    if (n >= 2) {
      for (int k = 0; k + 1 < n; ++k) AddEdge(p[k], p[k + 1], clip);
      AddEdge(p[n - 1], p[0], clip);
    }
    p += n;
  }
  if (edges_.empty()) return;
  std::sort(edges_.begin(), edges_.end(),
            [](const Edge& a, const Edge& b) { return a.y_top < b.y_top; });
  if (rule == FillRule::kAlternate && parity_rows_ && edges_.size() > kParityMinEdges) {
    // Clamped to the clip columns as the walker clamps: an edge left of every visible pixel
    // toggles the first column, one right of them the column past the last.
    const std::int64_t lo = std::clamp<std::int64_t>(ext_lo_, clip.left, clip.right);
    const std::int64_t hi = std::clamp<std::int64_t>(ext_hi_, clip.left, clip.right);
    if (hi - lo < kParityMaxBits) {
      // Edges that stay inside the clip columns need no clamping, and a figure a few words
      // wide is cheaper to read back whole than to track its row's extent edge by edge.
      const bool inside = ext_lo_ >= clip.left && ext_hi_ <= clip.right;
      const bool narrow = hi - lo < kParityNarrowColumns;
      const SolidTarget* t = direct ? &target : nullptr;
      if (inside && narrow) {
        FillParity<false, false>(clip, lo, hi, sink, t);
      } else if (inside) {
        FillParity<false, true>(clip, lo, hi, sink, t);
      } else if (narrow) {
        FillParity<true, false>(clip, lo, hi, sink, t);
      } else {
        FillParity<true, true>(clip, lo, hi, sink, t);
      }
      return;
    }
  }

  // The active edges are kept as sort keys: the edge's pixel x on the current row (the first
  // pixel at or right of its crossing) clamped to the clip columns, above the edge's index and,
  // in the lowest bit, whether it runs downwards.
  // Clamping changes no span (a span's ends are clamped to the clip anyway, and an edge left of
  // every visible pixel adds to the winding of all of them whatever its place among the others);
  // it makes the key a 32-bit number, so the per-row sort compares plain integers. (An edge list
  // holds far fewer than 2^31 edges: each costs tens of bytes.)
  const std::int64_t left = clip.left, right = clip.right;
  auto key_of = [&](std::size_t idx) {
    const Edge& e = edges_[idx];
    const std::int64_t px = std::clamp<std::int64_t>(e.Pixel(), left, right);
    return (std::uint64_t{static_cast<std::uint32_t>(px) ^ 0x80000000u} << 32) | (idx << 1) |
           (e.dir > 0 ? 1u : 0u);
  };
  auto dir_of = [](std::uint64_t key) { return (key & 1u) ? 1 : -1; };
  auto index_of = [](std::uint64_t key) {
    return static_cast<std::size_t>((key >> 1) & 0x7FFFFFFFu);
  };
  auto x_of = [](std::uint64_t key) {
    return static_cast<int>(static_cast<std::uint32_t>(key >> 32) ^ 0x80000000u);
  };
  auto edge_of = [&](std::uint64_t key) -> Edge& {
    return edges_[index_of(key)];
  };
  const int mask = rule == FillRule::kAlternate ? 1 : -1;

  // Spans of single rows gather here and go to the sink in blocks. A span is written whether or
  // not it is kept and the count moves on only when it is: whether the winding is inside flips
  // unpredictably along a row of a self-crossing figure, and a branch there costs more than the
  // store.
  Span* const block = block_;
  int blocked = 0;
  active_.clear();
  std::size_t next = 0;
  int y = edges_.front().y_top;
  // Whether every active edge is vertical and the first row past the shortest one, kept up to
  // date as edges come and go.
  bool all_vertical = true;
  int run_end = clip.bottom;
  while (next < edges_.size() || !active_.empty()) {
    if (active_.empty()) y = std::max(y, edges_[next].y_top);
    while (next < edges_.size() && edges_[next].y_top <= y) {
      const Edge& e = edges_[next];
      if (!e.Vertical()) all_vertical = false;
      run_end = std::min(run_end, e.y_end);
      active_.push_back(key_of(next++));
    }
    // Keep the active edges ordered by their crossing: insertion sort while the list is short
    // and nearly sorted (crossings move little from row to row); a full sort once it is long,
    // where the outline of a very wide pen can cross most of its edges on every row.
    if (active_.size() > kInsertionSortLimit) {
      std::sort(active_.begin(), active_.end());
    } else {
      for (std::size_t i = 1; i < active_.size(); ++i) {
        const std::uint64_t v = active_[i];
        std::size_t j = i;
        while (j > 0 && active_[j - 1] > v) {
          active_[j] = active_[j - 1];
          --j;
        }
        active_[j] = v;
      }
    }
    // Two edges and nothing else until one of them ends or another begins: the inside is what
    // lies between them whatever the rule (the winding there is one edge's direction, never
    // zero and always odd), so those rows need neither keys nor a sort. Convex figures spend
    // nearly all their rows here.
    if (active_.size() == 2 && !all_vertical) {
      const std::size_t i0 = index_of(active_[0]), i1 = index_of(active_[1]);
      Edge& e0 = edges_[i0];
      Edge& e1 = edges_[i1];
      int stop = std::min({e0.y_end, e1.y_end, clip.bottom});
      if (next < edges_.size()) stop = std::min(stop, edges_[next].y_top);
      for (; y < stop; ++y) {
        const std::int64_t p0 = std::clamp<std::int64_t>(e0.Pixel(), left, right);
        const std::int64_t p1 = std::clamp<std::int64_t>(e1.Pixel(), left, right);
        const int l = static_cast<int>(std::min(p0, p1)), r = static_cast<int>(std::max(p0, p1));
        block[blocked] = Span{y, l, r};
        blocked += l < r ? 1 : 0;
        if (blocked == kBlock) {
          sink.Blit(block, blocked);
          blocked = 0;
        }
        e0.Advance();
        e1.Advance();
      }
      // Back to keys for what is left of the two.
      active_.clear();
      all_vertical = true;
      run_end = clip.bottom;
      for (const std::size_t i : {i0, i1}) {
        const Edge& e = edges_[i];
        if (e.y_end <= y) continue;
        if (!e.Vertical()) all_vertical = false;
        run_end = std::min(run_end, e.y_end);
        active_.push_back(key_of(i));
      }
      if (y >= clip.bottom) break;
      continue;
    }
    // Rows repeat exactly while every active edge is vertical: emit them as one box per span.
    int rows = 1;
    if (all_vertical) {
      const int end = next < edges_.size() ? std::min(run_end, edges_[next].y_top) : run_end;
      rows = std::max(end - y, 1);
    }

    int winding = 0;
    if (rows == 1) {
      if (blocked + static_cast<int>(active_.size()) > kBlock) {
        sink.Blit(block, blocked);
        blocked = 0;
      }
      if (active_.size() >= kBlock) {
        // A row of more spans than the block holds: the plain way, flushing as it fills.
        SpanBatch batch(sink);
        for (std::size_t i = 0; i + 1 < active_.size(); ++i) {
          winding += dir_of(active_[i]);
          if ((winding & mask) != 0) batch.Add(y, x_of(active_[i]), x_of(active_[i + 1]));
        }
      } else {
        for (std::size_t i = 0; i + 1 < active_.size(); ++i) {
          winding += dir_of(active_[i]);
          const int l = x_of(active_[i]);
          const int r = x_of(active_[i + 1]);
          block[blocked] = Span{y, l, r};
          blocked += static_cast<int>(((winding & mask) != 0) & (l < r));
        }
      }
    } else {
      if (blocked > 0) sink.Blit(block, blocked);
      blocked = 0;
      for (std::size_t i = 0; i + 1 < active_.size(); ++i) {
        winding += dir_of(active_[i]);
        if ((winding & mask) == 0) continue;
        const int l = x_of(active_[i]);
        const int r = x_of(active_[i + 1]);
        if (l < r) sink.BlitRect(IRect{l, y, r, y + rows});
      }
    }
    y += rows;
    // Advance the edges (a run of several rows has only vertical ones) and drop the finished.
    std::size_t kept = 0;
    all_vertical = true;
    run_end = clip.bottom;
    for (std::size_t i = 0; i < active_.size(); ++i) {
      const std::uint64_t key = active_[i];
      Edge& e = edge_of(key);
      if (e.y_end <= y) continue;
      run_end = std::min(run_end, e.y_end);
      if (e.Vertical()) {
        active_[kept++] = key;  // a vertical edge keeps its key
        continue;
      }
      all_vertical = false;
      e.Advance();
      const std::int64_t px = std::clamp<std::int64_t>(e.Pixel(), left, right);
      active_[kept++] =
          (std::uint64_t{static_cast<std::uint32_t>(px) ^ 0x80000000u} << 32) | (key & 0xFFFFFFFFu);
    }
    active_.resize(kept);
    if (y >= clip.bottom) break;
  }
  if (blocked > 0) sink.Blit(block, blocked);
}

template <bool kClamp, bool kTrackRange>
void PolygonScanner::FillParity(const IRect& clip, std::int64_t lo, std::int64_t hi,
                                SpanSink& sink, const SolidTarget* target) {
  // Pixel x is inside when an odd number of crossings give pixels at or left of it: toggling
  // bit (px - lo) per crossing and reading the set bits left to right yields the span ends in
  // order, with crossings that share a pixel cancelled, so no sort is needed. Rows go in pairs,
  // one row of bits each: every edge is loaded and stored once for two rows.
  const std::size_t words = static_cast<std::size_t>((hi - lo) / 64 + 1);
  if (parity_.size() < 2 * words) parity_.assign(2 * words, 0);
  std::uint64_t* const upper = parity_.data();
  std::uint64_t* const lower = upper + words;
  Span* const block = block_;
  int blocked = 0;
  auto toggle = [&](std::uint64_t* bits, std::int64_t x, std::int64_t& first,
                    std::int64_t& last) {
    std::int64_t off;
    if constexpr (kClamp) {
      off = std::clamp<std::int64_t>(x, lo, hi) - lo;
    } else {
      off = x - lo;
    }
    bits[off >> 6] ^= std::uint64_t{1} << (off & 63);
    if constexpr (kTrackRange) {
      first = std::min(first, off);
      last = std::max(last, off);
    }
  };
  // An edge taken in keeps its pixel, not its floor, in x: the remainder moves to (-den, 0],
  // so the crossing's pixel is x itself on every row, and the step carries when the remainder
  // turns positive (Edge::Advance carries at den).
  auto step = [](Edge& e) {
    e.rem += e.rem_step;
    const std::int64_t carry = e.rem > 0 ? 1 : 0;
    e.x += e.step + carry;
    e.rem -= e.den & -carry;
  };
  auto take_in = [](Edge& e) {
    if (e.rem > 0) {
      e.x += 1;
      e.rem -= e.den;
    }
  };
  // Reads one row of bits back, clearing it.
  auto read_row = [&](std::uint64_t* bits, int y, std::int64_t first, std::int64_t last) {
    bool open = false;
    int start = 0;
    std::uint32_t* const row = target != nullptr ? target->bits + target->stride * y : nullptr;
    for (std::int64_t w = first >> 6; w <= (last >> 6); ++w) {
      std::uint64_t m = bits[w];
      if (m == 0) continue;
      bits[w] = 0;
      const int base = static_cast<int>(lo + w * 64);
      do {
        const int x = base + std::countr_zero(m);
        m &= m - 1;
        if (open) {
          if (row != nullptr) {
            // Runs stored straight into the bitmap, which holds the clip box.
            StoreRun(row + start, x - start, target->value);
          } else {
            block[blocked++] = Span{y, start, x};
            if (blocked == kBlock) {
              sink.Blit(block, blocked);
              blocked = 0;
            }
          }
        }
        start = x;
        open = !open;
      } while (m != 0);
    }
  };
  active_.clear();
  std::size_t next = 0;
  int y = edges_.front().y_top;
  while (next < edges_.size() || !active_.empty()) {
    if (active_.empty()) y = std::max(y, edges_[next].y_top);
    while (next < edges_.size() && edges_[next].y_top <= y) {
      take_in(edges_[next]);
      active_.push_back(next++);
    }
    std::int64_t first = kTrackRange ? hi - lo : 0;
    std::int64_t last = hi - lo;
    if constexpr (kTrackRange) last = 0;
    // Rows y and y + 1; an edge that ends after row y drops out there. Edges never reach the
    // clip's bottom, so on its last row nothing touches the lower row.
    std::size_t kept = 0;
    for (std::size_t i = 0; i < active_.size(); ++i) {
      Edge& e = edges_[static_cast<std::size_t>(active_[i])];
      toggle(upper, e.x, first, last);
      if (e.y_end <= y + 1) continue;
      step(e);
      toggle(lower, e.x, first, last);
      if (e.y_end <= y + 2) continue;
      step(e);
      active_[kept++] = active_[i];
    }
    active_.resize(kept);
    // Edges that start on the lower row.
    while (next < edges_.size() && edges_[next].y_top <= y + 1) {
      Edge& e = edges_[next];
      take_in(e);
      toggle(lower, e.x, first, last);
      if (e.y_end > y + 2) {
        step(e);
        active_.push_back(next);
      }
      ++next;
    }
    read_row(upper, y, first, last);
    if (y + 1 < clip.bottom) read_row(lower, y + 1, first, last);
    y += 2;
    if (y >= clip.bottom) break;
  }
  if (blocked > 0) sink.Blit(block, blocked);
}

}  // namespace qvis::gdi
