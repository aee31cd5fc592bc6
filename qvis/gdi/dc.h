// Engine records behind the device layer's handles: pens, brushes, fonts, bitmaps, regions and
// the device context with its state, path and scratch buffers. Internal to qvis/gdi; the shapes
// and text code read and draw through these.
#ifndef QVIS_GDI_DC_H_
#define QVIS_GDI_DC_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qvis/gdi/gdi.h"
#include "qvis/gdi/raster/blitter.h"
#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/line.h"
#include "qvis/gdi/raster/polygon.h"
#include "qvis/gdi/raster/region.h"
#include "qvis/gdi/raster/span.h"
#include "qvis/gdi/shapes/curve_flatten.h"
#include "qvis/gdi/shapes/ellipse_geom.h"
#include "qvis/gdi/shapes/wide_pen.h"

namespace qvis::gdi {

// ObjectRecord: the engine's part of every graphics object: its kind, its handle (given when it
// is registered) and the bookkeeping of selection. select_count and delete_pending change only
// under the object table's lock.
struct ObjectRecord {
  explicit ObjectRecord(ObjectKind k) : kind(k) {}
  ObjectRecord(const ObjectRecord&) = delete;
  ObjectRecord& operator=(const ObjectRecord&) = delete;
  virtual ~ObjectRecord() = default;

  const ObjectKind kind;
  HGDIOBJ handle = nullptr;     // the handle the table gave it; dead once it is unregistered
  int select_count = 0;         // how many DCs have it selected
  bool delete_pending = false;  // deleted while selected: freed on the last deselection
  bool stock = false;           // a stock object: never freed
};

// PenData: a cosmetic or geometric pen.
struct PenData final : ObjectRecord {
  PenData() : ObjectRecord(ObjectKind::kPen) {}
  HPEN Handle() const { return reinterpret_cast<HPEN>(handle); }
  int style = 0;            // PS_SOLID .. PS_ALTERNATE (the low four bits)
  bool geometric = false;   // PS_GEOMETRIC, or CreatePen with a width above 1
  int width = 1;            // pixels; cosmetic pens draw 1 pixel whatever the width
  COLORREF color = 0;
  DWORD end_cap = 0;        // PS_ENDCAP_ROUND 0 / SQUARE 0x100 / FLAT 0x200
  DWORD join = 0;           // PS_JOIN_ROUND 0 / BEVEL 0x1000 / MITER 0x2000
  UINT brush_style = 0;     // BS_SOLID, BS_HATCHED, BS_NULL of a geometric pen's brush
  int hatch = 0;
  std::vector<DWORD> user_style;  // PS_USERSTYLE entries
  LineStyle thin_style;           // the pattern its one-pixel lines step (SetThinStyle)
  bool paints_gaps = true;        // false for ExtCreatePen's pens: OPAQUE leaves their gaps

  // SetThinStyle derives thin_style from the style, the kind and the user entries.
  void SetThinStyle();

  bool IsNull() const { return style == 5 /* PS_NULL */; }
  // IsWide tells whether outlines go to the geometric stroker.
  bool IsWide() const { return geometric && width >= 2; }
};

// BrushData: solid, hatched or hollow.
struct BrushData final : ObjectRecord {
  BrushData() : ObjectRecord(ObjectKind::kBrush) {}
  HBRUSH Handle() const { return reinterpret_cast<HBRUSH>(handle); }
  UINT style = 0;           // BS_SOLID 0, BS_NULL 1, BS_HATCHED 2
  COLORREF color = 0;
  int hatch = 0;            // HS_HORIZONTAL 0 .. HS_DIAGCROSS 5
  bool IsNull() const { return style == 1 /* BS_NULL */; }
};

// FontData: the logical font; the text code keeps its rasteriser state in `engine_cache`.
struct FontData final : ObjectRecord {
  FontData() : ObjectRecord(ObjectKind::kFont) {}
  HFONT Handle() const { return reinterpret_cast<HFONT>(handle); }
  LOGFONTA logfont;
  std::shared_ptr<void> engine_cache;
};

// BitmapData: a 32-bpp (0x00RRGGBB words, top-down) or 1-bpp (MSB first, 1 = white, rows
// padded to 32 bits) bitmap.
struct BitmapData final : ObjectRecord {
  BitmapData() : ObjectRecord(ObjectKind::kBitmap) {}
  HBITMAP Handle() const { return reinterpret_cast<HBITMAP>(handle); }
  int width = 0;
  int height = 0;
  int bpp = 32;
  std::ptrdiff_t stride = 0;  // bytes per row
  std::unique_ptr<std::uint8_t[]> bits;
  DeviceContext* selected_in = nullptr;  // the DC holding it (stock bitmap: none recorded)

