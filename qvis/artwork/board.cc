#include "qvis/artwork/board.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <utility>

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>

#include "qvis/artwork/shapes.h"

namespace qvis {

namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;
// Double coordinates: exact for whole nanometres up to 2^53, and the R*-tree's area sums
// cannot overflow as 64-bit integers would on hostile extents.
using BPoint = bg::model::point<double, 2, bg::cs::cartesian>;
using BBox = bg::model::box<BPoint>;
using Entry = std::pair<BBox, std::uint32_t>;
using Tree = bgi::rtree<Entry, bgi::rstar<16>>;

BBox ToB(const ArtBox& b) {
  return BBox(BPoint(static_cast<double>(b.min_x), static_cast<double>(b.min_y)),
              BPoint(static_cast<double>(b.max_x), static_cast<double>(b.max_y)));
}
Coord Lo(double v) { return static_cast<Coord>(std::floor(v)); }
Coord Hi(double v) { return static_cast<Coord>(std::ceil(v)); }

// Collects the box of an object's outline, clear parts of aperture images included (they lie
// inside the image anyway).
class BoundsSink final : public ShapeSink {
 public:
  void Fill(const std::vector<Ring>& rings, bool, bool) override {
    for (const Ring& r : rings) {
      for (DPoint p : r) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
        box.Add(static_cast<Coord>(std::floor(p.x)), static_cast<Coord>(std::floor(p.y)));
        box.Add(static_cast<Coord>(std::ceil(p.x)), static_cast<Coord>(std::ceil(p.y)));
      }
    }
  }
  void BeginGroup() override {}
  void EndGroup(bool) override {}
  ArtBox box;
};

// Half extents of a standard aperture as placed by `t`; false for macros and blocks, whose
// extent the outline tells.
bool ApertureHalf(const Layer& layer, int code, const ApertureTransform& t, double* hx,
                  double* hy) {
  auto it = layer.apertures.find(code);
  if (it == layer.apertures.end()) {
    *hx = *hy = 0.0;  // an undefined aperture draws nothing wider than its path
    return true;
  }
  const Aperture& a = it->second;
  double x = 0, y = 0;
  switch (a.kind) {
    case ApertureKind::kCircle:
    case ApertureKind::kPolygon:
      x = y = static_cast<double>(a.size_x) / 2;
      break;
    case ApertureKind::kRectangle:
    case ApertureKind::kObround:
      x = static_cast<double>(a.size_x) / 2;
      y = static_cast<double>(a.size_y) / 2;
      if (std::fmod(std::fabs(t.rotation), 90.0) != 0.0 || a.kind == ApertureKind::kObround) {
        x = y = std::hypot(x, y);
      } else if (std::fmod(std::fabs(t.rotation), 180.0) != 0.0) {
        std::swap(x, y);
      }
      break;
    default:
      return false;
  }
  const double s = std::fabs(t.scale);
  *hx = x * s;
  *hy = y * s;
  return std::isfinite(*hx) && std::isfinite(*hy);
}

// The box of an arc's centre line: its end points and the axis extremes it sweeps over.
void AddArcBox(ArtBox* box, ArtPoint s, ArtPoint e, ArtPoint c, ArcDirection dir) {
  box->Add(s.x, s.y);
  box->Add(e.x, e.y);
  const double r = std::hypot(static_cast<double>(s.x - c.x), static_cast<double>(s.y - c.y));
  const double sweep = ArcSweep(s, e, c, dir);
  double a0 = std::atan2(static_cast<double>(s.y - c.y), static_cast<double>(s.x - c.x));
  if (dir == ArcDirection::kClockwise) a0 -= sweep;  // walk counter-clockwise from the other end
  for (int k = 0; k < 4; ++k) {
    const double axis = k * std::numbers::pi / 2;
    double d = std::fmod(axis - a0, 2 * std::numbers::pi);
    if (d < 0) d += 2 * std::numbers::pi;
    if (d <= sweep + 1e-12) {
      const double x = static_cast<double>(c.x) + r * std::cos(axis);
      const double y = static_cast<double>(c.y) + r * std::sin(axis);
      box->Add(static_cast<Coord>(std::floor(x)), static_cast<Coord>(std::floor(y)));
      box->Add(static_cast<Coord>(std::ceil(x)), static_cast<Coord>(std::ceil(y)));
    }
  }
}

