#include "apps/qvis-editor/board.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>

#include "qvis/artwork/io/excellon_reader.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/io/gerber_writer.h"
#include "qvis/artwork/shapes.h"
#include "qvis/compat/atomic_file.h"
#include "qvis/compat/exceptions.h"

namespace qvis::editor {
namespace {

constexpr double kNmPerMmD = 1e6;
constexpr int kFirstAperture = 10;

Coord ToNm(double mm) {
  const double v = std::round(mm * kNmPerMmD);
  if (!(std::fabs(v) < 9e15)) return 0;  // NaN and absurd values: the origin
  return static_cast<Coord>(v);
}

std::string BaseName(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool ReadWholeFile(const std::string& path, std::string* text, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = path + ": cannot be opened";
    return false;
  }
  std::ostringstream s;
  s << in.rdbuf();
  if (in.bad()) {
    *error = path + ": cannot be read";
    return false;
  }
  *text = s.str();
  return true;
}

// The box of one object's dark and clear outlines, in nanometres.
class BoxSink : public ShapeSink {
 public:
  void Fill(const std::vector<Ring>& rings, bool, bool) override {
    for (const Ring& r : rings) {
      for (const DPoint& p : r) {
        min_x = std::min(min_x, p.x);
        min_y = std::min(min_y, p.y);
        max_x = std::max(max_x, p.x);
        max_y = std::max(max_y, p.y);
      }
    }
  }
  void BeginGroup() override {}
  void EndGroup(bool) override {}
  bool Empty() const { return min_x > max_x; }
  double min_x = std::numeric_limits<double>::infinity();
  double min_y = std::numeric_limits<double>::infinity();
  double max_x = -std::numeric_limits<double>::infinity();
  double max_y = -std::numeric_limits<double>::infinity();
};

BoxSink ObjectBox(const Layer& layer, const ArtObject& o) {
  BoxSink box;
  ShapeOptions options;
  options.tolerance_nm = 5000.0;
  EmitObject(layer, o, Affine{}, false, options, box);
  return box;
}

double SegmentDistance(double px, double py, double ax, double ay, double bx, double by) {
  const double dx = bx - ax;
  const double dy = by - ay;
  const double len2 = dx * dx + dy * dy;
  double t = len2 > 0.0 ? ((px - ax) * dx + (py - ay) * dy) / len2 : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  return std::hypot(px - (ax + t * dx), py - (ay + t * dy));
}

void Translate(ArtPoint* p, Coord dx, Coord dy) {
  p->x += dx;
  p->y += dy;
}

void TranslateObject(ArtObject* o, Coord dx, Coord dy) {
  Translate(&o->start, dx, dy);
  Translate(&o->end, dx, dy);
  Translate(&o->centre, dx, dy);
  Translate(&o->contour.start, dx, dy);
  for (ContourSegment& s : o->contour.segments) {
    Translate(&s.end, dx, dy);
    Translate(&s.centre, dx, dy);
  }
  // Step-and-repeat children are placed relative to the block's own origin, which moves with
  // `start`; they are left as they are.
}

ArtObject Track(ArtPoint a, ArtPoint b, int aperture) {
  ArtObject o;
  o.kind = ObjectKind::kTrack;
  o.start = a;
  o.end = b;
  o.aperture = aperture;
  return o;
}

}  // namespace

ArtPoint BoardPoint(double world_x, double world_y) { return {ToNm(world_x), ToNm(-world_y)}; }

void WorldPoint(const ArtPoint& p, double* world_x, double* world_y) {
  *world_x = static_cast<double>(p.x) / kNmPerMmD;
  *world_y = -static_cast<double>(p.y) / kNmPerMmD;
}

std::uint32_t DefaultLayerColour(std::size_t index) {
  static constexpr std::uint32_t kColours[] = {0xC83434, 0x3464C8, 0xE0E0E0, 0xD0C000,
                                               0x30A050, 0xB040B0, 0x40B0B0, 0xE08020};
  return kColours[index % (sizeof(kColours) / sizeof(kColours[0]))];
}

Board::Board() {
  Layer top;
  top.name = "Top";
  top.colour = DefaultLayerColour(0);
  doc_.layers.push_back(std::move(top));
  opacity_.push_back(100);
}

void Board::SetActiveLayer(int layer) {
  if (layer >= 0 && layer < static_cast<int>(doc_.layers.size())) active_ = layer;
}

void Board::Checkpoint() {
  undo_.push_back({doc_, opacity_, active_});
  // A long session keeps the last few hundred steps; each holds a whole board.
  if (undo_.size() > 200) undo_.erase(undo_.begin());
  redo_.clear();
}

void Board::Changed() {
  ++revision_;
  modified_ = true;
}

bool Board::Undo() {
  if (undo_.empty()) return false;
  redo_.push_back({std::move(doc_), std::move(opacity_), active_});
  doc_ = std::move(undo_.back().doc);
  opacity_ = std::move(undo_.back().opacity);
  active_ = undo_.back().active;
  undo_.pop_back();
  selection_.clear();
  Changed();
  return true;
}

bool Board::Redo() {
  if (redo_.empty()) return false;
  undo_.push_back({std::move(doc_), std::move(opacity_), active_});
  doc_ = std::move(redo_.back().doc);
  opacity_ = std::move(redo_.back().opacity);
  active_ = redo_.back().active;
  redo_.pop_back();
  selection_.clear();
  Changed();
  return true;
}

// ---------------------------------------------------------------------------------------------
// Files.

bool Board::ReadArtworkFile(const std::string& path, Layer* layer, std::string* error) {
  std::string text;
  if (!ReadWholeFile(path, &text, error)) return false;
  Layer read;
  ReadResult result;
  if (LooksLikeGerber(text)) {
    result = ReadGerber(text, &read);
  } else {
    result = ReadExcellon(text, &read);
    read.kind = LayerKind::kDrill;
  }
  if (!result.ok) {
    *error = path + ": " + result.error.ToString();
    return false;
  }
  read.name = BaseName(path);
  *layer = std::move(read);
  return true;
}

bool Board::OpenFiles(const std::vector<std::string>& paths, std::string* error) {
  ArtDocument doc;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    Layer layer;
    if (!ReadArtworkFile(paths[i], &layer, error)) return false;
    layer.colour = layer.kind == LayerKind::kDrill ? 0xF0F0F0 : DefaultLayerColour(i);
    layer.order = static_cast<int>(i);
    doc.layers.push_back(std::move(layer));
  }
  if (doc.layers.empty()) {
    *error = "no files to open";
    return false;
  }
  doc_ = std::move(doc);
  opacity_.assign(doc_.layers.size(), 100);
  active_ = 0;
  undo_.clear();
  redo_.clear();
  selection_.clear();
  path_.clear();
  ++revision_;
  modified_ = false;
  return true;
}

