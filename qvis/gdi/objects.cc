// Graphics objects and device contexts: creation, the live-object registry, selection,
// deletion (deferred while selected), stock objects and DC state.
#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <deque>
#include <mutex>
#include <memory>
#include <new>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {

// ObjectRegistry: the table of live objects. A handle is (generation << kIndexBits | slot + 1)
// shifted left by kHandleShift, so it is never null and never a small integer; a slot's
// generation grows each time its object is unregistered, so an old handle to the slot no longer
// matches. Freed slots are reused oldest first, which keeps a slot's generations far apart.
// Every access holds the mutex, which also guards the objects' selection counts.
struct ObjectRegistry {
  static ObjectRegistry& Get() {
    static ObjectRegistry* registry = new ObjectRegistry;  // never destroyed: outlives statics
    return *registry;
  }

  static constexpr int kHandleShift = 4;
  static constexpr int kIndexBits = sizeof(std::uintptr_t) >= 8 ? 28 : 20;
  static constexpr std::uintptr_t kIndexMask = (std::uintptr_t{1} << kIndexBits) - 1;
  static constexpr int kGenerationBits =
      static_cast<int>(sizeof(std::uintptr_t) * 8) - kIndexBits - kHandleShift;
  static constexpr std::uintptr_t kGenerationMask =
      (std::uintptr_t{1} << kGenerationBits) - 1;

  struct Slot {
    ObjectRecord* object = nullptr;
    std::uintptr_t generation = 0;
  };

  static HGDIOBJ Encode(std::size_t index, std::uintptr_t generation) {
    const std::uintptr_t value =
        ((generation & kGenerationMask) << kIndexBits | (index + 1)) << kHandleShift;
    return reinterpret_cast<HGDIOBJ>(value);
  }

  // Find: the object a handle names, or null. Call with the mutex held.
  ObjectRecord* Find(HGDIOBJ handle) const {
    const std::uintptr_t value = reinterpret_cast<std::uintptr_t>(handle);
    if (value == 0 || (value & ((std::uintptr_t{1} << kHandleShift) - 1)) != 0) return nullptr;
    const std::uintptr_t bits = value >> kHandleShift;
    const std::uintptr_t index_plus_one = bits & kIndexMask;
    if (index_plus_one == 0 || index_plus_one > slots.size()) return nullptr;
    const Slot& slot = slots[index_plus_one - 1];
    if (slot.object == nullptr || ((bits >> kIndexBits) & kGenerationMask) != slot.generation) {
      return nullptr;
    }
    return slot.object;
  }

  void Add(ObjectRecord* object) {
    std::size_t index;
    if (!free_slots.empty()) {
      index = free_slots.front();
      free_slots.pop_front();
    } else {
      if (slots.size() >= kIndexMask) throw std::bad_alloc();
      slots.emplace_back();
      index = slots.size() - 1;
    }
    slots[index].object = object;
    object->handle = Encode(index, slots[index].generation);
  }

  void Remove(ObjectRecord* object) {
    const std::uintptr_t bits = reinterpret_cast<std::uintptr_t>(object->handle) >> kHandleShift;
    const std::uintptr_t index_plus_one = bits & kIndexMask;
    if (index_plus_one == 0 || index_plus_one > slots.size()) return;
    Slot& slot = slots[index_plus_one - 1];
    if (slot.object != object) return;
    slot.object = nullptr;
    slot.generation = (slot.generation + 1) & kGenerationMask;
    // The slot goes back for reuse only if the list can take it; otherwise it stays retired.
    try {
      free_slots.push_back(index_plus_one - 1);
    } catch (const std::bad_alloc&) {
    }
  }

  static void Destroy(ObjectRecord* object) { delete object; }

  std::mutex mutex;
  std::vector<Slot> slots;
  std::deque<std::size_t> free_slots;
};