ArtBox Grow(ArtBox b, double hx, double hy) {
  if (b.IsEmpty()) return b;
  const Coord gx = static_cast<Coord>(std::ceil(hx)), gy = static_cast<Coord>(std::ceil(hy));
  b.min_x -= gx;
  b.max_x += gx;
  b.min_y -= gy;
  b.max_y += gy;
  return b;
}

ArtBox ObjectBounds(const Layer& layer, const ArtObject& o) {
  ArtBox b;
  double hx = 0, hy = 0;
  switch (o.kind) {
    case ObjectKind::kTrack:
      if (!ApertureHalf(layer, o.aperture, {}, &hx, &hy)) break;
      b.Add(o.start.x, o.start.y);
      b.Add(o.end.x, o.end.y);
      return Grow(b, hx, hy);
    case ObjectKind::kArc:
      if (!ApertureHalf(layer, o.aperture, {}, &hx, &hy)) break;
      AddArcBox(&b, o.start, o.end, o.centre, o.direction);
      return Grow(b, std::max(hx, hy), std::max(hx, hy));
    case ObjectKind::kFlash:
      if (!ApertureHalf(layer, o.aperture, o.transform, &hx, &hy)) break;
      b.Add(o.end.x, o.end.y);
      return Grow(b, hx, hy);
    case ObjectKind::kRegion: {
      b.Add(o.contour.start.x, o.contour.start.y);
      ArtPoint prev = o.contour.start;
      for (const ContourSegment& s : o.contour.segments) {
        if (s.is_arc) {
          AddArcBox(&b, prev, s.end, s.centre, s.direction);
        } else {
          b.Add(s.end.x, s.end.y);
        }
        prev = s.end;
      }
      return b;
    }
    default:
      break;
  }
  BoundsSink sink;
  ShapeOptions opt;
  opt.tolerance_nm = 2000.0;
  EmitObject(layer, o, Affine{}, false, opt, sink);
  return Grow(sink.box, 2000.0, 2000.0);  // chords lie inside the curve; cover the curve
}

// Tests an object's outline against a point with a tolerance or against a box.
class HitSink final : public ShapeSink {
 public:
  HitSink(double x, double y, double tol) : px_(x), py_(y), tol_(tol) {}
  HitSink(const ArtBox& box) : box_mode_(true), box_(box) {
    px_ = (static_cast<double>(box.min_x) + static_cast<double>(box.max_x)) / 2;
    py_ = (static_cast<double>(box.min_y) + static_cast<double>(box.max_y)) / 2;
  }
  void Fill(const std::vector<Ring>& rings, bool even_odd, bool dark) override {
    if (hit || (!dark && group_ == 0)) return;
    int winding = 0, crossings = 0;
    for (const Ring& r : rings) {
      const std::size_t n = r.size();
      for (std::size_t i = 0; i < n; ++i) {
        const DPoint a = r[i], b = r[(i + 1) % n];
        if ((a.y <= py_) != (b.y <= py_)) {
          const double x = a.x + (py_ - a.y) * (b.x - a.x) / (b.y - a.y);
          if (x > px_) {
            ++crossings;
            winding += b.y > a.y ? 1 : -1;
          }
        }
        if (box_mode_ ? SegmentMeetsBox(a, b) : SegmentDistance(a, b) <= tol_) {
          hit = true;
          return;
        }
      }
    }
    if (even_odd ? (crossings & 1) != 0 : winding != 0) hit = true;
  }
  void BeginGroup() override { ++group_; }
  void EndGroup(bool) override { --group_; }
  bool hit = false;

 private:
  double SegmentDistance(DPoint a, DPoint b) const {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double len2 = dx * dx + dy * dy;
    double t = len2 > 0 ? ((px_ - a.x) * dx + (py_ - a.y) * dy) / len2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(a.x + t * dx - px_, a.y + t * dy - py_);
  }
  // Liang-Barsky: does the segment a-b pass through the box?
  bool SegmentMeetsBox(DPoint a, DPoint b) const {
    double t0 = 0, t1 = 1;
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {a.x - static_cast<double>(box_.min_x),
                         static_cast<double>(box_.max_x) - a.x,
                         a.y - static_cast<double>(box_.min_y),
                         static_cast<double>(box_.max_y) - a.y};
    for (int i = 0; i < 4; ++i) {
      if (p[i] == 0) {
        if (q[i] < 0) return false;
      } else {
        const double t = q[i] / p[i];
        if (p[i] < 0) {
          t0 = std::max(t0, t);
        } else {
          t1 = std::min(t1, t);
        }
      }
    }
    return t0 <= t1;
  }
  bool box_mode_ = false;
  ArtBox box_;
  double px_ = 0, py_ = 0, tol_ = 0;
  int group_ = 0;
};