void Board::Reset(ArtDocument doc) {
  doc_ = std::move(doc);
  opacity_.assign(doc_.layers.size(), 100);
  active_ = 0;
  undo_.clear();
  redo_.clear();
  selection_.clear();
  ++revision_;
  modified_ = false;
}

bool Board::AddFiles(const std::vector<std::string>& paths, std::string* error) {
  std::vector<Layer> layers;
  for (const std::string& p : paths) {
    Layer layer;
    if (!ReadArtworkFile(p, &layer, error)) return false;
    layers.push_back(std::move(layer));
  }
  Checkpoint();
  for (Layer& l : layers) {
    const std::size_t n = doc_.layers.size();
    l.colour = l.kind == LayerKind::kDrill ? 0xF0F0F0 : DefaultLayerColour(n);
    l.order = static_cast<int>(n);
    doc_.layers.push_back(std::move(l));
    opacity_.push_back(100);
  }
  Changed();
  return true;
}

// The board file is line-oriented text so that it diffs well:
//   qvis-board 1
//   view ZOOM X Y
//   layer KIND COLOUR VISIBLE ORDER OPACITY BYTES NAME
//   <BYTES bytes of the layer as Gerber>
// repeated per layer. Gerber keeps every aperture, macro and attribute the layer holds.
std::string Board::Serialize(const ArtDocument& doc, const std::vector<int>& opacity,
                             const View& view) {
  std::string out = "qvis-board 1\n";
  char line[256];
  std::snprintf(line, sizeof line, "view %.17g %.17g %.17g\n", view.zoom, view.x, view.y);
  out += line;
  for (std::size_t i = 0; i < doc.layers.size(); ++i) {
    const Layer& l = doc.layers[i];
    const std::string gerber = WriteGerber(l, {l.units});
    std::snprintf(line, sizeof line, "layer %s %06X %d %d %d %zu ",
                  l.kind == LayerKind::kDrill ? "drill" : "gerber", l.colour & 0xFFFFFFu,
                  l.visible ? 1 : 0, l.order, i < opacity.size() ? opacity[i] : 100,
                  gerber.size());
    out += line;
    out += l.name;
    out += '\n';
    out += gerber;
  }
  return out;
}