namespace {

// Largest bitmap we agree to allocate, in bytes; larger requests fail like an exhausted heap.
constexpr std::int64_t kMaxBitmapBytes = std::int64_t{1} << 34;

constexpr int kStockCount = 22;
constexpr int kDefaultBitmapIndex = 21;  // the 1x1 monochrome bitmap of a new memory DC

template <typename T>
T* MakeStock() {
  auto object = std::make_unique<T>();
  object->stock = true;
  Register(object.get());
  return object.release();
}

PenData* StockPen(int style, COLORREF color) {
  PenData* pen = MakeStock<PenData>();
  pen->style = style;
  pen->color = color;
  return pen;
}

BrushData* StockBrush(UINT style, COLORREF color) {
  BrushData* brush = MakeStock<BrushData>();
  brush->style = style;
  brush->color = color;
  return brush;
}

FontData* StockFont(LONG height, LONG weight, BYTE pitch, const char* face) {
  FontData* font = MakeStock<FontData>();
  font->logfont.lfHeight = height;
  font->logfont.lfWeight = weight;
  font->logfont.lfPitchAndFamily = pitch;
  std::strncpy(font->logfont.lfFaceName, face, kFaceNameSize - 1);
  return font;
}

std::unique_ptr<BitmapData> NewBitmap(int width, int height, int bpp) {
  if (width < 0 || height < 0) return nullptr;
  std::int64_t stride = bpp == 32 ? std::int64_t{width} * 4 : ((std::int64_t{width} + 31) / 32) * 4;
  std::int64_t bytes = stride * height;
  if (bytes > kMaxBitmapBytes) return nullptr;
  auto bitmap = std::make_unique<BitmapData>();
  bitmap->width = width;
  bitmap->height = height;
  bitmap->bpp = bpp;
  bitmap->stride = static_cast<std::ptrdiff_t>(stride);
  if (bytes > 0) {
    bitmap->bits.reset(new (std::nothrow) std::uint8_t[static_cast<std::size_t>(bytes)]);
    if (!bitmap->bits) return nullptr;
    std::memset(bitmap->bits.get(), 0, static_cast<std::size_t>(bytes));
  }
  return bitmap;
}

const std::array<ObjectRecord*, kStockCount>& StockObjects() {
  static const std::array<ObjectRecord*, kStockCount> stock = [] {
    std::array<ObjectRecord*, kStockCount> s{};
    s[0] = StockBrush(BS_SOLID, 0xFFFFFF);
    s[1] = StockBrush(BS_SOLID, 0xC0C0C0);
    s[2] = StockBrush(BS_SOLID, 0x808080);
    s[3] = StockBrush(BS_SOLID, 0x404040);
    s[4] = StockBrush(BS_SOLID, 0x000000);
    s[5] = StockBrush(BS_NULL, 0);
    s[6] = StockPen(PS_SOLID, 0xFFFFFF);
    s[7] = StockPen(PS_SOLID, 0x000000);
    s[8] = StockPen(PS_NULL, 0);
    s[10] = StockFont(12, 400, 1, "Monospace");  // OEM fixed
    s[11] = StockFont(12, 400, 1, "Monospace");  // ANSI fixed
    s[12] = StockFont(12, 400, 2, "Sans");       // ANSI variable
    s[13] = StockFont(16, 700, 2, "Sans");       // system
    s[14] = StockFont(16, 700, 2, "Sans");       // device default
    s[16] = StockFont(16, 400, 1, "Monospace");  // system fixed
    s[17] = StockFont(-11, 400, 2, "Sans");      // default GUI
    std::unique_ptr<BitmapData> bitmap = NewBitmap(1, 1, 1);
    bitmap->stock = true;
    Register(bitmap.get());
    s[kDefaultBitmapIndex] = bitmap.release();
    return s;
  }();
  return stock;
}

// Release drops one selection of an object, freeing it when it was deleted meanwhile. Returns
// the handle the object had, or null when it has just been freed.
HGDIOBJ Release(ObjectRecord* object) {
  if (object == nullptr) return nullptr;
  if (object->stock) return object->handle;
  ObjectRegistry& r = ObjectRegistry::Get();
  {
    std::lock_guard<std::mutex> lock(r.mutex);
    if (object->select_count > 0) --object->select_count;
    if (object->select_count != 0 || !object->delete_pending) return object->handle;
  }
  ObjectRegistry::Destroy(object);
  return nullptr;
}

void Hold(ObjectRecord* object) {
  if (object == nullptr || object->stock) return;
  ObjectRegistry& r = ObjectRegistry::Get();
  std::lock_guard<std::mutex> lock(r.mutex);
  ++object->select_count;
}

ObjectRecord* Lookup(HGDIOBJ handle) {
  if (handle == nullptr) return nullptr;
  ObjectRegistry& r = ObjectRegistry::Get();
  std::lock_guard<std::mutex> lock(r.mutex);
  return r.Find(handle);
}

template <typename T>
T* Checked(HGDIOBJ handle, ObjectKind kind) {
  ObjectRecord* o = Lookup(handle);
  if (o == nullptr || o->kind != kind) return nullptr;
  return static_cast<T*>(o);
}

}  // namespace

