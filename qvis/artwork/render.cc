#include "qvis/artwork/render.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "qvis/artwork/board.h"
#include "qvis/artwork/shapes.h"
#include "qvis/gdi/raster/polygon.h"

namespace qvis {

namespace {

constexpr double kPixelLimit = 1099511627776.0;  // 2^40: far beyond any frame, safe in 64 bits

class MaskSink final : public gdi::SpanSink {
 public:
  MaskSink(std::vector<std::uint8_t>& mask, int width) : mask_(mask), width_(width) {}
  void set_value(std::uint8_t v) { value_ = v; }
  void Blit(const gdi::Span* spans, int count) override {
    for (int i = 0; i < count; ++i) {
      const gdi::Span& s = spans[i];
      std::uint8_t* row = mask_.data() + static_cast<std::size_t>(s.y) * width_;
      std::fill(row + s.x0, row + s.x1, value_);
    }
  }

 private:
  std::vector<std::uint8_t>& mask_;
  int width_;
  std::uint8_t value_ = 1;
};

// Composes one layer's coverage. Aperture images with clear parts are built in a scratch mask
// first, so their clear parts cut only the image itself.
class LayerRaster final : public ShapeSink {
 public:
  LayerRaster(const ArtView& view)
      : view_(view),
        scale_(view.dpi / static_cast<double>(kNmPerInch)),
        frame_{0, 0, view.width, view.height},
        mask_(static_cast<std::size_t>(view.width) * view.height, 0),
        mask_sink_(mask_, view.width) {}

  void Fill(const std::vector<Ring>& rings, bool even_odd, bool dark) override {
    points_.clear();
    counts_.clear();
    double minx = kPixelLimit, miny = kPixelLimit, maxx = -kPixelLimit, maxy = -kPixelLimit;
    for (const Ring& r : rings) {
      if (r.size() < 3) continue;
      for (DPoint p : r) {
        // Sample at pixel centres: the scanner samples at whole coordinates, so move the
        // shape half a pixel up and left.
        const double u = std::clamp((p.x - static_cast<double>(view_.origin_x)) * scale_ - 0.5,
                                    -kPixelLimit, kPixelLimit);
        const double v = std::clamp(
            view_.height - (p.y - static_cast<double>(view_.origin_y)) * scale_ - 0.5,
            -kPixelLimit, kPixelLimit);
        if (!(u == u) || !(v == v)) return;  // NaN from a degenerate transform
        minx = std::min(minx, u);
        maxx = std::max(maxx, u);
        miny = std::min(miny, v);
        maxy = std::max(maxy, v);
        points_.push_back({static_cast<std::int64_t>(std::llround(u * gdi::kFixOne)),
                           static_cast<std::int64_t>(std::llround(v * gdi::kFixOne))});
      }
      counts_.push_back(static_cast<int>(r.size()));
    }
    if (counts_.empty() || maxx < -1 || maxy < -1 || minx > view_.width || miny > view_.height) {
      return;
    }
    const gdi::FillRule rule = even_odd ? gdi::FillRule::kAlternate : gdi::FillRule::kWinding;
    if (group_) {
      scratch_sink_.set_value(dark ? 1 : 0);
      scanner_.Fill(points_.data(), counts_.data(), static_cast<int>(counts_.size()), rule,
                    frame_, scratch_sink_);
      group_box_ = Union(group_box_, gdi::IRect{static_cast<int>(std::max(0.0, minx)),
                                                static_cast<int>(std::max(0.0, miny)),
                                                static_cast<int>(std::min<double>(view_.width, maxx + 2)),
                                                static_cast<int>(std::min<double>(view_.height, maxy + 2))});
    } else {
      mask_sink_.set_value(dark ? 1 : 0);
      scanner_.Fill(points_.data(), counts_.data(), static_cast<int>(counts_.size()), rule,
                    frame_, mask_sink_);
    }
  }

  void BeginGroup() override {
    if (scratch_.empty()) scratch_.assign(mask_.size(), 0);
    group_ = true;
    group_box_ = gdi::IRect{};
  }

  void EndGroup(bool dark) override {
    group_ = false;
    const gdi::IRect b = group_box_.Intersect(frame_);
    for (int y = b.top; y < b.bottom; ++y) {
      std::uint8_t* s = scratch_.data() + static_cast<std::size_t>(y) * view_.width;
      std::uint8_t* m = mask_.data() + static_cast<std::size_t>(y) * view_.width;
      for (int x = b.left; x < b.right; ++x) {
        if (s[x]) m[x] = dark ? 1 : 0;
        s[x] = 0;
      }
    }
  }