ShapeOptions HitOptions(double tol) {
  ShapeOptions opt;
  opt.tolerance_nm = std::clamp(tol / 4, 10.0, 1000.0);
  return opt;
}

// One undo step made of several edits.
class GroupEdit final : public ArtEdit {
 public:
  explicit GroupEdit(std::string name) : name_(std::move(name)) {}
  void Apply(ArtBoard& b) override {
    for (auto& e : edits_) e->Apply(b);
  }
  void Revert(ArtBoard& b) override {
    for (auto it = edits_.rbegin(); it != edits_.rend(); ++it) (*it)->Revert(b);
  }
  std::string Name() const override { return name_; }
  std::vector<std::unique_ptr<ArtEdit>> edits_;

 private:
  std::string name_;
};

class AddEdit final : public ArtEdit {
 public:
  AddEdit(int layer, ArtObject o) : layer_(layer), object_(std::move(o)) {}
  void Apply(ArtBoard& b) override { index_ = b.AppendSlot(layer_, object_); }
  void Revert(ArtBoard& b) override { b.PopSlot(layer_); }
  std::string Name() const override { return "Add"; }
  ObjectRef ref() const { return {layer_, index_}; }

 private:
  int layer_;
  ArtObject object_;
  std::uint32_t index_ = 0;
};

class LiveEdit final : public ArtEdit {
 public:
  LiveEdit(std::vector<ObjectRef> refs, bool live) : refs_(std::move(refs)), live_(live) {}
  void Apply(ArtBoard& b) override {
    for (ObjectRef r : refs_) b.SetLive(r, live_);
  }
  void Revert(ArtBoard& b) override {
    for (auto it = refs_.rbegin(); it != refs_.rend(); ++it) b.SetLive(*it, !live_);
  }
  std::string Name() const override { return live_ ? "Restore" : "Delete"; }

 private:
  std::vector<ObjectRef> refs_;
  bool live_;
};

// Replaces objects by changed copies; keeps the originals to put back.
class ReplaceEdit final : public ArtEdit {
 public:
  ReplaceEdit(std::string name, std::vector<ObjectRef> refs, std::vector<ArtObject> after)
      : name_(std::move(name)), refs_(std::move(refs)), after_(std::move(after)) {}
  void Apply(ArtBoard& b) override {
    before_.clear();
    for (std::size_t i = 0; i < refs_.size(); ++i) {
      before_.push_back(b.object(refs_[i]));
      b.Replace(refs_[i], after_[i]);
    }
  }
  void Revert(ArtBoard& b) override {
    for (std::size_t i = refs_.size(); i-- > 0;) b.Replace(refs_[i], before_[i]);
  }
  std::string Name() const override { return name_; }

 private:
  std::string name_;
  std::vector<ObjectRef> refs_;
  std::vector<ArtObject> after_;
  std::vector<ArtObject> before_;
};

class ApertureEdit final : public ArtEdit {
 public:
  ApertureEdit(int layer, int code, Aperture a) : layer_(layer), code_(code), a_(std::move(a)) {}
  void Apply(ArtBoard& b) override { b.SetAperture(layer_, code_, a_); }
  void Revert(ArtBoard& b) override { b.EraseAperture(layer_, code_); }
  std::string Name() const override { return "Add aperture"; }

 private:
  int layer_;
  int code_;
  Aperture a_;
};

class AddLayerEdit final : public ArtEdit {
 public:
  explicit AddLayerEdit(Layer l) : layer_(std::move(l)) {}
  void Apply(ArtBoard& b) override { b.PushLayer(layer_); }
  void Revert(ArtBoard& b) override { b.PopLayer(); }
  std::string Name() const override { return "Add layer"; }

 private:
  Layer layer_;
};

class LayerPropsEdit final : public ArtEdit {
 public:
  LayerPropsEdit(int layer, Layer header) : layer_(layer), other_(std::move(header)) {}
  void Apply(ArtBoard& b) override { Swap(b); }
  void Revert(ArtBoard& b) override { Swap(b); }
  std::string Name() const override { return "Layer properties"; }

 private:
  void Swap(ArtBoard& b) {
    Layer& l = b.MutableLayerHeader(layer_);
    std::swap(l.name, other_.name);
    std::swap(l.colour, other_.colour);
    std::swap(l.visible, other_.visible);
    std::swap(l.order, other_.order);
    std::swap(l.file_function, other_.file_function);
    b.Touch(b.Extent());
  }
  int layer_;
  Layer other_;
};

