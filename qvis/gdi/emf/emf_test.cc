// Metafile loading and playback. Metafiles are written here from the record layout; playback
// at a 1:1 mapping must give exactly the pixels of the same calls made directly, and scaled
// playback those of the scaled calls.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/emf/emf_format.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {
namespace {

// EmfWriter builds a metafile image record by record.
class EmfWriter {
 public:
  // The reference device is 10 pixels per millimetre; `frame_px` is the picture's box in its
  // pixels (written in 0.01 mm, as the header keeps it).
  explicit EmfWriter(CRect frame_px = CRect(0, 0, 100, 100), std::uint16_t handles = 8) {
    Begin(kEmrHeader);
    Rect(frame_px.left, frame_px.top, frame_px.right - 1, frame_px.bottom - 1);  // bounds
    Rect(frame_px.left * 10, frame_px.top * 10, frame_px.right * 10, frame_px.bottom * 10);
    U32(kEmfSignature);
    U32(0x10000);  // version
    U32(0);        // total size, patched by Finish
    U32(0);        // record count, patched by Finish
    U32(handles);  // handle count (low word) and reserved
    U32(0);        // description length
    U32(0);        // description offset
    U32(0);        // palette entries
    U32(1000);     // reference device, pixels
    U32(1000);
    U32(100);      // and millimetres
    U32(100);
    End();
  }

  EmfWriter& Begin(std::uint32_t type) {
    start_ = bytes_.size();
    U32(type);
    U32(0);
    ++records_;
    return *this;
  }
  EmfWriter& End() {
    Patch(start_ + 4, static_cast<std::uint32_t>(bytes_.size() - start_));
    return *this;
  }
  EmfWriter& U32(std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes_.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
    return *this;
  }
  EmfWriter& I16(int v) {
    bytes_.push_back(static_cast<std::uint8_t>(v));
    bytes_.push_back(static_cast<std::uint8_t>(static_cast<unsigned>(v) >> 8));
    return *this;
  }
  EmfWriter& Rect(int l, int t, int r, int b) {
    return U32(static_cast<std::uint32_t>(l)).U32(static_cast<std::uint32_t>(t))
        .U32(static_cast<std::uint32_t>(r)).U32(static_cast<std::uint32_t>(b));
  }
  // Simple records.
  EmfWriter& Record(std::uint32_t type, std::initializer_list<std::uint32_t> fields) {
    Begin(type);
    for (std::uint32_t f : fields) U32(f);
    return End();
  }
  EmfWriter& Points32(std::uint32_t type, std::initializer_list<CPoint> points) {
    Begin(type).Rect(0, 0, 0, 0).U32(static_cast<std::uint32_t>(points.size()));
    for (const CPoint& p : points) U32(static_cast<std::uint32_t>(p.x)).U32(static_cast<std::uint32_t>(p.y));
    return End();
  }
  EmfWriter& Points16(std::uint32_t type, std::initializer_list<CPoint> points) {
    Begin(type).Rect(0, 0, 0, 0).U32(static_cast<std::uint32_t>(points.size()));
    for (const CPoint& p : points) I16(p.x).I16(p.y);
    return End();
  }
  std::vector<std::uint8_t> Finish() {
    Record(kEmrEof, {0, 16, 20});
    Patch(48, static_cast<std::uint32_t>(bytes_.size()));
    Patch(52, records_);
    return bytes_;
  }

 private:
  void Patch(std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes_[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
  }
  std::vector<std::uint8_t> bytes_;
  std::size_t start_ = 0;
  std::uint32_t records_ = 0;
};

class Canvas {
 public:
  Canvas(int w, int h) : dc_(CreateCompatibleDC(nullptr)), bitmap_(CreateBitmap32(w, h)) {
    SelectObject(dc_, bitmap_);
    BitmapView v = BitmapPixels(bitmap_);
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) v.Row32(y)[x] = 0x203040;
    }
  }
  ~Canvas() {
    DeleteDC(dc_);
    DeleteObject(bitmap_);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  HDC dc() const { return dc_; }
  std::vector<std::uint32_t> Pixels() const {
    BitmapView v = BitmapPixels(bitmap_);
    std::vector<std::uint32_t> out;
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) out.push_back(v.Row32(y)[x] & 0xFFFFFFu);
    }
    return out;
  }

 private:
  HDC dc_;
  HBITMAP bitmap_;
};