// --- Registry ---------------------------------------------------------------------------------

bool IsLive(HGDIOBJ handle) { return Lookup(handle) != nullptr; }

void Register(ObjectRecord* object) {
  auto& r = ObjectRegistry::Get();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.Add(object);
}

void Unregister(ObjectRecord* object) {
  auto& r = ObjectRegistry::Get();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.Remove(object);
}

PenData* AsPen(HGDIOBJ o) { return Checked<PenData>(o, ObjectKind::kPen); }
BrushData* AsBrush(HGDIOBJ o) { return Checked<BrushData>(o, ObjectKind::kBrush); }
FontData* AsFont(HGDIOBJ o) { return Checked<FontData>(o, ObjectKind::kFont); }
BitmapData* AsBitmap(HGDIOBJ o) { return Checked<BitmapData>(o, ObjectKind::kBitmap); }
RegionData* AsRegion(HGDIOBJ o) { return Checked<RegionData>(o, ObjectKind::kRegion); }

bool IsSelected(HGDIOBJ handle) {
  if (handle == nullptr) return false;
  ObjectRegistry& r = ObjectRegistry::Get();
  std::lock_guard<std::mutex> lock(r.mutex);
  const ObjectRecord* o = r.Find(handle);
  return o != nullptr && !o->stock && o->select_count > 0;
}

DWORD GetObjectType(HGDIOBJ handle) {
  const ObjectRecord* o = Lookup(handle);
  if (o == nullptr) return 0;
  switch (o->kind) {
    case ObjectKind::kPen: return 1;
    case ObjectKind::kBrush: return 2;
    case ObjectKind::kFont: return 6;
    case ObjectKind::kBitmap: return 7;
    case ObjectKind::kRegion: return 8;
  }
  return 0;
}

// --- Device contexts ----------------------------------------------------------------------------

DeviceContext::DeviceContext() {
  const auto& stock = StockObjects();
  pen = static_cast<PenData*>(stock[BLACK_PEN]);
  brush = static_cast<BrushData*>(stock[WHITE_BRUSH]);
  font = static_cast<FontData*>(stock[SYSTEM_FONT]);
  bitmap = static_cast<BitmapData*>(stock[kDefaultBitmapIndex]);
}

DeviceContext::~DeviceContext() {
  if (bitmap != nullptr && bitmap->selected_in == this) bitmap->selected_in = nullptr;
  Release(pen);
  Release(brush);
  Release(font);
  Release(bitmap);
}

HDC CreateCompatibleDC(HDC) { return new DeviceContext; }

BOOL DeleteDC(HDC dc) {
  if (dc == nullptr) return FALSE;
  delete dc;
  return TRUE;
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ handle) {
  if (dc == nullptr) return nullptr;
  ObjectRecord* object = Lookup(handle);
  if (object == nullptr) return nullptr;
  switch (object->kind) {
    case ObjectKind::kPen: {
      ObjectRecord* old = dc->pen;
      dc->pen = static_cast<PenData*>(object);
      Hold(object);
      return Release(old);
    }
    case ObjectKind::kBrush: {
      ObjectRecord* old = dc->brush;
      dc->brush = static_cast<BrushData*>(object);
      Hold(object);
      return Release(old);
    }
    case ObjectKind::kFont: {
      ObjectRecord* old = dc->font;
      dc->font = static_cast<FontData*>(object);
      Hold(object);
      return Release(old);
    }
    case ObjectKind::kBitmap: {
      auto* bitmap = static_cast<BitmapData*>(object);
      if (bitmap == dc->bitmap) return handle;
      if (!bitmap->stock && bitmap->selected_in != nullptr) return nullptr;
      BitmapData* old = dc->bitmap;
      if (old->selected_in == dc) old->selected_in = nullptr;
      dc->bitmap = bitmap;
      if (!bitmap->stock) bitmap->selected_in = dc;
      Hold(object);
      return Release(old);
    }
    case ObjectKind::kRegion: {
      int kind = SelectClipRgn(dc, static_cast<RegionData*>(object)->Handle());
      return reinterpret_cast<HGDIOBJ>(static_cast<std::intptr_t>(kind));
    }
  }
  return nullptr;
}

