// SpanRegion: the pixel set of a region as sorted y-bands, each band a sorted list of disjoint
// x-intervals (the same list on every row of the band). Regions, clip regions and the clip
// wrapper of the blitters are built on it.
#ifndef QVIS_GDI_RASTER_REGION_H_
#define QVIS_GDI_RASTER_REGION_H_

#include <cstddef>
#include <utility>
#include <vector>

#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/span.h"

namespace qvis::gdi {

enum class RegionKind { kEmpty, kSimple, kComplex };
enum class RegionOp { kAnd, kOr, kXor, kDiff };

class SpanRegion {
 public:
  // Band: rows top <= y < bottom share the intervals walls[first .. first + 2 * count).
  struct Band {
    int top = 0;
    int bottom = 0;
    int first = 0;
    int count = 0;
  };

  SpanRegion() = default;
  // FromRect: the box (empty boxes give the empty region).
  static SpanRegion FromRect(const IRect& box);
  // Combine: a op b. Bands are coalesced, so equal pixel sets have equal representations.
  static SpanRegion Combine(const SpanRegion& a, const SpanRegion& b, RegionOp op);
  // Combine into `out`, reusing its memory; out must be neither a nor b.
  static void Combine(const SpanRegion& a, const SpanRegion& b, RegionOp op, SpanRegion* out);
  // SetRect makes the region the box, reusing its memory.
  void SetRect(const IRect& box);
  // Clear empties the region and keeps its memory for the next shape.
  void Clear() {
    bands_.clear();
    walls_.clear();
    bounds_ = IRect{};
  }

  bool IsEmpty() const { return bands_.empty(); }
  RegionKind Kind() const {
    if (bands_.empty()) return RegionKind::kEmpty;
    return (bands_.size() == 1 && bands_[0].count == 1) ? RegionKind::kSimple
                                                         : RegionKind::kComplex;
  }
  // Bounds: the bounding box, empty for the empty region.
  const IRect& Bounds() const { return bounds_; }
  bool Contains(int x, int y) const;
  // Intersects: whether any pixel of the box lies in the region.
  bool Intersects(const IRect& box) const;
  // Offset moves the region; coordinates saturate at the 32-bit range (pixels pushed past it
  // are dropped).
  void Offset(int dx, int dy);
  // Emit sends the part of the region inside `clip` to the sink, row by row.
  void Emit(const IRect& clip, SpanSink& sink) const;

  const std::vector<Band>& bands() const { return bands_; }
  const std::vector<int>& walls() const { return walls_; }
  // FindBand returns the index of the band holding row y, or -1.
  int FindBand(int y) const;

  friend bool operator==(const SpanRegion& a, const SpanRegion& b) {
    return a.bounds_ == b.bounds_ && a.walls_ == b.walls_ && a.BandsEqual(b);
  }

 private:
  friend class RegionBuilder;
  bool BandsEqual(const SpanRegion& o) const;
  // Append adds a band below the last one, merging it when it continues the last band with
  // the same intervals. Used by the builders, which produce bands in order.
  void AppendBand(int top, int bottom, const int* walls, int count);
  // AppendTailBand makes a band of the walls from index `first` to the end of walls_ (written
  // there by the caller), dropping them again when they are empty or continue the last band.
  void AppendTailBand(int top, int bottom, std::size_t first);
  // Continues: whether a band from `top` with these walls (count intervals) extends `last`
  // (same intervals, no gap), so the two are one band.
  bool Continues(const Band& last, int top, const int* walls, int count) const;
  void ComputeBounds();

  std::vector<Band> bands_;
  std::vector<int> walls_;
  IRect bounds_;
};

// RegionBuilder is a sink that collects spans in any order (overlaps allowed) and turns them into
// a region.
class RegionBuilder final : public SpanSink {
 public:
  void Blit(const Span* spans, int count) override;
  void BlitRect(const IRect& box) override;
  // Build returns the region of every span received so far and resets the builder.
  SpanRegion Build();
  // Build into `out`, reusing its memory and the builder's: a builder and a region kept from
  // call to call build without allocating once they have grown to the shapes drawn.
  void Build(SpanRegion* out);

 private:
  std::vector<Span> spans_;
  std::vector<IRect> boxes_;
  // Working lists of Build, kept for the next one.
  std::vector<IRect> active_;
  std::vector<std::pair<int, int>> intervals_;
  std::vector<int> walls_;
};

// RegionClipSink forwards the parts of the spans that lie in a region to another sink.
class RegionClipSink final : public SpanSink {
 public:
  RegionClipSink() = default;
  void Reset(const SpanRegion* region, SpanSink* target) {
    region_ = region;
    target_ = target;
  }
  void Blit(const Span* spans, int count) override;
  void BlitRect(const IRect& box) override;

 private:
  const SpanRegion* region_ = nullptr;
  SpanSink* target_ = nullptr;
};

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_REGION_H_
