#include "apps/qvis-editor/board.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "qvis/artwork/io/board_format.h"
#include "qvis/artwork/io/excellon_reader.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/io/gerber_writer.h"
#include "qvis/artwork/shapes.h"
#include "qvis/compat/atomic_file.h"
#include "qvis/compat/exceptions.h"

namespace qvis::editor {
namespace {

constexpr double kNmPerMmD = 1e6;

Coord ToNm(double mm) {
  const double v = std::round(mm * kNmPerMmD);
  if (!(std::fabs(v) < 9e15)) return 0;  // NaN and absurd values: the origin
  return static_cast<Coord>(v);
}

std::string BaseName(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// StackRank places a layer in a board seen from the top: back legend, mask and paste, back
// copper, inner copper, front copper, front paste, mask and legend, then the outline and the
// drills over everything. The file's function attribute says what a layer is; without one the
// common file-name conventions do. -1: unknown.
int StackRank(const Layer& layer) {
  if (layer.kind == LayerKind::kDrill) return 100;
  const std::string f = Lower(layer.file_function);
  const std::string n = Lower(layer.name);
  const std::size_t dot = n.find_last_of('.');
  const std::string ext = dot == std::string::npos ? "" : n.substr(dot + 1);
  auto starts = [&](const char* what) { return f.rfind(what, 0) == 0; };
  auto has = [](const std::string& s, const char* what) { return s.find(what) != std::string::npos; };
  const bool top = has(f, ",top");
  const bool bot = has(f, ",bot");
  if (starts("copper")) return has(f, ",inr") ? 40 : top ? 50 : bot ? 30 : 40;
  if (starts("soldermask")) return top ? 60 : 20;
  if (starts("paste")) return top ? 55 : 25;
  if (starts("legend")) return top ? 70 : 10;
  if (starts("profile")) return 90;
  if (starts("plated") || starts("nonplated")) return 100;
  if (!f.empty()) return -1;
  // Names: the extensions most CAD tools write (gtl top copper, gbs bottom mask, ...) and
  // the layer names some put in the file name.
  if (ext == "gtl" || has(n, "f_cu") || has(n, "f.cu")) return 50;
  if (ext == "gbl" || has(n, "b_cu") || has(n, "b.cu")) return 30;
  if (ext == "gts" || has(n, "f_mask") || has(n, "f.mask")) return 60;
  if (ext == "gbs" || has(n, "b_mask") || has(n, "b.mask")) return 20;
  if (ext == "gtp" || has(n, "f_paste") || has(n, "f.paste")) return 55;
  if (ext == "gbp" || has(n, "b_paste") || has(n, "b.paste")) return 25;
  if (ext == "gto" || has(n, "f_silk") || has(n, "f.silk")) return 70;
  if (ext == "gbo" || has(n, "b_silk") || has(n, "b.silk")) return 10;
  if (ext == "gko" || ext == "gm1" || has(n, "edge_cuts") || has(n, "edge.cuts")) return 90;
  // Inner copper: .g1 to .g99.
  if ((ext.size() == 2 || ext.size() == 3) && ext[0] == 'g' && std::isdigit(static_cast<unsigned char>(ext[1])) &&
      std::isdigit(static_cast<unsigned char>(ext.back())) && ext[1] != '0') {
    return 40;
  }
  return -1;
}

// StackOrder gives each layer its drawing order: by rank where every layer has one, the given
// order kept among equals; a set with a layer of unknown function stays in the given order,
// as nothing says where that layer belongs.
void StackOrder(std::vector<Layer>* layers) {
  std::vector<int> rank;
  for (const Layer& l : *layers) rank.push_back(StackRank(l));
  const bool known = std::find(rank.begin(), rank.end(), -1) == rank.end();
  std::vector<std::size_t> by(layers->size());
  for (std::size_t i = 0; i < by.size(); ++i) by[i] = i;
  if (known) std::stable_sort(by.begin(), by.end(), [&](std::size_t a, std::size_t b) { return rank[a] < rank[b]; });
  for (std::size_t k = 0; k < by.size(); ++k) (*layers)[by[k]].order = static_cast<int>(k);
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

}  // namespace

std::uint32_t DefaultLayerColour(std::size_t index) {
  static constexpr std::uint32_t kColours[] = {0xC83434, 0x3464C8, 0xE0E0E0, 0xD0C000,
                                               0x30A050, 0xB040B0, 0x40B0B0, 0xE08020};
  return kColours[index % (sizeof(kColours) / sizeof(kColours[0]))];
}

Board::Board() {
  Layer top;
  top.name = "Top";
  top.colour = DefaultLayerColour(0);
  ArtDocument doc;
  doc.layers.push_back(std::move(top));
  art_ = ArtBoard(std::move(doc));
  art_.AddListener(&watcher_);
}

Board::~Board() { art_.RemoveListener(&watcher_); }

void Board::Replace(ArtBoard board) {
  art_ = std::move(board);  // the sink keeps pointing at art_
  art_.AddListener(&watcher_);  // the listeners went with the old document
  ++revision_;
  opacity_.clear();
}

int Board::active_layer() const {
  return std::clamp(art_.view().active_layer, 0, std::max(art_.LayerCount() - 1, 0));
}

void Board::SetActiveLayer(int layer) {
  if (layer < 0 || layer >= art_.LayerCount()) return;
  BoardView v = art_.view();
  v.active_layer = layer;
  art_.set_view(v);
}

bool Board::Undo() {
  if (!art_.CanUndo()) return false;
  art_.Select({});
  art_.Undo();
  return true;
}

bool Board::Redo() {
  if (!art_.CanRedo()) return false;
  art_.Select({});
  art_.Redo();
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
    doc.layers.push_back(std::move(layer));
  }
  if (doc.layers.empty()) {
    *error = "no files to open";
    return false;
  }
  StackOrder(&doc.layers);
  Replace(ArtBoard(std::move(doc)));
  path_.clear();
  return true;
}

void Board::Reset(ArtDocument doc) { Replace(ArtBoard(std::move(doc))); }

bool Board::AddFiles(const std::vector<std::string>& paths, std::string* error) {
  std::vector<Layer> layers;
  for (const std::string& p : paths) {
    Layer layer;
    if (!ReadArtworkFile(p, &layer, error)) return false;
    layers.push_back(std::move(layer));
  }
  art_.BeginGroup("Add layers");
  for (Layer& l : layers) {
    const int n = art_.LayerCount();
    l.colour = l.kind == LayerKind::kDrill ? 0xF0F0F0 : DefaultLayerColour(static_cast<std::size_t>(n));
    l.order = n;
    art_.AddLayer(std::move(l));
  }
  art_.EndGroup();
  return true;
}

bool Board::Save(const std::string& path, const BoardView& view, std::string* error) {
  art_.set_view(view);
  try {
    SaveBoard(path, art_);
  } catch (const CException& e) {
    *error = path + ": " + e.what();
    return false;
  }
  path_ = path;
  return true;
}

bool Board::Load(const std::string& path, BoardView* view, std::string* error) {
  ArtBoard loaded;
  try {
    const ReadResult r = LoadBoard(path, &loaded);
    if (!r.ok) {
      *error = path + ": " + r.error.ToString();
      return false;
    }
  } catch (const CException& e) {
    *error = path + ": " + e.what();
    return false;
  }
  *view = loaded.view();
  Replace(std::move(loaded));
  SetActiveLayer(std::clamp(view->active_layer, 0, std::max(art_.LayerCount() - 1, 0)));
  path_ = path;
  return true;
}

bool Board::ExportGerber(int layer, const std::string& path, std::string* error) const {
  const ArtDocument doc = art_.Document();
  if (layer < 0 || layer >= static_cast<int>(doc.layers.size())) {
    *error = "no such layer";
    return false;
  }
  const Layer& l = doc.layers[static_cast<std::size_t>(layer)];
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
  const ArtDocument doc = art_.Document();
  const ArtBox box = DocumentExtent(doc);
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
  for (const Layer& l : doc.layers) {
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
  Layer l;
  l.name = name;
  l.colour = DefaultLayerColour(static_cast<std::size_t>(art_.LayerCount()));
  l.order = art_.LayerCount();
  return art_.AddLayer(std::move(l));
}

void Board::SetLayerVisible(int layer, bool visible) {
  if (layer < 0 || layer >= art_.LayerCount()) return;
  const Layer& l = art_.layer(layer);
  art_.SetLayerProperties(layer, l.name, l.colour, visible, l.order, l.file_function);
}

void Board::SetLayerColour(int layer, std::uint32_t colour) {
  if (layer < 0 || layer >= art_.LayerCount()) return;
  const Layer& l = art_.layer(layer);
  art_.SetLayerProperties(layer, l.name, colour & 0xFFFFFFu, l.visible, l.order, l.file_function);
}

void Board::MoveLayer(int layer, int delta) {
  const int n = art_.LayerCount();
  if (layer < 0 || layer >= n) return;
  // The neighbour in drawing order.
  std::vector<int> by_order(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) by_order[static_cast<std::size_t>(i)] = i;
  std::stable_sort(by_order.begin(), by_order.end(),
                   [&](int a, int b) { return art_.layer(a).order < art_.layer(b).order; });
  const auto pos = std::find(by_order.begin(), by_order.end(), layer) - by_order.begin();
  const auto other = pos + delta;
  if (other < 0 || other >= n) return;
  // Orders become 0..n-1 in the new sequence, as one step.
  std::swap(by_order[static_cast<std::size_t>(pos)], by_order[static_cast<std::size_t>(other)]);
  art_.BeginGroup("Layer order");
  for (int i = 0; i < n; ++i) {
    const int li = by_order[static_cast<std::size_t>(i)];
    const Layer& l = art_.layer(li);
    if (l.order != i) art_.SetLayerProperties(li, l.name, l.colour, l.visible, i, l.file_function);
  }
  art_.EndGroup();
}

int Board::opacity(int layer) const {
  return layer >= 0 && layer < static_cast<int>(opacity_.size())
             ? opacity_[static_cast<std::size_t>(layer)]
             : 100;
}

void Board::SetOpacity(int layer, int percent) {
  if (layer < 0 || layer >= art_.LayerCount()) return;
  if (opacity_.size() <= static_cast<std::size_t>(layer)) opacity_.resize(static_cast<std::size_t>(layer) + 1, 100);
  opacity_[static_cast<std::size_t>(layer)] = std::clamp(percent, 0, 100);
  ++revision_;
}

std::vector<std::uint8_t> Board::LayerAlpha() const {
  std::vector<std::uint8_t> alpha(static_cast<std::size_t>(art_.LayerCount()));
  for (std::size_t i = 0; i < alpha.size(); ++i) {
    alpha[i] = static_cast<std::uint8_t>((opacity(static_cast<int>(i)) * 255 + 50) / 100);
  }
  return alpha;
}

// ---------------------------------------------------------------------------------------------
// Editing.

void Board::AddFigure(const FinishedFigure& figure) {
  art_.Select({});
  if (figure.kind != FigureKind::kTrack || figure.points.size() < 3) {
    sink_.OnFigureFinished(figure);
    return;
  }
  // Enter ends a track at its last click by repeating that vertex: the leg of no length it
  // leaves is not a dot the user drew.
  FinishedFigure track = figure;
  auto same = [](const FigureVertex& a, const FigureVertex& b) { return a.x == b.x && a.y == b.y; };
  track.points.erase(std::unique(track.points.begin(), track.points.end(), same), track.points.end());
  sink_.OnFigureFinished(track);
}

void Board::DeleteSelection() {
  if (selection().empty()) return;
  const std::vector<ObjectRef> sel = selection();
  art_.Select({});
  art_.DeleteObjects(sel);
}

void Board::MoveSelection(double dx, double dy) {
  const Coord bx = ToNm(dx);
  const Coord by = ToNm(-dy);
  if (selection().empty() || (bx == 0 && by == 0)) return;
  art_.MoveObjects(selection(), bx, by);
}

void Board::Copy() {
  clipboard_.clear();
  clipboard_apertures_.clear();
  for (const ObjectRef& r : selection()) {
    const ArtObject* o = Object(r);
    if (o == nullptr) continue;
    const Layer& l = art_.layer(r.layer);
    const auto a = l.apertures.find(o->aperture);
    clipboard_.push_back(*o);
    clipboard_apertures_.push_back(a == l.apertures.end() ? Aperture{} : a->second);
  }
}

ArtDocument Board::SelectionPicture(std::uint32_t colour) const {
  ArtDocument doc;
  doc.layers.resize(static_cast<std::size_t>(art_.LayerCount()));
  for (int i = 0; i < art_.LayerCount(); ++i) {
    Layer& l = doc.layers[static_cast<std::size_t>(i)];
    l.name = art_.layer(i).name;
    l.colour = colour;
    l.apertures = art_.layer(i).apertures;
    l.macros = art_.layer(i).macros;
  }
  for (const ObjectRef& r : selection()) {
    const ArtObject* o = Object(r);
    if (o == nullptr) continue;
    ArtObject copy = *o;
    copy.polarity = Polarity::kDark;
    doc.layers[static_cast<std::size_t>(r.layer)].objects.push_back(std::move(copy));
  }
  return doc;
}

void Board::Paste(double dx, double dy) {
  if (clipboard_.empty() || art_.LayerCount() == 0) return;
  const int layer = std::clamp(active_layer(), 0, art_.LayerCount() - 1);
  art_.BeginGroup("Paste");
  std::vector<ObjectRef> added;
  for (std::size_t i = 0; i < clipboard_.size(); ++i) {
    ArtObject o = clipboard_[i];
    if (o.kind != ObjectKind::kRegion) o.aperture = art_.EnsureAperture(layer, clipboard_apertures_[i]);
    added.push_back(art_.AddObject(layer, std::move(o)));
  }
  art_.MoveObjects(added, ToNm(dx), ToNm(-dy));
  art_.EndGroup();
  art_.Select(std::move(added));
}

void Board::SetSelectionWidth(double width) {
  if (selection().empty() || !(width >= 0.0)) return;
  art_.SetWidth(selection(), ToNm(width));
}

void Board::SetSelectionPad(double width, double height, double hole, int sides) {
  std::vector<ObjectRef> flashes;
  for (const ObjectRef& r : selection()) {
    if (art_.object(r).kind == ObjectKind::kFlash) flashes.push_back(r);
  }
  if (flashes.empty()) return;
  art_.BeginGroup("Pad size");
  for (const ObjectRef& r : flashes) {
    const Layer& l = art_.layer(r.layer);
    const auto it = l.apertures.find(art_.object(r).aperture);
    if (it == l.apertures.end()) continue;
    Aperture a = it->second;
    const bool two_sizes = a.kind == ApertureKind::kRectangle || a.kind == ApertureKind::kObround;
    // A macro's sizes are its parameters; a block is other objects.
    if (a.kind == ApertureKind::kMacro || a.kind == ApertureKind::kBlock) continue;
    if (width >= 0.0) a.size_x = ToNm(width);
    if (height >= 0.0 && two_sizes) a.size_y = ToNm(height);
    if (hole >= 0.0) a.hole = ToNm(hole);
    if (sides >= 3 && a.kind == ApertureKind::kPolygon) a.vertices = std::min(sides, 12);
    a.hole = std::min(a.hole, two_sizes ? std::min(a.size_x, a.size_y) : a.size_x);
    const int code = art_.EnsureAperture(r.layer, a);
    if (code != art_.object(r).aperture) art_.SetAperture({r}, code);
  }
  art_.EndGroup();
}

void Board::MoveSelectionToLayer(int layer) {
  if (selection().empty() || layer < 0 || layer >= art_.LayerCount()) return;
  art_.Select(art_.SetLayer(selection(), layer));
}

// ---------------------------------------------------------------------------------------------
// Selection.

const ArtObject* Board::Object(const ObjectRef& r) const {
  if (r.layer < 0 || r.layer >= art_.LayerCount() || r.index >= art_.layer(r.layer).objects.size() ||
      !art_.IsLive(r)) {
    return nullptr;
  }
  return &art_.object(r);
}

bool Board::HitTest(double wx, double wy, double tolerance, ObjectRef* hit) const {
  const ArtPoint p = WorldToBoard(wx, wy, kNmPerMmD);
  const std::vector<ObjectRef> hits = art_.HitPoint(p.x, p.y, ToNm(tolerance));
  if (hits.empty()) return false;
  *hit = hits.front();
  return true;
}

void Board::SelectAt(double wx, double wy, double tolerance, bool add) {
  std::vector<ObjectRef> sel = add ? selection() : std::vector<ObjectRef>{};
  ObjectRef hit;
  if (HitTest(wx, wy, tolerance, &hit)) {
    const auto it = std::find(sel.begin(), sel.end(), hit);
    if (it == sel.end()) {
      sel.push_back(hit);
    } else {
      sel.erase(it);  // a second click with the modifier takes it out again
    }
  }
  art_.Select(std::move(sel));
}

void Board::SelectBox(double x1, double y1, double x2, double y2, bool add) {
  std::vector<ObjectRef> sel = add ? selection() : std::vector<ObjectRef>{};
  const ArtPoint a = WorldToBoard(std::min(x1, x2), std::max(y1, y2), kNmPerMmD);
  const ArtPoint b = WorldToBoard(std::max(x1, x2), std::min(y1, y2), kNmPerMmD);
  ArtBox box;
  box.Add(a.x, a.y);
  box.Add(b.x, b.y);
  for (const ObjectRef& r : art_.HitBox(box, BoxHit::kInside)) {
    if (std::find(sel.begin(), sel.end(), r) == sel.end()) sel.push_back(r);
  }
  art_.Select(std::move(sel));
}

void Board::SelectAll() {
  std::vector<ObjectRef> sel;
  for (int li = 0; li < art_.LayerCount(); ++li) {
    const Layer& l = art_.layer(li);
    if (!l.visible) continue;
    for (std::uint32_t i = 0; i < l.objects.size(); ++i) {
      if (art_.IsLive({li, i})) sel.push_back({li, i});
    }
  }
  art_.Select(std::move(sel));
}

bool Board::Extent(double* x1, double* y1, double* x2, double* y2) const {
  const ArtBox box = art_.Extent();
  if (box.IsEmpty()) return false;
  *x1 = static_cast<double>(box.min_x) / kNmPerMmD;
  *y1 = -static_cast<double>(box.max_y) / kNmPerMmD;
  *x2 = static_cast<double>(box.max_x) / kNmPerMmD;
  *y2 = -static_cast<double>(box.min_y) / kNmPerMmD;
  return true;
}

}  // namespace qvis::editor