BOOL DeleteObject(HGDIOBJ handle) {
  if (handle == nullptr) return FALSE;
  ObjectRecord* object = nullptr;
  {
    auto& r = ObjectRegistry::Get();
    std::lock_guard<std::mutex> lock(r.mutex);
    object = r.Find(handle);
    if (object == nullptr) return FALSE;
    if (object->stock) return TRUE;
    r.Remove(object);
    if (object->select_count > 0) {
      object->delete_pending = true;
      return TRUE;
    }
  }
  ObjectRegistry::Destroy(object);
  return TRUE;
}

HGDIOBJ GetStockObject(int index) {
  if (index < 0 || index >= kStockCount) return nullptr;
  const ObjectRecord* object = StockObjects()[static_cast<std::size_t>(index)];
  return object != nullptr ? object->handle : nullptr;
}

HPEN GetCurrentPen(HDC dc) { return dc && dc->pen ? dc->pen->Handle() : nullptr; }
HBRUSH GetCurrentBrush(HDC dc) { return dc && dc->brush ? dc->brush->Handle() : nullptr; }
HFONT GetCurrentFont(HDC dc) { return dc && dc->font ? dc->font->Handle() : nullptr; }
HBITMAP GetCurrentBitmap(HDC dc) { return dc && dc->bitmap ? dc->bitmap->Handle() : nullptr; }

// --- DC state -----------------------------------------------------------------------------------

namespace {

int SetInRange(HDC dc, int DeviceContext::*field, int value, int lo, int hi) {
  if (dc == nullptr || value < lo || value > hi) return 0;
  int old = dc->*field;
  dc->*field = value;
  return old;
}

}  // namespace

int SetROP2(HDC dc, int rop2) { return SetInRange(dc, &DeviceContext::rop2, rop2, 1, 16); }
int GetROP2(HDC dc) { return dc ? dc->rop2 : 0; }
int SetBkMode(HDC dc, int mode) { return SetInRange(dc, &DeviceContext::bk_mode, mode, 1, 2); }
int GetBkMode(HDC dc) { return dc ? dc->bk_mode : 0; }
int SetPolyFillMode(HDC dc, int mode) {
  return SetInRange(dc, &DeviceContext::poly_fill_mode, mode, 1, 2);
}
int GetPolyFillMode(HDC dc) { return dc ? dc->poly_fill_mode : 0; }
int SetArcDirection(HDC dc, int direction) {
  return SetInRange(dc, &DeviceContext::arc_direction, direction, 1, 2);
}
int GetArcDirection(HDC dc) { return dc ? dc->arc_direction : 0; }

COLORREF SetBkColor(HDC dc, COLORREF color) {
  if (dc == nullptr) return kClrInvalid;
  COLORREF old = dc->bk_color;
  dc->bk_color = color & 0xFFFFFF;
  return old;
}
COLORREF GetBkColor(HDC dc) { return dc ? dc->bk_color : kClrInvalid; }
COLORREF SetTextColor(HDC dc, COLORREF color) {
  if (dc == nullptr) return kClrInvalid;
  COLORREF old = dc->text_color;
  dc->text_color = color & 0xFFFFFF;
  return old;
}
COLORREF GetTextColor(HDC dc) { return dc ? dc->text_color : kClrInvalid; }

UINT SetTextAlign(HDC dc, UINT align) {
  if (dc == nullptr) return 0xFFFFFFFFu;
  UINT old = dc->text_align;
  dc->text_align = align;
  return old;
}
UINT GetTextAlign(HDC dc) { return dc ? dc->text_align : 0xFFFFFFFFu; }