// Plays a metafile image into the box; false when it does not load.
bool Play(HDC dc, const std::vector<std::uint8_t>& bytes, const CRect& box) {
  HENHMETAFILE emf = SetEnhMetaFileBits(static_cast<UINT>(bytes.size()), bytes.data());
  if (emf == nullptr) return false;
  BOOL ok = PlayEnhMetaFile(dc, emf, &box);
  DeleteEnhMetaFile(emf);
  return ok != 0;
}

constexpr std::uint32_t kRed = 0x0000FF;    // COLORREF
constexpr std::uint32_t kGreen = 0x00FF00;
constexpr std::uint32_t kBlue = 0xFF0000;

// Line art of every kind the player knows, in logical units; `s` scales every coordinate and
// width (the direct drawing below does the same by hand).
std::vector<std::uint8_t> LineArt() {
  EmfWriter w;
  w.Record(kEmrCreatePen, {1, PS_SOLID, 0, 0, kRed})
      .Record(kEmrSelectObject, {1})
      .Record(kEmrCreateBrushIndirect, {2, BS_SOLID, kGreen, 0})
      .Record(kEmrSelectObject, {2})
      .Record(kEmrMoveToEx, {5, 5})
      .Record(kEmrLineTo, {60, 20})
      .Record(kEmrRectangle, {10, 30, 40, 50})
      .Record(kEmrEllipse, {50, 30, 90, 60})
      .Points16(kEmrPolyline16, {{5, 90}, {30, 70}, {50, 95}})
      .Points32(kEmrPolygon, {{60, 70}, {95, 75}, {80, 98}})
      .Record(kEmrCreateBrushIndirect, {3, BS_HATCHED, kBlue, HS_DIAGCROSS})
      .Record(kEmrSelectObject, {3})
      .Record(kEmrDeleteObject, {2})
      .Record(kEmrSetRop2, {R2_XORPEN})
      .Record(kEmrCreatePen, {4, PS_DASH, 0, 0, kBlue})
      .Record(kEmrSelectObject, {4})
      .Record(kEmrPie, {20, 5, 50, 25, 50, 5, 20, 25})
      .Record(kEmrSetArcDirection, {AD_CLOCKWISE})
      .Record(kEmrArc, {60, 2, 98, 28, 98, 15, 60, 15})
      .Record(0x7777, {1, 2, 3})  // unknown: skipped
      .Record(kEmrSelectObject, {kEmfStockObjectBit | NULL_BRUSH});
  // A poly-polygon with two squares.
  w.Begin(kEmrPolyPolygon16).Rect(0, 0, 0, 0).U32(2).U32(8).U32(4).U32(4);
  for (int v : {70, 40, 80, 40, 80, 50, 70, 50, 84, 40, 94, 40, 94, 50, 84, 50}) w.I16(v);
  w.End();
  return w.Finish();
}

void DrawLineArtDirectly(HDC dc) {
  HPEN red = CreatePen(PS_SOLID, 0, kRed);
  HBRUSH green = CreateSolidBrush(kGreen);
  HGDIOBJ old_pen = SelectObject(dc, red);
  HGDIOBJ old_brush = SelectObject(dc, green);
  MoveToEx(dc, 5, 5, nullptr);
  LineTo(dc, 60, 20);
  Rectangle(dc, 10, 30, 40, 50);
  Ellipse(dc, 50, 30, 90, 60);
  const CPoint line[] = {{5, 90}, {30, 70}, {50, 95}};
  Polyline(dc, line, 3);
  const CPoint tri[] = {{60, 70}, {95, 75}, {80, 98}};
  Polygon(dc, tri, 3);
  HBRUSH hatch = CreateHatchBrush(HS_DIAGCROSS, kBlue);
  SelectObject(dc, hatch);
  int rop = SetROP2(dc, R2_XORPEN);
  HPEN dash = CreatePen(PS_DASH, 0, kBlue);
  SelectObject(dc, dash);
  Pie(dc, 20, 5, 50, 25, 50, 5, 20, 25);
  int dir = SetArcDirection(dc, AD_CLOCKWISE);
  Arc(dc, 60, 2, 98, 28, 98, 15, 60, 15);
  SelectObject(dc, GetStockObject(NULL_BRUSH));
  const CPoint squares[] = {{70, 40}, {80, 40}, {80, 50}, {70, 50},
                            {84, 40}, {94, 40}, {94, 50}, {84, 50}};
  const int counts[] = {4, 4};
  PolyPolygon(dc, squares, counts, 2);
  SetArcDirection(dc, dir);
  SetROP2(dc, rop);
  SelectObject(dc, old_pen);
  SelectObject(dc, old_brush);
  DeleteObject(red);
  DeleteObject(green);
  DeleteObject(hatch);
  DeleteObject(dash);
}