  IRect Bounds() const { return IRect{0, 0, width, height}; }
  std::uint32_t* Row32(int y) const {
    return reinterpret_cast<std::uint32_t*>(bits.get() + stride * y);
  }
  std::uint8_t* RowBytes(int y) const { return bits.get() + stride * y; }
};

struct RegionWork;

// RegionData: a region object.
struct RegionData final : ObjectRecord {
  RegionData();  // out of line, where RegionWork is complete
  ~RegionData() override;
  HRGN Handle() const { return reinterpret_cast<HRGN>(handle); }
  SpanRegion shape;
  // CombineRgn's result when the destination is also a source, swapped with `shape`: a region
  // combined into itself again and again reuses the memory of both.
  SpanRegion spare;
  // Work: the memory SetEllipticRgn and SetPolygonRgn build with, made on first use.
  RegionWork& Work();
  std::unique_ptr<RegionWork> work;
};

// PathData: the figures recorded between BeginPath and EndPath, in device coordinates. Types are
// PT_MOVETO 6, PT_LINETO 2, PT_BEZIERTO 4, with PT_CLOSEFIGURE 1 or-ed into a figure's last
// point.
struct PathData {
  enum State { kNone, kOpen, kClosed };
  struct Vertex {
    double x = 0;
    double y = 0;
    std::uint8_t type = 0;
  };
  static constexpr std::uint8_t kCloseFigure = 1;
  static constexpr std::uint8_t kLineTo = 2;
  static constexpr std::uint8_t kBezierTo = 4;
  static constexpr std::uint8_t kMoveTo = 6;

  State state = kNone;
  std::vector<Vertex> vertices;
  bool figure_open = false;  // a move has been recorded and not closed since

  void Clear() {
    state = kNone;
    vertices.clear();
    figure_open = false;
  }
  // MoveTo starts a new figure at p (a lone trailing move replaces the previous one).
  void MoveTo(double x, double y);
  // LineTo adds a segment, starting a figure at (from) if none is open.
  void LineTo(double from_x, double from_y, double x, double y);
  // CloseFigure closes the open figure.
  void CloseFigure();
};

// PathFigure: one flattened figure of a path; its points are ScratchArena::path_points from
// `first` on.
struct PathFigure {
  std::size_t first = 0;
  int count = 0;
  bool closed = false;
  bool has_segments = false;  // a lone move draws nothing, a zero-length line a dot
};

// TextLineSpan: one line laid out by DrawTextA, its characters in ScratchArena::text_lines.
struct TextLineSpan {
  std::size_t first = 0;
  std::size_t size = 0;
  std::int64_t width = 0;
};

// ScratchArena: the working memory of the primitives drawn on one DC, kept between calls so
// that warm drawing makes no heap allocation. Each member serves one family of primitives,
// named beside it; a primitive never calls another that uses the same member while it holds it.
//
// Where memory lives, engine-wide: working memory belongs to the object doing the work and is
// reused from call to call, grown (at least twofold) and never shrunk by a call. Drawing works in
// the DC's arena and scanner; a region object reshaped in place (SetEllipticRgn, SetPolygonRgn,
// CombineRgn into itself) keeps its own (RegionData::work, RegionData::spare); the canvas
// surface keeps its mapped points and scratch regions. Only resources made once and then read
// stay process-wide: the object table, stock objects and font faces (the fallback face is per
// thread, as a face may not be shared). No primitive keeps thread-local or static scratch.
struct ScratchArena {
  StrokeScratch stroke;                  // wide pens
  CurveScratch curve;                    // ellipse stepping
  std::vector<std::int64_t> row_left;    // Ellipse / RoundRect interiors
  std::vector<std::int64_t> row_right;
  std::vector<PointI> outline;           // Ellipse / RoundRect / Arc figures
  std::vector<PointI> arc;               // Arc / Pie / Chord curves
  std::vector<Point2> big_arc;           // curves too big to step, flattened
  std::vector<std::uint8_t> text_mask;   // text runs
  std::vector<int> text_pen;
  std::string text_source;               // DrawTextA: the text less its prefix marks
  std::string text_lines;                // DrawTextA: the lines, one after another
  std::vector<TextLineSpan> text_line_spans;
  std::vector<std::uint32_t> blit_dst;   // BitBlt and PatBlt rows
  std::vector<std::uint32_t> blit_src;
  std::vector<std::uint32_t> blit_pat;
  std::vector<std::uint8_t> blit_skip;
  // Filled closed figures and paths with a wide pen: the brush's region, the pen's region and
  // the brush's region less the pen's, built by region_builder. FrameRgn and GetClipBox, which
  // draw no figure, use the three regions as their working regions.
  RegionBuilder region_builder;
  SpanRegion fill_region;                // set by the figure, read by PaintShape / PaintPolygons
  SpanRegion outline_region;             // PaintShape / PaintPolygons / paths
  SpanRegion inner_region;
  std::vector<PointI> path_points;       // StrokePath / FillPath / StrokeAndFillPath
  std::vector<PathFigure> path_figures;
  std::vector<PointI> path_fill;
  std::vector<int> path_counts;
  std::vector<Point2> alpha_points;      // alpha strokes: the line, ellipse or arc stroked
};

// DeviceContext: a memory DC over a bitmap, with GDI's state.
struct DeviceContext {
  DeviceContext();
  ~DeviceContext();
  DeviceContext(const DeviceContext&) = delete;
  DeviceContext& operator=(const DeviceContext&) = delete;

