// Spans and the sinks that consume them. Scan converters turn a primitive into horizontal runs
// of pixels (y, [x0, x1)) and hand them in batches to a SpanSink; blitters are sinks that write
// pixels.
#ifndef QVIS_GDI_RASTER_SPAN_H_
#define QVIS_GDI_RASTER_SPAN_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "qvis/gdi/raster/geom.h"

namespace qvis::gdi {

// Span covers pixels x0 <= x < x1 of row y; x0 < x1 always.
struct Span {
  int y = 0;
  int x0 = 0;
  int x1 = 0;
  friend bool operator==(const Span&, const Span&) = default;
};

// SolidTarget is a 32-bpp bitmap that a sink fills with one colour by plain stores. A scan
// converter that places single pixels (a one-pixel line) may store them itself, inside `bounds`,
// rather than describe each as a span.
struct SolidTarget {
  std::uint32_t* bits = nullptr;  // pixel (x, y) is bits[y * stride + x]
  std::ptrdiff_t stride = 0;      // in pixels
  IRect bounds;                   // the pixels that may be written
  std::uint32_t value = 0;        // the word every pixel becomes
};

// SpanSink receives the spans of one primitive. A primitive never sends the same pixel twice
// (the invariant that makes XOR drawing reversible), and every span lies inside the clip box the
// converter was given. Spans come in batches to keep virtual calls off the per-pixel path.
class SpanSink {
 public:
  virtual ~SpanSink() = default;
  // Blit covers `count` spans, in any order. count <= 0: nothing.
  virtual void Blit(const Span* spans, int count) = 0;
  // BlitRect covers the box; the default splits it into rows. An empty box: nothing.
  virtual void BlitRect(const IRect& box);
  // Solid tells whether covering a pixel is just storing one word into a bitmap, and where:
  // true fills `target`. The default (clipping, blending, patterns, raster operations that
  // read the destination): false.
  virtual bool Solid(SolidTarget* target) const {
    (void)target;
    return false;
  }
};

// NullSink drops everything (a null pen or brush, R2_NOP, an empty clip).
class NullSink final : public SpanSink {
 public:
  void Blit(const Span*, int) override {}
  void BlitRect(const IRect&) override {}
};

// RecordingSink keeps the spans it gets, for tests of the scan converters.
class RecordingSink final : public SpanSink {
 public:
  void Blit(const Span* spans, int count) override {
    for (int i = 0; i < count; ++i) spans_.push_back(spans[i]);
  }
  const std::vector<Span>& spans() const { return spans_; }
  void Clear() { spans_.clear(); }

 private:
  std::vector<Span> spans_;
};

// SpanBatch collects spans for a sink and forwards them in blocks. Flush() sends what is left
// (the destructor does too).
class SpanBatch {
 public:
  explicit SpanBatch(SpanSink& sink) : sink_(sink) {}
  SpanBatch(const SpanBatch&) = delete;
  SpanBatch& operator=(const SpanBatch&) = delete;
  ~SpanBatch() { Flush(); }

  void Add(int y, int x0, int x1) {
    if (x0 >= x1) return;
    buf_[n_++] = Span{y, x0, x1};
    if (n_ == kSize) Flush();
  }
  void Flush() {
    if (n_ > 0) sink_.Blit(buf_, n_);
    n_ = 0;
  }

 private:
  static constexpr int kSize = 128;
  SpanSink& sink_;
  Span buf_[kSize];
  int n_ = 0;
};

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_SPAN_H_