TEST(EmfTest, OneToOnePlaybackEqualsDrawingDirectly) {
  Canvas played(100, 100);
  Canvas direct(100, 100);
  ASSERT_TRUE(Play(played.dc(), LineArt(), CRect(0, 0, 100, 100)));
  DrawLineArtDirectly(direct.dc());
  EXPECT_TRUE(played.Pixels() == direct.Pixels());
  EXPECT_NE(played.Pixels(), Canvas(100, 100).Pixels());
}

TEST(EmfTest, PlaybackRestoresTheDcAndFreesItsObjects) {
  Canvas c(100, 100);
  HPEN pen = CreatePen(PS_SOLID, 1, 0);
  SelectObject(c.dc(), pen);
  SetROP2(c.dc(), R2_MERGEPEN);
  SetBkColor(c.dc(), 0x123456);
  SetArcDirection(c.dc(), AD_COUNTERCLOCKWISE);
  MoveToEx(c.dc(), 7, 8, nullptr);
  HBRUSH brush = GetCurrentBrush(c.dc());
  ASSERT_TRUE(Play(c.dc(), LineArt(), CRect(0, 0, 100, 100)));
  EXPECT_EQ(GetCurrentPen(c.dc()), pen);
  EXPECT_EQ(GetCurrentBrush(c.dc()), brush);
  EXPECT_EQ(GetROP2(c.dc()), R2_MERGEPEN);
  EXPECT_EQ(GetBkColor(c.dc()), 0x123456u);
  EXPECT_EQ(GetArcDirection(c.dc()), AD_COUNTERCLOCKWISE);
  CPoint cp;
  GetCurrentPositionEx(c.dc(), &cp);
  EXPECT_EQ(cp, CPoint(7, 8));
  DeleteObject(pen);
}

TEST(EmfTest, FrameAndMappingRecordsPlaceThePicture) {
  struct Row {
    const char* what;
    std::vector<std::uint8_t> emf;
    CRect box;
    CRect expected;  // the rectangle drawn directly
  };
  auto rect_emf = [](CRect frame, std::initializer_list<std::pair<std::uint32_t, std::vector<std::uint32_t>>> mapping,
                     CRect logical) {
    EmfWriter w(frame);
    for (const auto& [type, fields] : mapping) {
      w.Begin(type);
      for (std::uint32_t f : fields) w.U32(f);
      w.End();
    }
    w.Record(kEmrRectangle, {static_cast<std::uint32_t>(logical.left), static_cast<std::uint32_t>(logical.top),
                             static_cast<std::uint32_t>(logical.right),
                             static_cast<std::uint32_t>(logical.bottom)});
    return w.Finish();
  };
  const std::uint32_t kAniso = 8;
  const std::uint32_t kLoMetric = 2;
  Row rows[] = {
      {"twice the frame", rect_emf(CRect(0, 0, 50, 50), {}, CRect(10, 10, 20, 30)), CRect(0, 0, 100, 100),
       CRect(20, 20, 40, 60)},
      {"frame offset and box offset", rect_emf(CRect(10, 10, 60, 60), {}, CRect(20, 20, 30, 30)),
       CRect(5, 5, 55, 55), CRect(15, 15, 25, 25)},
      {"window and viewport", rect_emf(CRect(0, 0, 100, 100),
                                       {{kEmrSetMapMode, {kAniso}},
                                        {kEmrSetWindowExtEx, {1000, 1000}},
                                        {kEmrSetViewportExtEx, {100, 100}},
                                        {kEmrSetWindowOrgEx, {100, 0}}},
                                       CRect(200, 100, 400, 300)),
       CRect(0, 0, 100, 100), CRect(10, 10, 30, 30)},
      // 0.1 mm units, y up: at 10 px/mm one unit is one pixel and y is mirrored.
      {"metric units", rect_emf(CRect(0, 0, 100, 100),
                                {{kEmrSetMapMode, {kLoMetric}}, {kEmrSetViewportOrgEx, {0, 100}}},
                                CRect(10, 20, 30, 50)),
       CRect(0, 0, 100, 100), CRect(10, 50, 30, 80)},
  };
  for (const Row& row : rows) {
    Canvas played(100, 100);
    Canvas direct(100, 100);
    ASSERT_TRUE(Play(played.dc(), row.emf, row.box)) << row.what;
    Rectangle(direct.dc(), row.expected.left, row.expected.top, row.expected.right, row.expected.bottom);
    EXPECT_TRUE(played.Pixels() == direct.Pixels()) << row.what;
  }
}