  BitmapData* bitmap = nullptr;
  PenData* pen = nullptr;
  BrushData* brush = nullptr;
  FontData* font = nullptr;

  int rop2 = 13;              // R2_COPYPEN
  int bk_mode = 2;            // OPAQUE
  COLORREF bk_color = 0xFFFFFF;
  COLORREF text_color = 0;
  int poly_fill_mode = 1;     // ALTERNATE
  int arc_direction = 1;      // AD_COUNTERCLOCKWISE
  UINT text_align = 0;
  int char_extra = 0;         // SetTextCharacterExtra
  float miter_limit = 10.0f;
  PointI brush_origin;
  PointI position;            // current position

  bool has_clip = false;
  SpanRegion clip;            // the selected clip region (device coordinates)

  PathData path;

  // Scratch kept between primitives so warm drawing does not allocate.
  PolygonScanner scanner;
  BlitterSet blit_a;
  BlitterSet blit_b;
  std::vector<PointI> points;
  std::vector<int> counts;
  ScratchArena scratch;
};

// ---------------------------------------------------------------------------------------------
// Object table and typed access. A handle is looked up in the table, never dereferenced, so a
// stale, reused or made-up handle is refused instead of being read.

// IsLive tells whether the handle names an object created and not yet deleted (or a stock one).
bool IsLive(HGDIOBJ handle);
// Register enters a new object in the table and gives it its handle; Unregister takes it out
// (its handle is dead from then on, whatever later takes the slot). Register throws
// std::bad_alloc when the table cannot grow (the object is then not entered).
void Register(ObjectRecord* object);
void Unregister(ObjectRecord* object);

// AsPen / AsBrush / AsFont / AsBitmap / AsRegion return the record of a live object of that
// kind, null for null, dead, made-up or other objects.
PenData* AsPen(HGDIOBJ handle);
BrushData* AsBrush(HGDIOBJ handle);
FontData* AsFont(HGDIOBJ handle);
BitmapData* AsBitmap(HGDIOBJ handle);
RegionData* AsRegion(HGDIOBJ handle);

// ---------------------------------------------------------------------------------------------
// Drawing helpers shared by the core, shapes and text code.

// ClipBox: the box drawing may touch: the bitmap bounds, narrowed to the clip region's box.
IRect ClipBox(const DeviceContext& dc);
// ClipRegion: the region spans must also be clipped to, or null when the clip box is enough.
const SpanRegion* ClipRegion(const DeviceContext& dc);

// BrushSource: the fill source of a brush in this DC (hatch gaps by the DC's background mode and
// colour); a null or hollow brush gives kNone.
FillSource BrushSource(const DeviceContext& dc, const BrushData* brush);
// PenSource: the fill source of the selected pen (kNone for a null pen). Geometric pens with a
// hatched brush give a pattern.
FillSource PenSource(const DeviceContext& dc);

// BrushSink / PenSink / GapSink: sinks that paint with the given brush, the selected pen, or the
// background colour (gaps of styled cosmetic lines in OPAQUE mode) through the DC's ROP2 and
// clip. They use the DC's two blitter sets: BrushSink and PenSink share set A, GapSink uses set
// B, so a pen sink and a gap sink can be live together, but a new BrushSink or PenSink call
// reconfigures the previous one.
SpanSink& BrushSink(DeviceContext& dc, const BrushData* brush);
SpanSink& PenSink(DeviceContext& dc);
SpanSink& GapSink(DeviceContext& dc);
// SourceSink paints an arbitrary fill source with the given ROP2 (set A).
SpanSink& SourceSink(DeviceContext& dc, const FillSource& source, int rop2);

// DrawCosmeticPolyline draws a 1-pixel polyline (closed: back to the first point) with the
// selected pen's colour and style, the style running on across the corners. Gaps are painted
// in OPAQUE mode. Fewer than 2 points draws nothing.
void DrawCosmeticPolyline(DeviceContext& dc, const PointI* points, int count, bool closed);
// DrawPenOutline draws an outline with the selected pen: cosmetic pens as above, wide geometric
// pens through StrokeWide; a null pen draws nothing.
void DrawPenOutline(DeviceContext& dc, const PointI* points, int count, bool closed);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_DC_H_