void MoveObject(ArtObject* o, Coord dx, Coord dy) {
  auto mv = [&](ArtPoint& p) {
    p.x += dx;
    p.y += dy;
  };
  mv(o->start);
  mv(o->end);
  mv(o->centre);
  mv(o->contour.start);
  for (ContourSegment& s : o->contour.segments) {
    mv(s.end);
    mv(s.centre);
  }
  for (ArtObject& c : o->children) MoveObject(&c, dx, dy);
}

}  // namespace

struct ArtBoard::Impl {
  struct LayerIndex {
    std::vector<std::uint8_t> live;
    std::vector<ArtBox> bounds;
    Tree tree;
  };
  ArtDocument doc;
  std::vector<LayerIndex> index;
  std::int64_t live_count = 0;
  std::vector<std::unique_ptr<ArtEdit>> done;
  std::vector<std::unique_ptr<ArtEdit>> undone;
  std::vector<std::unique_ptr<GroupEdit>> groups;
  // done.size() at the clean state; npos when that state can no longer be reached.
  std::size_t clean = 0;
  std::vector<BoardListener*> listeners;
  ArtBox touched;
  int notify_hold = 0;

  void IndexLayer(std::size_t li) {
    const Layer& l = doc.layers[li];
    LayerIndex& x = index[li];
    x.live.assign(l.objects.size(), 1);
    x.bounds.resize(l.objects.size());
    std::vector<Entry> entries;
    entries.reserve(l.objects.size());
    for (std::size_t i = 0; i < l.objects.size(); ++i) {
      x.bounds[i] = ObjectBounds(l, l.objects[i]);
      if (!x.bounds[i].IsEmpty()) {
        entries.emplace_back(ToB(x.bounds[i]), static_cast<std::uint32_t>(i));
      }
    }
    x.tree = Tree(entries.begin(), entries.end());  // packed bulk load
    live_count += static_cast<std::int64_t>(l.objects.size());
  }
  void Insert(std::size_t li, std::uint32_t i) {
    LayerIndex& x = index[li];
    x.bounds[i] = ObjectBounds(doc.layers[li], doc.layers[li].objects[i]);
    if (!x.bounds[i].IsEmpty()) x.tree.insert(Entry(ToB(x.bounds[i]), i));
    touched.Add(x.bounds[i]);
  }
  void Remove(std::size_t li, std::uint32_t i) {
    LayerIndex& x = index[li];
    if (!x.bounds[i].IsEmpty()) x.tree.remove(Entry(ToB(x.bounds[i]), i));
    touched.Add(x.bounds[i]);
  }
  void Notify() {
    if (notify_hold > 0) return;
    const ArtBox area = touched;
    touched = ArtBox{};
    for (BoardListener* l : listeners) l->OnBoardChanged(area);
  }
};

ArtBoard::ArtBoard() : impl_(std::make_unique<Impl>()) {}

ArtBoard::ArtBoard(ArtDocument doc, BoardView view) : impl_(std::make_unique<Impl>()), view_(view) {
  impl_->doc = std::move(doc);
  impl_->index.resize(impl_->doc.layers.size());
  for (std::size_t i = 0; i < impl_->doc.layers.size(); ++i) impl_->IndexLayer(i);
}

ArtBoard::~ArtBoard() = default;
ArtBoard::ArtBoard(ArtBoard&&) noexcept = default;
ArtBoard& ArtBoard::operator=(ArtBoard&&) noexcept = default;

int ArtBoard::LayerCount() const { return static_cast<int>(impl_->doc.layers.size()); }

const Layer& ArtBoard::layer(int i) const { return impl_->doc.layers.at(static_cast<std::size_t>(i)); }

bool ArtBoard::IsLive(ObjectRef r) const {
  if (r.layer < 0 || r.layer >= LayerCount()) return false;
  const auto& live = impl_->index[static_cast<std::size_t>(r.layer)].live;
  return r.index < live.size() && live[r.index] != 0;
}

const ArtObject& ArtBoard::object(ObjectRef r) const {
  return layer(r.layer).objects.at(r.index);
}

std::int64_t ArtBoard::LiveCount() const { return impl_->live_count; }