int SetTextCharacterExtra(HDC dc, int extra) {
  if (dc == nullptr) return INT_MIN;
  int old = dc->char_extra;
  dc->char_extra = extra;
  return old;
}
int GetTextCharacterExtra(HDC dc) { return dc ? dc->char_extra : INT_MIN; }

BOOL SetMiterLimit(HDC dc, float limit, float* old_limit) {
  if (dc == nullptr || !(limit >= 1.0f)) return FALSE;
  if (old_limit != nullptr) *old_limit = dc->miter_limit;
  dc->miter_limit = limit;
  return TRUE;
}

BOOL SetBrushOrgEx(HDC dc, int x, int y, CPoint* previous) {
  if (dc == nullptr) return FALSE;
  if (previous != nullptr) *previous = CPoint(dc->brush_origin.x, dc->brush_origin.y);
  dc->brush_origin = PointI{x, y};
  return TRUE;
}
BOOL GetBrushOrgEx(HDC dc, CPoint* origin) {
  if (dc == nullptr || origin == nullptr) return FALSE;
  *origin = CPoint(dc->brush_origin.x, dc->brush_origin.y);
  return TRUE;
}

BOOL MoveToEx(HDC dc, int x, int y, CPoint* previous) {
  if (dc == nullptr) return FALSE;
  if (previous != nullptr) *previous = CPoint(dc->position.x, dc->position.y);
  dc->position = PointI{x, y};
  if (dc->path.state == PathData::kOpen) dc->path.MoveTo(x, y);
  return TRUE;
}
BOOL GetCurrentPositionEx(HDC dc, CPoint* position) {
  if (dc == nullptr || position == nullptr) return FALSE;
  *position = CPoint(dc->position.x, dc->position.y);
  return TRUE;
}

// --- Path records ---------------------------------------------------------------------------------

void PathData::MoveTo(double x, double y) {
  if (!vertices.empty() && vertices.back().type == kMoveTo) {
    vertices.back().x = x;
    vertices.back().y = y;
  } else {
    vertices.push_back(Vertex{x, y, kMoveTo});
  }
  figure_open = true;
}

void PathData::LineTo(double from_x, double from_y, double x, double y) {
  if (!figure_open) MoveTo(from_x, from_y);
  vertices.push_back(Vertex{x, y, kLineTo});
}

void PathData::CloseFigure() {
  if (figure_open && !vertices.empty() && vertices.back().type != kMoveTo) {
    vertices.back().type |= kCloseFigure;
  }
  figure_open = false;
}

// --- Pens, brushes, fonts, bitmaps ---------------------------------------------------------------

HPEN CreatePen(int style, int width, COLORREF color) {
  if (style < PS_SOLID || style > PS_INSIDEFRAME) return nullptr;
  auto pen = std::make_unique<PenData>();
  pen->style = style;
  pen->width = width < 1 ? 1 : width;
  pen->geometric = width > 1;
  pen->color = color & 0xFFFFFF;
  // Wide pens made here draw their dashed styles solid.
  if (pen->geometric && style >= PS_DASH && style <= PS_DASHDOTDOT) pen->style = PS_SOLID;
  pen->SetThinStyle();
  Register(pen.get());
  return pen.release()->Handle();
}

void PenData::SetThinStyle() {
  std::uint32_t user[16] = {};
  const int n = static_cast<int>(std::min<std::size_t>(user_style.size(), 16));
  for (int i = 0; i < n; ++i) user[i] = static_cast<std::uint32_t>(user_style[static_cast<std::size_t>(i)]);
  thin_style = ThinPenStyle(style, geometric, user, n);
}