bool Board::Parse(const std::string& text, ArtDocument* doc, std::vector<int>* opacity,
                  View* view, std::string* error) {
  std::size_t at = 0;
  int line_no = 0;
  auto next_line = [&](std::string* line) {
    if (at >= text.size()) return false;
    const std::size_t nl = text.find('\n', at);
    const std::size_t end = nl == std::string::npos ? text.size() : nl;
    *line = text.substr(at, end - at);
    at = nl == std::string::npos ? text.size() : nl + 1;
    ++line_no;
    return true;
  };
  auto fail = [&](const std::string& why) {
    *error = "line " + std::to_string(line_no) + ": " + why;
    return false;
  };
  std::string line;
  if (!next_line(&line) || line != "qvis-board 1") return fail("not a qvis board file (version 1)");
  ArtDocument read;
  std::vector<int> read_opacity;
  View read_view;
  while (next_line(&line)) {
    if (line.empty()) continue;
    if (line.rfind("view ", 0) == 0) {
      if (std::sscanf(line.c_str(), "view %lf %lf %lf", &read_view.zoom, &read_view.x,
                      &read_view.y) != 3) {
        return fail("expected view ZOOM X Y");
      }
      continue;
    }
    char kind[16] = {};
    unsigned colour = 0;
    int visible = 0, order = 0, opac = 100, name_at = 0;
    unsigned long long bytes = 0;
    if (std::sscanf(line.c_str(), "layer %15s %x %d %d %d %llu %n", kind, &colour, &visible,
                    &order, &opac, &bytes, &name_at) != 6 || name_at == 0) {
      return fail("expected layer KIND COLOUR VISIBLE ORDER OPACITY BYTES NAME");
    }
    if (bytes > text.size() - at) return fail("the layer's Gerber text is cut short");
    const int layer_line = line_no;
    Layer layer;
    const ReadResult r = ReadGerber(std::string_view(text).substr(at, bytes), &layer);
    if (!r.ok) {
      *error = "line " + std::to_string(layer_line + r.error.line) + ": " + r.error.text;
      return false;
    }
    for (std::size_t i = at; i < at + bytes; ++i) line_no += text[i] == '\n';
    at += bytes;
    layer.name = line.substr(static_cast<std::size_t>(name_at));
    layer.kind = std::string(kind) == "drill" ? LayerKind::kDrill : LayerKind::kGerber;
    layer.colour = colour & 0xFFFFFFu;
    layer.visible = visible != 0;
    layer.order = order;
    read.layers.push_back(std::move(layer));
    read_opacity.push_back(std::clamp(opac, 0, 100));
  }
  if (read.layers.empty()) return fail("the board has no layers");
  *doc = std::move(read);
  *opacity = std::move(read_opacity);
  *view = read_view;
  return true;
}

bool Board::Save(const std::string& path, const View& view, std::string* error) {
  const std::string text = Serialize(doc_, opacity_, view);
  try {
    WriteFileAtomically(path, text.data(), text.size());
  } catch (const CException& e) {
    *error = path + ": " + e.what();
    return false;
  }
  path_ = path;
  modified_ = false;
  return true;
}