ArtDocument ArtBoard::Document() const {
  ArtDocument out;
  for (std::size_t li = 0; li < impl_->doc.layers.size(); ++li) {
    const Layer& l = impl_->doc.layers[li];
    Layer copy;
    copy.name = l.name;
    copy.file_function = l.file_function;
    copy.colour = l.colour;
    copy.visible = l.visible;
    copy.order = l.order;
    copy.kind = l.kind;
    copy.units = l.units;
    copy.apertures = l.apertures;
    copy.macros = l.macros;
    copy.file_attributes = l.file_attributes;
    copy.objects.reserve(l.objects.size());
    for (std::size_t i = 0; i < l.objects.size(); ++i) {
      if (impl_->index[li].live[i]) copy.objects.push_back(l.objects[i]);
    }
    out.layers.push_back(std::move(copy));
  }
  return out;
}

ArtBox ArtBoard::Bounds(ObjectRef r) const {
  if (r.layer < 0 || r.layer >= LayerCount()) return {};
  const auto& b = impl_->index[static_cast<std::size_t>(r.layer)].bounds;
  return r.index < b.size() ? b[r.index] : ArtBox{};
}

ArtBox ArtBoard::Extent() const {
  ArtBox box;
  for (std::size_t li = 0; li < impl_->index.size(); ++li) {
    if (!impl_->doc.layers[li].visible || impl_->index[li].tree.empty()) continue;
    const BBox b = impl_->index[li].tree.bounds();
    box.Add(Lo(b.min_corner().get<0>()), Lo(b.min_corner().get<1>()));
    box.Add(Hi(b.max_corner().get<0>()), Hi(b.max_corner().get<1>()));
  }
  return box;
}

std::vector<std::uint32_t> ArtBoard::Visible(int layer, const ArtBox& area) const {
  std::vector<std::uint32_t> out;
  if (layer < 0 || layer >= LayerCount() || area.IsEmpty()) return out;
  const Tree& t = impl_->index[static_cast<std::size_t>(layer)].tree;
  t.query(bgi::intersects(ToB(area)),
          boost::make_function_output_iterator([&](const Entry& e) { out.push_back(e.second); }));
  // Drawing order is slot order. When the view holds much of the layer, marking the slots
  // and reading them back in order is cheaper than sorting.
  const std::size_t slots = impl_->index[static_cast<std::size_t>(layer)].live.size();
  if (out.size() > 64 && out.size() > slots / 16) {
    std::vector<std::uint8_t> mark(slots, 0);
    for (std::uint32_t i : out) mark[i] = 1;
    out.clear();
    for (std::size_t i = 0; i < slots; ++i) {
      if (mark[i]) out.push_back(static_cast<std::uint32_t>(i));
    }
  } else {
    std::sort(out.begin(), out.end());
  }
  return out;
}

namespace {

std::vector<int> LayersTopFirst(const ArtDocument& doc) {
  std::vector<int> order;
  for (int i = 0; i < static_cast<int>(doc.layers.size()); ++i) {
    if (doc.layers[static_cast<std::size_t>(i)].visible) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    return doc.layers[static_cast<std::size_t>(a)].order <
           doc.layers[static_cast<std::size_t>(b)].order;
  });
  std::reverse(order.begin(), order.end());
  return order;
}

}  // namespace

std::vector<ObjectRef> ArtBoard::HitPoint(Coord x, Coord y, Coord tolerance) const {
  std::vector<ObjectRef> out;
  // Far beyond any board, and small enough that the sums below cannot overflow.
  constexpr Coord kLimit = Coord{1} << 60;
  tolerance = std::clamp<Coord>(tolerance, 0, kLimit);
  x = std::clamp<Coord>(x, -kLimit, kLimit);
  y = std::clamp<Coord>(y, -kLimit, kLimit);
  ArtBox area{x - tolerance, y - tolerance, x + tolerance, y + tolerance};
  for (int li : LayersTopFirst(impl_->doc)) {
    const Layer& l = impl_->doc.layers[static_cast<std::size_t>(li)];
    std::vector<std::uint32_t> cand = Visible(li, area);
    for (auto it = cand.rbegin(); it != cand.rend(); ++it) {
      HitSink sink(static_cast<double>(x), static_cast<double>(y), static_cast<double>(tolerance));
      EmitObject(l, l.objects[*it], Affine{}, false, HitOptions(static_cast<double>(tolerance)),
                 sink);
      if (sink.hit) out.push_back({li, *it});
    }
  }
  return out;
}