  std::vector<std::uint8_t>& mask() { return mask_; }

 private:
  static gdi::IRect Union(const gdi::IRect& a, const gdi::IRect& b) {
    if (a.IsEmpty()) return b;
    if (b.IsEmpty()) return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
  }

  class ScratchSink final : public gdi::SpanSink {
   public:
    explicit ScratchSink(LayerRaster* owner) : owner_(owner) {}
    void set_value(std::uint8_t v) { value_ = v; }
    void Blit(const gdi::Span* spans, int count) override {
      for (int i = 0; i < count; ++i) {
        const gdi::Span& s = spans[i];
        std::uint8_t* row = owner_->scratch_.data() + static_cast<std::size_t>(s.y) * owner_->view_.width;
        std::fill(row + s.x0, row + s.x1, value_);
      }
    }

   private:
    LayerRaster* owner_;
    std::uint8_t value_ = 1;
  };

  const ArtView& view_;
  double scale_;
  gdi::IRect frame_;
  std::vector<std::uint8_t> mask_;
  std::vector<std::uint8_t> scratch_;
  MaskSink mask_sink_;
  ScratchSink scratch_sink_{this};
  gdi::PolygonScanner scanner_;
  std::vector<gdi::PointFx> points_;
  std::vector<int> counts_;
  bool group_ = false;
  gdi::IRect group_box_;
};

bool ViewOk(const ArtView& v) {
  return v.width > 0 && v.height > 0 && v.width <= kMaxRenderSide && v.height <= kMaxRenderSide &&
         v.dpi > 0 && std::isfinite(v.dpi);
}

}  // namespace

std::vector<std::uint8_t> RenderLayerMask(const Layer& layer, const ArtView& view) {
  if (!ViewOk(view)) return {};
  LayerRaster raster(view);
  ShapeOptions opt;
  const double nm_per_px = static_cast<double>(kNmPerInch) / view.dpi;
  opt.tolerance_nm = nm_per_px * 0.05;
  opt.min_line_width_nm = nm_per_px * view.min_line_pixels;
  if (layer.negative) {
    std::fill(raster.mask().begin(), raster.mask().end(), std::uint8_t{1});
    for (const ArtObject& o : layer.objects) EmitObject(layer, o, Affine{}, true, opt, raster);
  } else {
    EmitLayer(layer, opt, raster);
  }
  return std::move(raster.mask());
}

gdi::PixelImage RenderArtwork(const ArtDocument& doc, const ArtView& view) {
  gdi::PixelImage img;
  if (!ViewOk(view)) return img;
  img.width = view.width;
  img.height = view.height;
  img.pixels.assign(static_cast<std::size_t>(view.width) * view.height, view.background);
  std::vector<const Layer*> order;
  for (const Layer& l : doc.layers) {
    if (l.visible) order.push_back(&l);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const Layer* a, const Layer* b) { return a->order < b->order; });
  for (const Layer* l : order) {
    const std::vector<std::uint8_t> mask = RenderLayerMask(*l, view);
    const std::uint32_t c = l->colour & 0xFFFFFFu;
    for (std::size_t i = 0; i < mask.size(); ++i) {
      if (mask[i]) img.pixels[i] = c;
    }
  }
  return img;
}

ArtBox ViewArea(const ArtView& view, double margin_px) {
  const double nm_per_px = static_cast<double>(kNmPerInch) / view.dpi;
  const double m = margin_px * nm_per_px;
  const double x0 = static_cast<double>(view.origin_x) - m;
  const double y0 = static_cast<double>(view.origin_y) - m;
  const double x1 = static_cast<double>(view.origin_x) + view.width * nm_per_px + m;
  const double y1 = static_cast<double>(view.origin_y) + view.height * nm_per_px + m;
  static constexpr double kLim = 4.0e18;
  auto c = [](double v) { return static_cast<Coord>(std::clamp(v, -kLim, kLim)); };
  return ArtBox{c(std::floor(x0)), c(std::floor(y0)), c(std::ceil(x1)), c(std::ceil(y1))};
}