TEST(EmfTest, WidePensScaleWithThePicture) {
  EmfWriter w(CRect(0, 0, 50, 50));
  w.Record(kEmrExtCreatePen, {1, 0, 0, 0, 0, PS_GEOMETRIC | PS_ENDCAP_FLAT | PS_SOLID, 3, BS_SOLID, kRed, 0, 0})
      .Record(kEmrSelectObject, {1})
      .Record(kEmrMoveToEx, {5, 20})
      .Record(kEmrLineTo, {40, 20});
  Canvas played(100, 100);
  Canvas direct(100, 100);
  ASSERT_TRUE(Play(played.dc(), w.Finish(), CRect(0, 0, 100, 100)));
  LOGBRUSH lb;
  lb.lbStyle = BS_SOLID;
  lb.lbColor = kRed;
  HPEN pen = ExtCreatePen(PS_GEOMETRIC | PS_ENDCAP_FLAT | PS_SOLID, 6, &lb, 0, nullptr);
  SelectObject(direct.dc(), pen);
  MoveToEx(direct.dc(), 10, 40, nullptr);
  LineTo(direct.dc(), 80, 40);
  SelectObject(direct.dc(), GetStockObject(BLACK_PEN));
  DeleteObject(pen);
  EXPECT_TRUE(played.Pixels() == direct.Pixels());
}

// A user-styled pen's lengths scale with the picture as its width does; a record too short for
// the count it states draws its pen solid.
TEST(EmfTest, UserStylesScaleWithThePicture) {
  constexpr std::uint32_t kStyle = PS_GEOMETRIC | PS_ENDCAP_FLAT | PS_USERSTYLE;
  auto played = [](std::initializer_list<std::uint32_t> pen) {
    EmfWriter w(CRect(0, 0, 50, 50));
    w.Record(kEmrExtCreatePen, pen)
        .Record(kEmrSelectObject, {1})
        .Record(kEmrMoveToEx, {5, 20})
        .Record(kEmrLineTo, {45, 20});
    auto canvas = std::make_unique<Canvas>(100, 100);
    EXPECT_TRUE(Play(canvas->dc(), w.Finish(), CRect(0, 0, 100, 100)));
    return canvas;
  };
  const auto dashed = played({1, 0, 0, 0, 0, kStyle, 3, BS_SOLID, kRed, 0, 2, 4, 2});
  const auto short_record = played({1, 0, 0, 0, 0, kStyle, 3, BS_SOLID, kRed, 0, 2, 4});
  auto direct = [](DWORD style, DWORD count, const DWORD* entries) {
    auto canvas = std::make_unique<Canvas>(100, 100);
    LOGBRUSH lb{BS_SOLID, kRed, 0};
    HPEN pen = ExtCreatePen(style, 6, &lb, count, entries);
    SelectObject(canvas->dc(), pen);
    MoveToEx(canvas->dc(), 10, 40, nullptr);
    LineTo(canvas->dc(), 90, 40);
    SelectObject(canvas->dc(), GetStockObject(BLACK_PEN));
    DeleteObject(pen);
    return canvas;
  };
  const DWORD twice[] = {8, 4};
  EXPECT_TRUE(dashed->Pixels() == direct(kStyle, 2, twice)->Pixels());
  EXPECT_FALSE(dashed->Pixels() == direct(PS_GEOMETRIC | PS_ENDCAP_FLAT | PS_SOLID, 0, nullptr)->Pixels());
  EXPECT_TRUE(short_record->Pixels() ==
              direct(PS_GEOMETRIC | PS_ENDCAP_FLAT | PS_SOLID, 0, nullptr)->Pixels());
}