std::vector<ObjectRef> ArtBoard::HitBox(const ArtBox& box, BoxHit mode) const {
  std::vector<ObjectRef> out;
  if (box.IsEmpty()) return out;
  for (int li : LayersTopFirst(impl_->doc)) {
    const Layer& l = impl_->doc.layers[static_cast<std::size_t>(li)];
    std::vector<std::uint32_t> cand;
    const Tree& t = impl_->index[static_cast<std::size_t>(li)].tree;
    auto sink_out = boost::make_function_output_iterator(
        [&](const Entry& e) { cand.push_back(e.second); });
    if (mode == BoxHit::kInside) {
      t.query(bgi::covered_by(ToB(box)), sink_out);
    } else {
      t.query(bgi::intersects(ToB(box)), sink_out);
    }
    std::sort(cand.begin(), cand.end());
    for (auto it = cand.rbegin(); it != cand.rend(); ++it) {
      if (mode == BoxHit::kIntersects) {
        HitSink sink(box);
        EmitObject(l, l.objects[*it], Affine{}, false, HitOptions(1000.0), sink);
        if (!sink.hit) continue;
      }
      out.push_back({li, *it});
    }
  }
  return out;
}

void ArtBoard::Select(std::vector<ObjectRef> refs) {
  std::sort(refs.begin(), refs.end());
  refs.erase(std::unique(refs.begin(), refs.end()), refs.end());
  ArtBox area;
  for (ObjectRef r : selection_) area.Add(Bounds(r));
  for (ObjectRef r : refs) area.Add(Bounds(r));
  selection_ = std::move(refs);
  impl_->touched.Add(area);
  impl_->Notify();
}

bool ArtBoard::IsSelected(ObjectRef r) const {
  return std::binary_search(selection_.begin(), selection_.end(), r);
}

// --- editing ---

ObjectRef ArtBoard::AddObject(int layer, ArtObject object) {
  if (layer < 0 || layer >= LayerCount()) throw std::out_of_range("ArtBoard::AddObject: layer");
  auto edit = std::make_unique<AddEdit>(layer, std::move(object));
  AddEdit* raw = edit.get();
  Do(std::move(edit));
  return raw->ref();
}

namespace {
std::vector<ObjectRef> LiveOnly(const ArtBoard& b, const std::vector<ObjectRef>& refs) {
  std::vector<ObjectRef> out;
  for (ObjectRef r : refs) {
    if (b.IsLive(r)) out.push_back(r);
  }
  std::sort(out.begin(), out.end());
  out.erase(std::unique(out.begin(), out.end()), out.end());
  return out;
}
}  // namespace

void ArtBoard::DeleteObjects(const std::vector<ObjectRef>& refs) {
  std::vector<ObjectRef> live = LiveOnly(*this, refs);
  if (live.empty()) return;
  Do(std::make_unique<LiveEdit>(std::move(live), false));
}

void ArtBoard::MoveObjects(const std::vector<ObjectRef>& refs, Coord dx, Coord dy) {
  std::vector<ObjectRef> live = LiveOnly(*this, refs);
  if (live.empty() || (dx == 0 && dy == 0)) return;
  std::vector<ArtObject> after;
  for (ObjectRef r : live) {
    after.push_back(object(r));
    MoveObject(&after.back(), dx, dy);
  }
  Do(std::make_unique<ReplaceEdit>("Move", std::move(live), std::move(after)));
}

void ArtBoard::SetAperture(const std::vector<ObjectRef>& refs, int aperture) {
  std::vector<ObjectRef> live = LiveOnly(*this, refs);
  if (live.empty()) return;
  std::vector<ArtObject> after;
  for (ObjectRef r : live) {
    after.push_back(object(r));
    after.back().aperture = aperture;
  }
  Do(std::make_unique<ReplaceEdit>("Change aperture", std::move(live), std::move(after)));
}

int ArtBoard::EnsureAperture(int layer, const Aperture& a) {
  const Layer& l = this->layer(layer);
  for (const auto& [code, ap] : l.apertures) {
    if (ap == a) return code;
  }
  const int code = l.apertures.empty() ? 10 : std::max(10, l.apertures.rbegin()->first + 1);
  Do(std::make_unique<ApertureEdit>(layer, code, a));
  return code;
}