bool Board::Load(const std::string& path, View* view, std::string* error) {
  std::string text;
  if (!ReadWholeFile(path, &text, error)) return false;
  ArtDocument doc;
  std::vector<int> opacity;
  if (!Parse(text, &doc, &opacity, view, error)) {
    *error = path + ": " + *error;
    return false;
  }
  doc_ = std::move(doc);
  opacity_ = std::move(opacity);
  active_ = 0;
  undo_.clear();
  redo_.clear();
  selection_.clear();
  path_ = path;
  ++revision_;
  modified_ = false;
  return true;
}

bool Board::ExportGerber(int layer, const std::string& path, std::string* error) const {
  if (layer < 0 || layer >= static_cast<int>(doc_.layers.size())) {
    *error = "no such layer";
    return false;
  }
  const Layer& l = doc_.layers[static_cast<std::size_t>(layer)];
  const std::string text = WriteGerber(l, {l.units});
  try {
    WriteFileAtomically(path, text.data(), text.size());
  } catch (const CException& e) {
    *error = path + ": " + e.what();
    return false;
  }
  return true;
}

std::string Board::SvgOfVisibleLayers() const {
  const ArtBox box = DocumentExtent(doc_);
  double x0 = 0, y0 = 0, w = 10, h = 10;
  if (!box.IsEmpty()) {
    x0 = static_cast<double>(box.min_x) / kNmPerMmD - 1.0;
    y0 = static_cast<double>(box.min_y) / kNmPerMmD - 1.0;
    w = static_cast<double>(box.max_x - box.min_x) / kNmPerMmD + 2.0;
    h = static_cast<double>(box.max_y - box.min_y) / kNmPerMmD + 2.0;
  }
  char buf[512];
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  std::snprintf(buf, sizeof buf,
                "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%gmm\" height=\"%gmm\" "
                "viewBox=\"%g %g %g %g\">\n<g transform=\"scale(1,-1)\">\n",
                w, h, x0, -(y0 + h), w, h);
  out += buf;
  // Every object as the filled outlines the renderer draws (board mm, y up; the group flips
  // it for SVG's y-down page). Clear polarity paints the background colour.
  class SvgSink : public ShapeSink {
   public:
    SvgSink(std::string* out, std::uint32_t colour) : out_(out), colour_(colour) {}
    void Fill(const std::vector<Ring>& rings, bool even_odd, bool dark) override {
      char b[64];
      std::snprintf(b, sizeof b, "<path fill=\"#%06X\" fill-rule=\"%s\" d=\"",
                    dark ? colour_ : 0xFFFFFFu, even_odd ? "evenodd" : "nonzero");
      *out_ += b;
      for (const Ring& r : rings) {
        for (std::size_t i = 0; i < r.size(); ++i) {
          std::snprintf(b, sizeof b, "%s%.4f %.4f ", i == 0 ? "M" : "L", r[i].x / kNmPerMmD,
                        r[i].y / kNmPerMmD);
          *out_ += b;
        }
        *out_ += "Z";
      }
      *out_ += "\"/>\n";
    }
    void BeginGroup() override {}
    void EndGroup(bool) override {}

   private:
    std::string* out_;
    std::uint32_t colour_;
  };
  std::vector<const Layer*> order;
  for (const Layer& l : doc_.layers) {
    if (l.visible) order.push_back(&l);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const Layer* a, const Layer* b) { return a->order < b->order; });
  for (const Layer* l : order) {
    out += "<g>\n";
    SvgSink sink(&out, l->colour & 0xFFFFFFu);
    ShapeOptions options;
    options.tolerance_nm = 2000.0;
    EmitLayer(*l, options, sink);
    out += "</g>\n";
  }
  out += "</g>\n</svg>\n";
  return out;
}

// ---------------------------------------------------------------------------------------------
// Layers.

int Board::AddLayer(const std::string& name) {
  Checkpoint();
  Layer l;
  l.name = name;
  l.colour = DefaultLayerColour(doc_.layers.size());
  l.order = static_cast<int>(doc_.layers.size());
  doc_.layers.push_back(std::move(l));
  opacity_.push_back(100);
  Changed();
  return static_cast<int>(doc_.layers.size()) - 1;
}

void Board::SetLayerVisible(int layer, bool visible) {
  if (layer < 0 || layer >= static_cast<int>(doc_.layers.size())) return;
  Checkpoint();
  doc_.layers[static_cast<std::size_t>(layer)].visible = visible;
  Changed();
}