namespace {

inline std::uint32_t Blend(std::uint32_t dst, std::uint32_t src, unsigned a) {
  if (a >= 255) return src;
  const unsigned b = 255 - a;
  const unsigned r = (((src >> 16) & 0xFF) * a + ((dst >> 16) & 0xFF) * b + 127) / 255;
  const unsigned g = (((src >> 8) & 0xFF) * a + ((dst >> 8) & 0xFF) * b + 127) / 255;
  const unsigned l = ((src & 0xFF) * a + (dst & 0xFF) * b + 127) / 255;
  return (r << 16) | (g << 8) | l;
}

void LayOver(const std::vector<std::uint8_t>& mask, const PixelTarget& t, std::uint32_t colour,
             unsigned alpha) {
  for (int y = 0; y < t.height; ++y) {
    const std::uint8_t* m = mask.data() + static_cast<std::size_t>(y) * t.width;
    std::uint32_t* row = t.pixels + y * t.stride;
    for (int x = 0; x < t.width; ++x) {
      if (m[x]) row[x] = Blend(row[x], colour, alpha);
    }
  }
}

}  // namespace

void ComposeBoard(const ArtBoard& board, const ArtView& view, const PixelTarget& target,
                  const ComposeOptions& options) {
  if (!ViewOk(view) || target.pixels == nullptr || target.width != view.width ||
      target.height != view.height || target.stride < target.width) {
    return;
  }
  const double nm_per_px = static_cast<double>(kNmPerInch) / view.dpi;
  ShapeOptions opt;
  opt.tolerance_nm = nm_per_px * 0.05;
  opt.min_line_width_nm = nm_per_px * view.min_line_pixels;
  // Thin lines widened to a pixel reach up to a pixel beyond their extent.
  const ArtBox area = ViewArea(view, view.min_line_pixels + 1.0);

  std::vector<int> order;
  for (int i = 0; i < board.LayerCount(); ++i) {
    if (board.layer(i).visible) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return board.layer(a).order < board.layer(b).order; });
  for (int li : order) {
    const Layer& l = board.layer(li);
    const std::vector<std::uint32_t> visible = board.Visible(li, area);
    if (visible.empty()) continue;
    LayerRaster raster(view);
    for (std::uint32_t i : visible) EmitObject(l, l.objects[i], Affine{}, false, opt, raster);
    const std::size_t at = static_cast<std::size_t>(li);
    LayOver(raster.mask(), target, l.colour & 0xFFFFFFu,
            at < options.layer_opacity.size() ? options.layer_opacity[at] : options.opacity);
  }
  if (!options.show_selection || board.selection().empty()) return;
  LayerRaster sel(view);
  bool any = false;
  const ArtBox view_area = area;
  for (ObjectRef r : board.selection()) {
    if (!board.IsLive(r) || !board.layer(r.layer).visible) continue;
    const ArtBox b = board.Bounds(r);
    if (b.IsEmpty() || b.max_x < view_area.min_x || b.min_x > view_area.max_x ||
        b.max_y < view_area.min_y || b.min_y > view_area.max_y) {
      continue;
    }
    ArtObject o = board.object(r);
    o.polarity = Polarity::kDark;  // a selected clear object shows where it cuts
    EmitObject(board.layer(r.layer), o, Affine{}, false, opt, sel);
    any = true;
  }
  if (any) LayOver(sel.mask(), target, options.highlight & 0xFFFFFFu, 128);
}

gdi::PixelImage RenderBoard(const ArtBoard& board, const ArtView& view,
                            const ComposeOptions& options) {
  gdi::PixelImage img;
  if (!ViewOk(view)) return img;
  img.width = view.width;
  img.height = view.height;
  img.pixels.assign(static_cast<std::size_t>(view.width) * view.height, view.background);
  ComposeBoard(board, view, PixelTarget{img.pixels.data(), img.width, img.height, img.width},
               options);
  return img;
}

ArtView FitView(const ArtBox& box, double dpi, int border) {
  ArtView v;
  v.dpi = dpi;
  if (box.IsEmpty()) {
    v.width = v.height = 2 * border + 1;
    return v;
  }
  const double px_per_nm = dpi / static_cast<double>(kNmPerInch);
  const double w = static_cast<double>(box.max_x - box.min_x) * px_per_nm;
  const double h = static_cast<double>(box.max_y - box.min_y) * px_per_nm;
  v.width = static_cast<int>(std::min<double>(std::ceil(w) + 2 * border, kMaxRenderSide + 1.0));
  v.height = static_cast<int>(std::min<double>(std::ceil(h) + 2 * border, kMaxRenderSide + 1.0));
  const double nm_per_px = 1.0 / px_per_nm;
  v.origin_x = box.min_x - static_cast<Coord>(std::llround(border * nm_per_px));
  v.origin_y = box.min_y - static_cast<Coord>(std::llround(border * nm_per_px));
  return v;
}

}  // namespace qvis