void ArtBoard::SetWidth(const std::vector<ObjectRef>& refs, Coord width) {
  std::vector<ObjectRef> live;
  for (ObjectRef r : LiveOnly(*this, refs)) {
    const ObjectKind k = object(r).kind;
    if (k == ObjectKind::kTrack || k == ObjectKind::kArc) live.push_back(r);
  }
  if (live.empty() || width < 0) return;
  BeginGroup("Change width");
  Aperture round;
  round.kind = ApertureKind::kCircle;
  round.size_x = width;
  std::vector<ArtObject> after;
  std::vector<ObjectRef> changed;
  for (ObjectRef r : live) {
    const int code = EnsureAperture(r.layer, round);
    after.push_back(object(r));
    after.back().aperture = code;
  }
  Do(std::make_unique<ReplaceEdit>("Change width", std::move(live), std::move(after)));
  EndGroup();
}

std::vector<ObjectRef> ArtBoard::SetLayer(const std::vector<ObjectRef>& refs, int layer) {
  std::vector<ObjectRef> out;
  if (layer < 0 || layer >= LayerCount()) return out;
  BeginGroup("Change layer");
  for (ObjectRef r : refs) {
    if (!IsLive(r) || r.layer == layer) {
      out.push_back(r);
      continue;
    }
    ArtObject o = object(r);
    const Layer& from = this->layer(r.layer);
    auto it = from.apertures.find(o.aperture);
    if (it != from.apertures.end() && o.kind != ObjectKind::kRegion) {
      o.aperture = EnsureAperture(layer, it->second);
    }
    Do(std::make_unique<LiveEdit>(std::vector<ObjectRef>{r}, false));
    out.push_back(AddObject(layer, std::move(o)));
  }
  EndGroup();
  return out;
}

int ArtBoard::AddLayer(Layer layer) {
  Do(std::make_unique<AddLayerEdit>(std::move(layer)));
  return LayerCount() - 1;
}

void ArtBoard::SetLayerProperties(int layer, const std::string& name, std::uint32_t colour,
                                  bool visible, int order, const std::string& file_function) {
  Layer h;
  h.name = name;
  h.colour = colour;
  h.visible = visible;
  h.order = order;
  h.file_function = file_function;
  (void)this->layer(layer);  // range check
  Do(std::make_unique<LayerPropsEdit>(layer, std::move(h)));
}

void ArtBoard::Do(std::unique_ptr<ArtEdit> edit) {
  Impl& m = *impl_;
  ++m.notify_hold;
  edit->Apply(*this);
  --m.notify_hold;
  if (!m.groups.empty()) {
    m.groups.back()->edits_.push_back(std::move(edit));
    return;
  }
  if (m.clean > m.done.size() && m.clean != static_cast<std::size_t>(-1)) {
    m.clean = static_cast<std::size_t>(-1);  // the clean state was among the undone steps
  }
  m.undone.clear();
  m.done.push_back(std::move(edit));
  m.Notify();
}

void ArtBoard::BeginGroup(std::string name) {
  impl_->groups.push_back(std::make_unique<GroupEdit>(std::move(name)));
  ++impl_->notify_hold;
}

void ArtBoard::EndGroup() {
  Impl& m = *impl_;
  if (m.groups.empty()) return;
  std::unique_ptr<GroupEdit> g = std::move(m.groups.back());
  m.groups.pop_back();
  --m.notify_hold;
  if (g->edits_.empty()) return;
  if (!m.groups.empty()) {
    m.groups.back()->edits_.push_back(std::move(g));
    return;
  }
  if (m.clean > m.done.size() && m.clean != static_cast<std::size_t>(-1)) {
    m.clean = static_cast<std::size_t>(-1);
  }
  m.undone.clear();
  m.done.push_back(std::move(g));
  m.Notify();
}

bool ArtBoard::CanUndo() const { return impl_->groups.empty() && !impl_->done.empty(); }
bool ArtBoard::CanRedo() const { return impl_->groups.empty() && !impl_->undone.empty(); }
std::string ArtBoard::UndoName() const { return CanUndo() ? impl_->done.back()->Name() : ""; }
std::string ArtBoard::RedoName() const { return CanRedo() ? impl_->undone.back()->Name() : ""; }

void ArtBoard::Undo() {
  if (!CanUndo()) return;
  Impl& m = *impl_;
  std::unique_ptr<ArtEdit> e = std::move(m.done.back());
  m.done.pop_back();
  ++m.notify_hold;
  e->Revert(*this);
  --m.notify_hold;
  m.undone.push_back(std::move(e));
  m.Notify();
}

void ArtBoard::Redo() {
  if (!CanRedo()) return;
  Impl& m = *impl_;
  std::unique_ptr<ArtEdit> e = std::move(m.undone.back());
  m.undone.pop_back();
  ++m.notify_hold;
  e->Apply(*this);
  --m.notify_hold;
  m.done.push_back(std::move(e));
  m.Notify();
}