void Board::SetLayerColour(int layer, std::uint32_t colour) {
  if (layer < 0 || layer >= static_cast<int>(doc_.layers.size())) return;
  Checkpoint();
  doc_.layers[static_cast<std::size_t>(layer)].colour = colour & 0xFFFFFFu;
  Changed();
}

void Board::MoveLayer(int layer, int delta) {
  const int n = static_cast<int>(doc_.layers.size());
  if (layer < 0 || layer >= n) return;
  // The neighbour in drawing order.
  std::vector<int> by_order(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) by_order[static_cast<std::size_t>(i)] = i;
  std::stable_sort(by_order.begin(), by_order.end(), [&](int a, int b) {
    return doc_.layers[static_cast<std::size_t>(a)].order <
           doc_.layers[static_cast<std::size_t>(b)].order;
  });
  const auto pos = std::find(by_order.begin(), by_order.end(), layer) - by_order.begin();
  const auto other = pos + delta;
  if (other < 0 || other >= n) return;
  Checkpoint();
  // Orders become 0..n-1 in the new sequence.
  std::swap(by_order[static_cast<std::size_t>(pos)], by_order[static_cast<std::size_t>(other)]);
  for (int i = 0; i < n; ++i) doc_.layers[static_cast<std::size_t>(by_order[static_cast<std::size_t>(i)])].order = i;
  Changed();
}

int Board::opacity(int layer) const {
  return layer >= 0 && layer < static_cast<int>(opacity_.size())
             ? opacity_[static_cast<std::size_t>(layer)]
             : 100;
}

void Board::SetOpacity(int layer, int percent) {
  if (layer < 0 || layer >= static_cast<int>(opacity_.size())) return;
  Checkpoint();
  opacity_[static_cast<std::size_t>(layer)] = std::clamp(percent, 0, 100);
  Changed();
}

// ---------------------------------------------------------------------------------------------
// Editing.

int Board::ApertureFor(Layer* layer, const Aperture& aperture) {
  int next = kFirstAperture;
  for (const auto& [code, a] : layer->apertures) {
    if (a == aperture) return code;
    next = std::max(next, code + 1);
  }
  layer->apertures[next] = aperture;
  return next;
}

int Board::CircleAperture(Layer* layer, double width_mm) {
  Aperture a;
  a.kind = ApertureKind::kCircle;
  a.size_x = std::max<Coord>(ToNm(width_mm), 0);
  return ApertureFor(layer, a);
}

