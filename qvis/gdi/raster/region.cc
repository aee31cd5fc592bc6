// SpanRegion: band construction, boolean combination, queries, and the region clip sink.
#include "qvis/gdi/raster/region.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "qvis/compat/int_math.h"

namespace qvis::gdi {
namespace {

bool Apply(RegionOp op, bool a, bool b) {
  switch (op) {
    case RegionOp::kAnd: return a && b;
    case RegionOp::kOr: return a || b;
    case RegionOp::kXor: return a != b;
    case RegionOp::kDiff: return a && !b;
  }
  return false;
}

// CombineWalls merges two sorted interval lists (x0, x1 pairs) by op, appending the result to
// out from index `first` (out's earlier entries are left alone).
void CombineWalls(const int* a, int na, const int* b, int nb, RegionOp op, std::vector<int>* out,
                  std::size_t first) {
  int ia = 0, ib = 0;  // indices into the wall arrays (2 per interval)
  bool in_a = false, in_b = false, in_r = false;
  const int ea = 2 * na, eb = 2 * nb;
  while (ia < ea || ib < eb) {
    int x;
    if (ib >= eb || (ia < ea && a[ia] <= b[ib])) {
      x = a[ia];
    } else {
      x = b[ib];
    }
    while (ia < ea && a[ia] == x) {
      in_a = !in_a;
      ++ia;
    }
    while (ib < eb && b[ib] == x) {
      in_b = !in_b;
      ++ib;
    }
    const bool r = Apply(op, in_a, in_b);
    if (r != in_r) {
      if (r) {
        out->push_back(x);
      } else if (out->size() > first && out->back() == x) {
        out->pop_back();  // empty interval
      } else {
        out->push_back(x);
      }
      in_r = r;
    }
  }
}

}  // namespace

SpanRegion SpanRegion::FromRect(const IRect& box) {
  SpanRegion r;
  r.SetRect(box);
  return r;
}

void SpanRegion::SetRect(const IRect& box) {
  Clear();
  if (box.IsEmpty()) return;
  const int walls[2] = {box.left, box.right};
  AppendBand(box.top, box.bottom, walls, 1);
  ComputeBounds();
}

void SpanRegion::AppendBand(int top, int bottom, const int* walls, int count) {
  if (top >= bottom || count <= 0) return;
  if (!bands_.empty() && Continues(bands_.back(), top, walls, count)) {
    bands_.back().bottom = bottom;
    return;
  }
  Band band{top, bottom, static_cast<int>(walls_.size()), count};
  walls_.insert(walls_.end(), walls, walls + 2 * count);
  bands_.push_back(band);
}

bool SpanRegion::Continues(const Band& last, int top, const int* walls, int count) const {
  return last.bottom == top && last.count == count &&
         std::equal(walls, walls + 2 * count, walls_.begin() + last.first);
}

void SpanRegion::AppendTailBand(int top, int bottom, std::size_t first) {
  const std::size_t n = walls_.size() - first;
  const int count = static_cast<int>(n / 2);
  if (top >= bottom || count <= 0) {
    walls_.resize(first);
    return;
  }
  if (!bands_.empty() && Continues(bands_.back(), top, walls_.data() + first, count)) {
    bands_.back().bottom = bottom;
    walls_.resize(first);
    return;
  }
  bands_.push_back(Band{top, bottom, static_cast<int>(first), count});
}

void SpanRegion::ComputeBounds() {
  if (bands_.empty()) {
    bounds_ = IRect{};
    return;
  }
  int left = INT_MAX, right = INT_MIN;
  for (const Band& b : bands_) {
    left = std::min(left, walls_[static_cast<std::size_t>(b.first)]);
    right = std::max(right, walls_[static_cast<std::size_t>(b.first + 2 * b.count - 1)]);
  }
  bounds_ = IRect{left, bands_.front().top, right, bands_.back().bottom};
}

bool SpanRegion::BandsEqual(const SpanRegion& o) const {
  if (bands_.size() != o.bands_.size()) return false;
  for (std::size_t i = 0; i < bands_.size(); ++i) {
    const Band &a = bands_[i], &b = o.bands_[i];
    if (a.top != b.top || a.bottom != b.bottom || a.count != b.count || a.first != b.first) {
      return false;
    }
  }
  return true;
}

SpanRegion SpanRegion::Combine(const SpanRegion& a, const SpanRegion& b, RegionOp op) {
  SpanRegion r;
  Combine(a, b, op, &r);
  return r;
}

void SpanRegion::Combine(const SpanRegion& a, const SpanRegion& b, RegionOp op, SpanRegion* out) {
  SpanRegion& r = *out;
  r.Clear();
  if (a.IsEmpty() && b.IsEmpty()) return;
  if (op == RegionOp::kAnd && (a.IsEmpty() || b.IsEmpty())) return;
  if (op == RegionOp::kDiff && a.IsEmpty()) return;
  if (b.IsEmpty() && op != RegionOp::kAnd) {
    r = a;  // copying into kept vectors reuses their memory
    return;
  }
  if (a.IsEmpty() && (op == RegionOp::kOr || op == RegionOp::kXor)) {
    r = b;
    return;
  }

  std::size_t ia = 0, ib = 0;
  // Sweep the band edges of both regions from the top.
  int y = std::min(a.bands_.front().top, b.bands_.front().top);
  while (ia < a.bands_.size() || ib < b.bands_.size()) {
    // Skip bands that end at or above y.
    while (ia < a.bands_.size() && a.bands_[ia].bottom <= y) ++ia;
    while (ib < b.bands_.size() && b.bands_[ib].bottom <= y) ++ib;
    if (ia >= a.bands_.size() && ib >= b.bands_.size()) break;
    const Band* ba = ia < a.bands_.size() ? &a.bands_[ia] : nullptr;
    const Band* bb = ib < b.bands_.size() ? &b.bands_[ib] : nullptr;
    // The next y where something changes.
    int next = INT_MAX;
    bool in_a = false, in_b = false;
    if (ba) {
      if (ba->top > y) {
        next = std::min(next, ba->top);
      } else {
        in_a = true;
        next = std::min(next, ba->bottom);
      }
    }
    if (bb) {
      if (bb->top > y) {
        next = std::min(next, bb->top);
      } else {
        in_b = true;
        next = std::min(next, bb->bottom);
      }
    }
    if (in_a || in_b) {
      const int* wa = in_a ? a.walls_.data() + ba->first : nullptr;
      const int* wb = in_b ? b.walls_.data() + bb->first : nullptr;
      // The band's walls go straight to the end of the result's walls.
      const std::size_t first = r.walls_.size();
      CombineWalls(wa, in_a ? ba->count : 0, wb, in_b ? bb->count : 0, op, &r.walls_, first);
      r.AppendTailBand(y, next, first);
    }
    y = next;
    if (next == INT_MAX) break;
  }
  r.ComputeBounds();
}

int SpanRegion::FindBand(int y) const {
  auto it = std::upper_bound(bands_.begin(), bands_.end(), y,
                             [](int v, const Band& b) { return v < b.bottom; });
  if (it == bands_.end() || it->top > y) return -1;
  return static_cast<int>(it - bands_.begin());
}

bool SpanRegion::Contains(int x, int y) const {
  const int i = FindBand(y);
  if (i < 0) return false;
  const Band& b = bands_[static_cast<std::size_t>(i)];
  const int* w = walls_.data() + b.first;
  // The first wall greater than x; x is inside when that wall is a right wall.
  const int* it = std::upper_bound(w, w + 2 * b.count, x);
  return ((it - w) & 1) != 0;
}

bool SpanRegion::Intersects(const IRect& box) const {
  if (box.IsEmpty() || bounds_.Intersect(box).IsEmpty()) return false;
  for (const Band& b : bands_) {
    if (b.bottom <= box.top) continue;
    if (b.top >= box.bottom) break;
    for (int k = 0; k < b.count; ++k) {
      const int x0 = walls_[static_cast<std::size_t>(b.first + 2 * k)];
      const int x1 = walls_[static_cast<std::size_t>(b.first + 2 * k + 1)];
      if (x0 < box.right && x1 > box.left) return true;
    }
  }
  return false;
}

void SpanRegion::Offset(int dx, int dy) {
  if (bands_.empty() || (dx == 0 && dy == 0)) return;
  // Rewritten in place: a band never gains intervals, so the walls written so far never reach
  // the ones still to be read.
  const std::size_t band_count = bands_.size();
  std::size_t bands_out = 0;
  std::size_t walls_out = 0;
  for (std::size_t i = 0; i < band_count; ++i) {
    const Band b = bands_[i];
    const int top = SaturateToInt(std::int64_t{b.top} + dy);
    const int bottom = SaturateToInt(std::int64_t{b.bottom} + dy);
    if (top >= bottom) continue;
    const std::size_t first = walls_out;
    for (int k = 0; k < b.count; ++k) {
      const int x0 = SaturateToInt(std::int64_t{walls_[static_cast<std::size_t>(b.first + 2 * k)]} + dx);
      const int x1 =
          SaturateToInt(std::int64_t{walls_[static_cast<std::size_t>(b.first + 2 * k + 1)]} + dx);
      if (x0 >= x1) continue;
      if (walls_out > first && walls_[walls_out - 1] == x0) {
        walls_[walls_out - 1] = x1;  // two intervals squeezed together at the limit
      } else {
        walls_[walls_out++] = x0;
        walls_[walls_out++] = x1;
      }
    }
    const int count = static_cast<int>((walls_out - first) / 2);
    if (count == 0) continue;
    if (bands_out > 0 && Continues(bands_[bands_out - 1], top, walls_.data() + first, count)) {
      bands_[bands_out - 1].bottom = bottom;
      walls_out = first;
      continue;
    }
    bands_[bands_out++] = Band{top, bottom, static_cast<int>(first), count};
  }
  bands_.resize(bands_out);
  walls_.resize(walls_out);
  ComputeBounds();
}

void SpanRegion::Emit(const IRect& clip, SpanSink& sink) const {
  if (bounds_.Intersect(clip).IsEmpty()) return;
  SpanBatch batch(sink);
  for (const Band& b : bands_) {
    if (b.bottom <= clip.top) continue;
    if (b.top >= clip.bottom) break;
    const int y0 = std::max(b.top, clip.top), y1 = std::min(b.bottom, clip.bottom);
    for (int y = y0; y < y1; ++y) {
      for (int k = 0; k < b.count; ++k) {
        const int x0 = std::max(walls_[static_cast<std::size_t>(b.first + 2 * k)], clip.left);
        const int x1 = std::min(walls_[static_cast<std::size_t>(b.first + 2 * k + 1)], clip.right);
        batch.Add(y, x0, x1);
      }
    }
  }
}

// --- Builder ------------------------------------------------------------------------------------

void RegionBuilder::Blit(const Span* spans, int count) {
  for (int i = 0; i < count; ++i) {
    if (spans[i].x0 < spans[i].x1) spans_.push_back(spans[i]);
  }
}

void RegionBuilder::BlitRect(const IRect& box) {
  if (box.IsEmpty()) return;
  // Boxes taller than one row are kept whole: y holds the top, and the bottom goes into a
  // parallel list so that a tall box costs one entry.
  if (box.bottom - box.top == 1) {
    spans_.push_back(Span{box.top, box.left, box.right});
    return;
  }
  boxes_.push_back(box);
}

SpanRegion RegionBuilder::Build() {
  SpanRegion r;
  Build(&r);
  return r;
}

void RegionBuilder::Build(SpanRegion* out) {
  SpanRegion& r = *out;
  r.Clear();
  // Every span is a one-row box; sweep all boxes by their y edges.
  for (const Span& s : spans_) boxes_.push_back(IRect{s.x0, s.y, s.x1, s.y + 1});
  spans_.clear();
  std::sort(boxes_.begin(), boxes_.end(), [](const IRect& a, const IRect& b) {
    return a.top != b.top ? a.top < b.top : a.left < b.left;
  });
  std::vector<IRect>& active = active_;
  std::vector<std::pair<int, int>>& intervals = intervals_;
  std::vector<int>& walls = walls_;
  active.clear();
  std::size_t next = 0;
  int y = boxes_.empty() ? 0 : boxes_.front().top;
  while (next < boxes_.size() || !active.empty()) {
    if (active.empty() && next < boxes_.size()) y = std::max(y, boxes_[next].top);
    while (next < boxes_.size() && boxes_[next].top <= y) active.push_back(boxes_[next++]);
    // The band runs to the nearest bottom of an active box or top of a pending one.
    std::int64_t band_end = INT64_MAX;
    for (const IRect& a : active) band_end = std::min<std::int64_t>(band_end, a.bottom);
    if (next < boxes_.size()) band_end = std::min<std::int64_t>(band_end, boxes_[next].top);
    intervals.clear();
    for (const IRect& a : active) intervals.emplace_back(a.left, a.right);
    std::sort(intervals.begin(), intervals.end());
    walls.clear();
    for (const auto& [x0, x1] : intervals) {
      if (!walls.empty() && x0 <= walls.back()) {
        walls.back() = std::max(walls.back(), x1);
      } else {
        walls.push_back(x0);
        walls.push_back(x1);
      }
    }
    const int end = static_cast<int>(band_end);
    r.AppendBand(y, end, walls.data(), static_cast<int>(walls.size() / 2));
    y = end;
    active.erase(std::remove_if(active.begin(), active.end(),
                                [end](const IRect& a) { return a.bottom <= end; }),
                 active.end());
  }
  boxes_.clear();
  r.ComputeBounds();
}

// --- Clip sink ----------------------------------------------------------------------------------

void RegionClipSink::Blit(const Span* spans, int count) {
  SpanBatch batch(*target_);
  const auto& bands = region_->bands();
  const auto& walls = region_->walls();
  int band = -1;
  for (int i = 0; i < count; ++i) {
    const Span& s = spans[i];
    if (band < 0 || bands[static_cast<std::size_t>(band)].top > s.y ||
        bands[static_cast<std::size_t>(band)].bottom <= s.y) {
      band = region_->FindBand(s.y);
      if (band < 0) continue;
    }
    const auto& b = bands[static_cast<std::size_t>(band)];
    const int* w = walls.data() + b.first;
    const int* end = w + 2 * b.count;
    // First interval whose right wall lies right of s.x0.
    const int* it = std::upper_bound(w, end, s.x0);
    if ((it - w) & 1) --it;  // s.x0 inside an interval: start at its left wall
    for (; it < end; it += 2) {
      if (it[0] >= s.x1) break;
      batch.Add(s.y, std::max(it[0], s.x0), std::min(it[1], s.x1));
    }
  }
}

void RegionClipSink::BlitRect(const IRect& box) {
  if (box.IsEmpty()) return;
  const auto& walls = region_->walls();
  for (const auto& b : region_->bands()) {
    if (b.bottom <= box.top) continue;
    if (b.top >= box.bottom) break;
    const int y0 = std::max(b.top, box.top), y1 = std::min(b.bottom, box.bottom);
    for (int k = 0; k < b.count; ++k) {
      const int x0 = std::max(walls[static_cast<std::size_t>(b.first + 2 * k)], box.left);
      const int x1 = std::min(walls[static_cast<std::size_t>(b.first + 2 * k + 1)], box.right);
      if (x0 < x1) target_->BlitRect(IRect{x0, y0, x1, y1});
    }
  }
}

}  // namespace qvis::gdi