TEST(EmfTest, MalformedImagesAreRefused) {
  const std::vector<std::uint8_t> good = LineArt();
  ASSERT_NE(std::unique_ptr<EnhMetaFile>(ParseEnhMetaFile(good.data(), good.size())), nullptr);
  auto refused = [](std::vector<std::uint8_t> bytes) {
    EnhMetaFile* emf = ParseEnhMetaFile(bytes.data(), bytes.size());
    delete emf;
    return emf == nullptr;
  };
  auto patched = [&](std::size_t at, std::uint32_t v) {
    std::vector<std::uint8_t> b = good;
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
    return b;
  };
  const std::size_t first = 88;  // the first record after the header
  EXPECT_TRUE(refused({}));
  EXPECT_TRUE(refused(std::vector<std::uint8_t>(good.begin(), good.begin() + 87)));
  EXPECT_TRUE(refused(patched(0, 2)));                      // not a header first
  EXPECT_TRUE(refused(patched(40, 0x12345678)));            // signature
  EXPECT_TRUE(refused(patched(48, static_cast<std::uint32_t>(good.size() + 4))));  // longer than the data
  EXPECT_TRUE(refused(patched(48, static_cast<std::uint32_t>(good.size() - 20))));  // EOF cut off
  EXPECT_TRUE(refused(patched(4, 0xFFFFFFF0u)));            // header size past the end
  EXPECT_TRUE(refused(patched(first + 4, 6)));              // record size not a multiple of 4
  EXPECT_TRUE(refused(patched(first + 4, 0)));              // zero size would never advance
  EXPECT_TRUE(refused(patched(first + 4, 8)));              // pen record too short for its fields
  // A point count that runs past its record.
  EmfWriter w;
  w.Begin(kEmrPolyline16).Rect(0, 0, 0, 0).U32(1000).I16(1).I16(2).End();
  EXPECT_TRUE(refused(w.Finish()));
  // Poly-polygon counts that do not add up.
  EmfWriter pp;
  pp.Begin(kEmrPolyPolygon16).Rect(0, 0, 0, 0).U32(2).U32(3).U32(2).U32(2);
  for (int i = 0; i < 6; ++i) pp.I16(i);
  pp.End();
  EXPECT_TRUE(refused(pp.Finish()));
  // Trailing bytes after the metafile are ignored.
  std::vector<std::uint8_t> tail = good;
  tail.resize(good.size() + 13, 0xEE);
  EXPECT_FALSE(refused(tail));
}

TEST(EmfTest, RandomDamageNeverCrashesAndPlaysOnlyWholeFiles) {
  const std::vector<std::uint8_t> good = LineArt();
  Canvas c(64, 64);
  std::mt19937 rng(20240611);
  int loaded = 0;
  for (int round = 0; round < 3000; ++round) {
    std::vector<std::uint8_t> bytes = good;
    switch (round % 3) {
      case 0:  // flipped bytes
        for (int k = 0; k < 1 + static_cast<int>(rng() % 6); ++k) bytes[rng() % bytes.size()] ^= static_cast<std::uint8_t>(1 + rng() % 255);
        break;
      case 1:  // truncated
        bytes.resize(rng() % bytes.size());
        break;
      default:  // a field replaced by an extreme value
        {
          std::size_t at = (rng() % (bytes.size() / 4)) * 4;
          std::uint32_t extreme[] = {0, 0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu, 0xFFFF, 0x10000};
          std::uint32_t v = extreme[rng() % 6];
          for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
        }
        break;
    }
    HENHMETAFILE emf = SetEnhMetaFileBits(static_cast<UINT>(bytes.size()), bytes.data());
    if (emf == nullptr) continue;
    ++loaded;
    CRect boxes[] = {CRect(0, 0, 64, 64), CRect(-2000000000, -5, 2000000000, 70), CRect(10, 10, 10, 10)};
    for (const CRect& box : boxes) EXPECT_TRUE(PlayEnhMetaFile(c.dc(), emf, &box));
    EXPECT_TRUE(DeleteEnhMetaFile(emf));
  }
  EXPECT_GT(loaded, 100);  // many damaged fields are harmless values and still play
}

TEST(EmfTest, FilesAndHandles) {
  const std::vector<std::uint8_t> good = LineArt();
  const std::string path = (std::filesystem::temp_directory_path() / "qvis_emf_test.emf").string();
  {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(good.data()), static_cast<std::streamsize>(good.size()));
  }
  HENHMETAFILE emf = GetEnhMetaFileA(path.c_str());
  ASSERT_NE(emf, nullptr);
  Canvas c(100, 100);
  CRect box(0, 0, 100, 100);
  EXPECT_TRUE(PlayEnhMetaFile(c.dc(), emf, &box));
  EXPECT_FALSE(PlayEnhMetaFile(nullptr, emf, &box));
  EXPECT_FALSE(PlayEnhMetaFile(c.dc(), emf, nullptr));
  EXPECT_TRUE(DeleteEnhMetaFile(emf));
  EXPECT_FALSE(DeleteEnhMetaFile(emf));          // already gone
  EXPECT_FALSE(PlayEnhMetaFile(c.dc(), emf, &box));
  EXPECT_FALSE(DeleteEnhMetaFile(nullptr));
  EXPECT_EQ(GetEnhMetaFileA(nullptr), nullptr);
  EXPECT_EQ(GetEnhMetaFileA("/nonexistent/picture.emf"), nullptr);
  EXPECT_EQ(SetEnhMetaFileBits(0, nullptr), nullptr);
  std::remove(path.c_str());
}

}  // namespace
}  // namespace qvis::gdi