void Board::AddFigure(const session::Figure& f) {
  Checkpoint();
  Layer* layer = &doc_.layers[static_cast<std::size_t>(active_)];
  std::vector<ArtObject> made;
  using session::FigureKind;
  switch (f.kind) {
    case FigureKind::kTrack: {
      for (std::size_t i = 1; i < f.points.size(); ++i) {
        const ArtPoint a = BoardPoint(f.points[i - 1].x, f.points[i - 1].y);
        const ArtPoint b = BoardPoint(f.points[i].x, f.points[i].y);
        // A leg of no length (Enter at the last click) adds nothing.
        if (a == b && f.points.size() > 2) continue;
        made.push_back(Track(a, b, CircleAperture(layer, f.points[i].width)));
      }
      break;
    }
    case FigureKind::kCircle:
    case FigureKind::kCircle3: {
      const ArtPoint c = BoardPoint(f.cx, f.cy);
      if (f.fill) {
        ArtObject o;
        o.kind = ObjectKind::kFlash;
        o.end = c;
        o.aperture = CircleAperture(layer, 2.0 * f.radius + f.width);
        made.push_back(o);
      } else {
        ArtObject o;
        o.kind = ObjectKind::kArc;
        o.start = BoardPoint(f.cx + f.radius, f.cy);
        o.end = o.start;
        o.centre = c;
        o.aperture = CircleAperture(layer, f.width);
        made.push_back(o);
      }
      break;
    }
    case FigureKind::kArc: {
      ArtObject o;
      o.kind = ObjectKind::kArc;
      o.start = BoardPoint(f.sx, f.sy);
      o.end = BoardPoint(f.ex, f.ey);
      o.centre = BoardPoint(f.cx, f.cy);
      // Counter-clockwise as seen on the screen is counter-clockwise on the board too: the
      // view shows the board with y up.
      o.direction = ArcDirection::kCounterClockwise;
      o.aperture = CircleAperture(layer, f.width);
      made.push_back(o);
      break;
    }
    case FigureKind::kRect: {
      ArtObject o;
      o.kind = ObjectKind::kRegion;
      o.contour.start = BoardPoint(f.x1, f.y1);
      for (const ArtPoint p : {BoardPoint(f.x2, f.y1), BoardPoint(f.x2, f.y2),
                               BoardPoint(f.x1, f.y2), BoardPoint(f.x1, f.y1)}) {
        ContourSegment s;
        s.end = p;
        o.contour.segments.push_back(s);
      }
      made.push_back(o);
      break;
    }
    case FigureKind::kPolygon: {
      if (f.points.size() < 3) break;
      ArtObject o;
      o.kind = ObjectKind::kRegion;
      o.contour.start = BoardPoint(f.points[0].x, f.points[0].y);
      for (std::size_t i = 1; i <= f.points.size(); ++i) {
        const session::Vertex& v = f.points[i % f.points.size()];
        ContourSegment s;
        s.end = BoardPoint(v.x, v.y);
        if (v.arc) {
          s.is_arc = true;
          s.centre = BoardPoint(v.cx, v.cy);
          s.direction = v.direction == 2 ? ArcDirection::kClockwise
                                         : ArcDirection::kCounterClockwise;
        }
        o.contour.segments.push_back(s);
      }
      made.push_back(o);
      break;
    }
    case FigureKind::kPad: {
      Aperture a;
      switch (f.pad) {
        case session::PadShape::kRound:
          a.kind = ApertureKind::kCircle;
          a.size_x = ToNm(f.pad_width);
          break;
        case session::PadShape::kRect:
          a.kind = ApertureKind::kRectangle;
          a.size_x = ToNm(f.pad_width);
          a.size_y = ToNm(f.pad_height);
          break;
        case session::PadShape::kObround:
          a.kind = ApertureKind::kObround;
          a.size_x = ToNm(f.pad_width);
          a.size_y = ToNm(f.pad_height);
          break;
        case session::PadShape::kPolygon:
          a.kind = ApertureKind::kPolygon;
          a.size_x = ToNm(f.pad_width);
          a.vertices = std::clamp(f.sides, 3, 12);
          break;
      }
      a.hole = ToNm(f.hole_width);
      ArtObject o;
      o.kind = ObjectKind::kFlash;
      o.end = BoardPoint(f.cx, f.cy);
      o.aperture = ApertureFor(layer, a);
      made.push_back(o);
      break;
    }
  }
  if (made.empty()) {
    doc_ = std::move(undo_.back().doc);  // nothing was made: apertures added are taken back
    undo_.pop_back();
    return;
  }
  selection_.clear();
  for (ArtObject& o : made) layer->objects.push_back(std::move(o));
  Changed();
}

void Board::DeleteSelection() {
  if (selection_.empty()) return;
  Checkpoint();
  std::vector<ObjectRef> sel = selection_;
  std::sort(sel.rbegin(), sel.rend());
  for (const ObjectRef& r : sel) {
    auto& objects = doc_.layers[static_cast<std::size_t>(r.layer)].objects;
    if (r.index < objects.size()) objects.erase(objects.begin() + static_cast<std::ptrdiff_t>(r.index));
  }
  selection_.clear();
  Changed();
}

void Board::MoveSelection(double dx, double dy) {
  if (selection_.empty()) return;
  const Coord bx = ToNm(dx);
  const Coord by = ToNm(-dy);
  if (bx == 0 && by == 0) return;
  Checkpoint();
  for (const ObjectRef& r : selection_) {
    auto& objects = doc_.layers[static_cast<std::size_t>(r.layer)].objects;
    if (r.index < objects.size()) TranslateObject(&objects[r.index], bx, by);
  }
  Changed();
}