void ArtBoard::MarkClean() {
  impl_->clean = impl_->done.size();
  impl_->Notify();
}

bool ArtBoard::IsModified() const { return impl_->clean != impl_->done.size(); }

void ArtBoard::AddListener(BoardListener* l) { impl_->listeners.push_back(l); }

void ArtBoard::RemoveListener(BoardListener* l) {
  auto& v = impl_->listeners;
  v.erase(std::remove(v.begin(), v.end(), l), v.end());
}

// --- primitive operations ---

std::uint32_t ArtBoard::AppendSlot(int layer, ArtObject object) {
  Impl& m = *impl_;
  const std::size_t li = static_cast<std::size_t>(layer);
  Layer& l = m.doc.layers.at(li);
  l.objects.push_back(std::move(object));
  m.index[li].live.push_back(1);
  m.index[li].bounds.emplace_back();
  const auto i = static_cast<std::uint32_t>(l.objects.size() - 1);
  m.Insert(li, i);
  ++m.live_count;
  return i;
}

void ArtBoard::PopSlot(int layer) {
  Impl& m = *impl_;
  const std::size_t li = static_cast<std::size_t>(layer);
  Layer& l = m.doc.layers.at(li);
  if (l.objects.empty()) return;
  const auto i = static_cast<std::uint32_t>(l.objects.size() - 1);
  if (m.index[li].live[i]) {
    m.Remove(li, i);
    --m.live_count;
  }
  selection_.erase(std::remove(selection_.begin(), selection_.end(), ObjectRef{layer, i}),
                   selection_.end());
  l.objects.pop_back();
  m.index[li].live.pop_back();
  m.index[li].bounds.pop_back();
}

void ArtBoard::SetLive(ObjectRef r, bool live) {
  Impl& m = *impl_;
  const std::size_t li = static_cast<std::size_t>(r.layer);
  auto& flag = m.index.at(li).live.at(r.index);
  if ((flag != 0) == live) return;
  flag = live ? 1 : 0;
  if (live) {
    m.Insert(li, r.index);
    ++m.live_count;
  } else {
    m.Remove(li, r.index);
    --m.live_count;
    selection_.erase(std::remove(selection_.begin(), selection_.end(), r), selection_.end());
  }
}

void ArtBoard::Replace(ObjectRef r, ArtObject object) {
  Impl& m = *impl_;
  const std::size_t li = static_cast<std::size_t>(r.layer);
  const bool live = m.index.at(li).live.at(r.index) != 0;
  if (live) m.Remove(li, r.index);
  m.doc.layers[li].objects[r.index] = std::move(object);
  if (live) m.Insert(li, r.index);
}

void ArtBoard::SetAperture(int layer, int code, const Aperture& a) {
  impl_->doc.layers.at(static_cast<std::size_t>(layer)).apertures[code] = a;
}

void ArtBoard::EraseAperture(int layer, int code) {
  impl_->doc.layers.at(static_cast<std::size_t>(layer)).apertures.erase(code);
}

Layer& ArtBoard::MutableLayerHeader(int layer) {
  return impl_->doc.layers.at(static_cast<std::size_t>(layer));
}

void ArtBoard::PushLayer(Layer layer) {
  Impl& m = *impl_;
  m.doc.layers.push_back(std::move(layer));
  m.index.emplace_back();
  m.IndexLayer(m.doc.layers.size() - 1);
  const auto& t = m.index.back().tree;
  if (!t.empty()) {
    const BBox b = t.bounds();
    m.touched.Add(Lo(b.min_corner().get<0>()), Lo(b.min_corner().get<1>()));
    m.touched.Add(Hi(b.max_corner().get<0>()), Hi(b.max_corner().get<1>()));
  }
}

void ArtBoard::PopLayer() {
  Impl& m = *impl_;
  if (m.doc.layers.empty()) return;
  const int li = LayerCount() - 1;
  m.touched.Add(Extent());
  for (std::uint8_t live : m.index.back().live) m.live_count -= live;
  selection_.erase(std::remove_if(selection_.begin(), selection_.end(),
                                  [&](ObjectRef r) { return r.layer == li; }),
                   selection_.end());
  m.doc.layers.pop_back();
  m.index.pop_back();
}

void ArtBoard::Touch(const ArtBox& area) { impl_->touched.Add(area); }

}  // namespace qvis