HPEN ExtCreatePen(DWORD style, DWORD width, const LOGBRUSH* brush, DWORD style_count,
                  const DWORD* style_entries) {
  if (brush == nullptr) return nullptr;
  const DWORD type = style & PS_TYPE_MASK;
  const int kind = static_cast<int>(style & PS_STYLE_MASK);
  if (type != PS_COSMETIC && type != PS_GEOMETRIC) return nullptr;
  if (kind > PS_ALTERNATE) return nullptr;
  if (kind == PS_USERSTYLE && (style_count == 0 || style_count > 16 || style_entries == nullptr)) {
    return nullptr;
  }
  if (brush->lbStyle != BS_SOLID && brush->lbStyle != BS_NULL && brush->lbStyle != BS_HATCHED) {
    return nullptr;
  }
  if (type == PS_COSMETIC && width != 1) return nullptr;
  auto pen = std::make_unique<PenData>();
  pen->style = kind;
  pen->geometric = type == PS_GEOMETRIC;
  pen->width = static_cast<int>(width > 0x7FFFFFFFu ? 0x7FFFFFFFu : width);
  if (pen->width < 1) pen->width = 1;
  pen->color = brush->lbColor & 0xFFFFFF;
  pen->end_cap = style & PS_ENDCAP_MASK;
  pen->join = style & PS_JOIN_MASK;
  pen->brush_style = brush->lbStyle;
  pen->hatch = static_cast<int>(brush->lbHatch % 6);
  if (brush->lbStyle == BS_NULL) pen->style = PS_NULL;
  if (kind == PS_USERSTYLE) pen->user_style.assign(style_entries, style_entries + style_count);
  pen->SetThinStyle();
  pen->paints_gaps = false;
  Register(pen.get());
  return pen.release()->Handle();
}

HBRUSH CreateSolidBrush(COLORREF color) {
  auto brush = std::make_unique<BrushData>();
  brush->style = BS_SOLID;
  brush->color = color & 0xFFFFFF;
  Register(brush.get());
  return brush.release()->Handle();
}

HBRUSH CreateHatchBrush(int hatch, COLORREF color) {
  if (hatch < HS_HORIZONTAL || hatch > HS_DIAGCROSS) return nullptr;
  auto brush = std::make_unique<BrushData>();
  brush->style = BS_HATCHED;
  brush->color = color & 0xFFFFFF;
  brush->hatch = hatch;
  Register(brush.get());
  return brush.release()->Handle();
}

HFONT CreateFontIndirectA(const LOGFONTA* logfont) {
  if (logfont == nullptr) return nullptr;
  auto font = std::make_unique<FontData>();
  font->logfont = *logfont;
  font->logfont.lfFaceName[kFaceNameSize - 1] = '\0';
  Register(font.get());
  return font.release()->Handle();
}

HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bits_per_pixel, const void* bits) {
  if (planes != 1 || (bits_per_pixel != 1 && bits_per_pixel != 32)) return nullptr;
  std::unique_ptr<BitmapData> bitmap = NewBitmap(width, height, static_cast<int>(bits_per_pixel));
  if (bitmap == nullptr) return nullptr;
  if (bits != nullptr && bitmap->bits) {
    auto* src = static_cast<const std::uint8_t*>(bits);
    // Win32 pads source rows to 16 bits; 32-bpp rows need no padding.
    std::size_t src_stride = bits_per_pixel == 32
                                 ? static_cast<std::size_t>(width) * 4
                                 : ((static_cast<std::size_t>(width) + 15) / 16) * 2;
    std::size_t copy = std::min<std::size_t>(src_stride, static_cast<std::size_t>(bitmap->stride));
    for (int y = 0; y < height; ++y) {
      std::memcpy(bitmap->RowBytes(y), src + src_stride * static_cast<std::size_t>(y), copy);
    }
    if (bits_per_pixel == 32) {
      for (int y = 0; y < height; ++y) {
        std::uint32_t* row = bitmap->Row32(y);
        for (int x = 0; x < width; ++x) row[x] &= 0xFFFFFFu;
      }
    }
  }
  Register(bitmap.get());
  return bitmap.release()->Handle();
}

HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height) {
  int bpp = (dc != nullptr && dc->bitmap != nullptr) ? dc->bitmap->bpp : 32;
  return CreateBitmap(width, height, 1, static_cast<UINT>(bpp), nullptr);
}

HBITMAP CreateBitmap32(int width, int height) { return CreateBitmap(width, height, 1, 32, nullptr); }

BitmapView BitmapPixels(HBITMAP handle) {
  BitmapData* bitmap = AsBitmap(handle);
  if (bitmap == nullptr) return {};
  BitmapView view;
  view.width = bitmap->width;
  view.height = bitmap->height;
  view.bits_per_pixel = bitmap->bpp;
  view.stride = bitmap->stride;
  view.bits = bitmap->bits.get();
  return view;
}

}  // namespace qvis::gdi