void Board::Copy() {
  clipboard_.clear();
  clipboard_apertures_.clear();
  for (const ObjectRef& r : selection_) {
    const ArtObject* o = Object(r);
    if (o == nullptr) continue;
    const Layer& l = doc_.layers[static_cast<std::size_t>(r.layer)];
    const auto a = l.apertures.find(o->aperture);
    clipboard_.push_back(*o);
    clipboard_apertures_.push_back(a == l.apertures.end() ? Aperture{} : a->second);
  }
}

void Board::Paste(double dx, double dy) {
  if (clipboard_.empty()) return;
  Checkpoint();
  Layer& l = doc_.layers[static_cast<std::size_t>(active_)];
  selection_.clear();
  for (std::size_t i = 0; i < clipboard_.size(); ++i) {
    ArtObject o = clipboard_[i];
    if (o.kind != ObjectKind::kRegion) o.aperture = ApertureFor(&l, clipboard_apertures_[i]);
    TranslateObject(&o, ToNm(dx), ToNm(-dy));
    l.objects.push_back(std::move(o));
    selection_.push_back({active_, l.objects.size() - 1});
  }
  Changed();
}

void Board::SetSelectionWidth(double width) {
  if (selection_.empty() || !(width >= 0.0)) return;
  Checkpoint();
  for (const ObjectRef& r : selection_) {
    Layer& l = doc_.layers[static_cast<std::size_t>(r.layer)];
    ArtObject& o = l.objects[r.index];
    if (o.kind == ObjectKind::kTrack || o.kind == ObjectKind::kArc) {
      o.aperture = CircleAperture(&l, width);
    }
  }
  Changed();
}

void Board::MoveSelectionToLayer(int layer) {
  if (selection_.empty() || layer < 0 || layer >= static_cast<int>(doc_.layers.size())) return;
  Checkpoint();
  std::vector<ObjectRef> sel = selection_;
  std::sort(sel.rbegin(), sel.rend());
  std::vector<ArtObject> moved;
  std::vector<Aperture> apertures;
  for (const ObjectRef& r : sel) {
    Layer& from = doc_.layers[static_cast<std::size_t>(r.layer)];
    const auto a = from.apertures.find(from.objects[r.index].aperture);
    apertures.push_back(a == from.apertures.end() ? Aperture{} : a->second);
    moved.push_back(std::move(from.objects[r.index]));
    from.objects.erase(from.objects.begin() + static_cast<std::ptrdiff_t>(r.index));
  }
  Layer& to = doc_.layers[static_cast<std::size_t>(layer)];
  selection_.clear();
  for (std::size_t i = moved.size(); i-- > 0;) {
    if (moved[i].kind != ObjectKind::kRegion) moved[i].aperture = ApertureFor(&to, apertures[i]);
    to.objects.push_back(std::move(moved[i]));
    selection_.push_back({layer, to.objects.size() - 1});
  }
  Changed();
}

// ---------------------------------------------------------------------------------------------
// Selection.

const ArtObject* Board::Object(const ObjectRef& r) const {
  if (r.layer < 0 || r.layer >= static_cast<int>(doc_.layers.size())) return nullptr;
  const auto& objects = doc_.layers[static_cast<std::size_t>(r.layer)].objects;
  return r.index < objects.size() ? &objects[r.index] : nullptr;
}

bool Board::HitTest(double wx, double wy, double tolerance, ObjectRef* hit) const {
  const ArtPoint p = BoardPoint(wx, wy);
  const double px = static_cast<double>(p.x);
  const double py = static_cast<double>(p.y);
  const double tol = tolerance * kNmPerMmD;
  // Topmost first: layers in reverse drawing order, objects from the last.
  std::vector<int> layers;
  for (int i = 0; i < static_cast<int>(doc_.layers.size()); ++i) {
    if (doc_.layers[static_cast<std::size_t>(i)].visible) layers.push_back(i);
  }
  std::stable_sort(layers.begin(), layers.end(), [&](int a, int b) {
    return doc_.layers[static_cast<std::size_t>(a)].order >
           doc_.layers[static_cast<std::size_t>(b)].order;
  });
  for (int li : layers) {
    const Layer& l = doc_.layers[static_cast<std::size_t>(li)];
    for (std::size_t i = l.objects.size(); i-- > 0;) {
      const ArtObject& o = l.objects[i];
      const BoxSink box = ObjectBox(l, o);
      if (box.Empty() || px < box.min_x - tol || px > box.max_x + tol || py < box.min_y - tol ||
          py > box.max_y + tol) {
        continue;
      }
      if (o.kind == ObjectKind::kTrack) {
        const auto a = l.apertures.find(o.aperture);
        const double half =
            a == l.apertures.end() ? 0.0 : static_cast<double>(std::max(a->second.size_x, a->second.size_y)) / 2.0;
        if (SegmentDistance(px, py, static_cast<double>(o.start.x), static_cast<double>(o.start.y),
                            static_cast<double>(o.end.x), static_cast<double>(o.end.y)) >
            half + tol) {
          continue;
        }
      }
      *hit = {li, i};
      return true;
    }
  }
  return false;
}

void Board::SelectAt(double wx, double wy, double tolerance, bool add) {
  if (!add) selection_.clear();
  ObjectRef hit;
  if (!HitTest(wx, wy, tolerance, &hit)) return;
  const auto it = std::find(selection_.begin(), selection_.end(), hit);
  if (it == selection_.end()) {
    selection_.push_back(hit);
  } else if (add) {
    selection_.erase(it);  // a second click with the modifier takes it out again
  }
}

void Board::SelectBox(double x1, double y1, double x2, double y2, bool add) {
  if (!add) selection_.clear();
  const ArtPoint a = BoardPoint(std::min(x1, x2), std::max(y1, y2));
  const ArtPoint b = BoardPoint(std::max(x1, x2), std::min(y1, y2));
  for (int li = 0; li < static_cast<int>(doc_.layers.size()); ++li) {
    const Layer& l = doc_.layers[static_cast<std::size_t>(li)];
    if (!l.visible) continue;
    for (std::size_t i = 0; i < l.objects.size(); ++i) {
      const BoxSink box = ObjectBox(l, l.objects[i]);
      if (box.Empty()) continue;
      if (box.min_x >= static_cast<double>(a.x) && box.max_x <= static_cast<double>(b.x) &&
          box.min_y >= static_cast<double>(a.y) && box.max_y <= static_cast<double>(b.y)) {
        const ObjectRef r{li, i};
        if (std::find(selection_.begin(), selection_.end(), r) == selection_.end()) {
          selection_.push_back(r);
        }
      }
    }
  }
}

void Board::SelectAll() {
  selection_.clear();
  for (int li = 0; li < static_cast<int>(doc_.layers.size()); ++li) {
    const Layer& l = doc_.layers[static_cast<std::size_t>(li)];
    if (!l.visible) continue;
    for (std::size_t i = 0; i < l.objects.size(); ++i) selection_.push_back({li, i});
  }
}

void Board::ClearSelection() { selection_.clear(); }

Layer Board::SelectionLayer(std::uint32_t colour) const {
  Layer out;
  out.colour = colour;
  for (const ObjectRef& r : selection_) {
    const ArtObject* o = Object(r);
    if (o == nullptr) continue;
    const Layer& l = doc_.layers[static_cast<std::size_t>(r.layer)];
    ArtObject copy = *o;
    copy.polarity = Polarity::kDark;
    const auto a = l.apertures.find(o->aperture);
    if (a != l.apertures.end()) copy.aperture = ApertureFor(&out, a->second);
    if (o->kind == ObjectKind::kStepRepeat) out.macros = l.macros;
    if (a != l.apertures.end() && a->second.kind == ApertureKind::kMacro) out.macros = l.macros;
    out.objects.push_back(std::move(copy));
  }
  return out;
}

bool Board::Extent(double* x1, double* y1, double* x2, double* y2) const {
  ArtBox box;
  for (const Layer& l : doc_.layers) {
    if (l.visible) box.Add(LayerExtent(l));
  }
  if (box.IsEmpty()) return false;
  WorldPoint({box.min_x, box.max_y}, x1, y1);
  WorldPoint({box.max_x, box.min_y}, x2, y2);
  return true;
}

}  // namespace qvis::editor
