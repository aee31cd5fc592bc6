// Tests of the pen, brush and font caches: keys, counts, shared stock objects, copies and the
// character set.
#include <string>

#include "gtest/gtest.h"
#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/object_caches.h"
#include "qvis/render/render_test_canvas.h"

namespace {

using qvis::testing::Canvas;

TEST(PenCacheTest, WidthsBelowTwoShareTheOnePixelKeyButEndCapsStayApart) {
  CQVIS_PenMgr pens;
  const COLORREF red = 0x0000FF;
  CPen* one = pens.CreatePen(0, 0, 1, red);
  ASSERT_NE(one, nullptr);
  EXPECT_NE(one->m_hObject, nullptr);
  EXPECT_EQ(pens.CreatePen(0, 0, 1, red), one);
  EXPECT_EQ(pens.CreatePen(0, 0, 0, red), one);
  EXPECT_EQ(pens.CreatePen(0, 0, -3, red), one);
  CPen* flat = pens.CreatePen(0, PS_ENDCAP_FLAT, 1, red);
  EXPECT_NE(flat, one);
  EXPECT_NE(flat->m_hObject, one->m_hObject);
  EXPECT_NE(pens.CreatePen(0, 0, 1, 0x00FF00), one);            // colour is part of the key
  EXPECT_NE(pens.CreatePen(PS_DASH, 0, 1, red), one);          // and the style
  CPen* five = pens.CreatePen(0, PS_ENDCAP_FLAT, 5, red);
  CPen* six = pens.CreatePen(0, PS_ENDCAP_FLAT, 6, red);
  EXPECT_NE(five, six);
  EXPECT_EQ(pens.CreatePen(0, PS_ENDCAP_FLAT, 5, red), five);
  EXPECT_EQ(pens.PenCount(), 6);
}

TEST(PenCacheTest, CountIsTheNumberOfEndCapValuesPerStyle) {
  CQVIS_PenMgr pens;
  pens.CreatePen(0, 0, 1, 1);
  pens.CreatePen(0, 0, 3, 2);
  pens.CreatePen(0, PS_ENDCAP_SQUARE, 1, 1);
  EXPECT_EQ(pens.Count(0), 2);
  EXPECT_EQ(pens.Count(), 2);
  pens.CreatePen(PS_DOT, 0, 1, 1);
  EXPECT_EQ(pens.Count(PS_DOT), 1);
  EXPECT_EQ(pens.Count(), 3);
  // Styles outside the six tables are refused, not stored.
  EXPECT_EQ(pens.CreatePen(6, 0, 1, 1), nullptr);
  EXPECT_EQ(pens.CreatePen(-1, 0, 1, 1), nullptr);
  EXPECT_EQ(pens.Count(6), 0);
  EXPECT_EQ(pens.Count(), 3);
  pens.Clear();
  EXPECT_EQ(pens.Count(), 0);
  EXPECT_EQ(pens.PenCount(), 0);
}

TEST(PenCacheTest, ACopySharesThePensAndOutlivesTheSource) {
  Canvas canvas(4, 4);
  auto* source = new CQVIS_PenMgr;
  CPen* pen = source->CreatePen(0, 0, 4, 0x00FF00);
  CQVIS_PenMgr copy(*source);
  EXPECT_EQ(copy.CreatePen(0, 0, 4, 0x00FF00), pen);
  delete source;
  // Still a live object: selecting it works and returns the previous pen.
  EXPECT_NE(qvis::gdi::SelectObject(canvas.dc(), pen->m_hObject), nullptr);
  EXPECT_EQ(qvis::AsGdiObject(qvis::gdi::GetCurrentPen(canvas.dc())), pen->m_hObject);
}

TEST(BrushCacheTest, StylesAndTheSharedHollowBrush) {
  CQVIS_BrushMgr brushes;
  CBrush* hollow_a = brushes.CreateBrush(7, 0x123456);
  CBrush* hollow_b = brushes.CreateBrush(7, 0);
  EXPECT_NE(hollow_a, hollow_b);
  EXPECT_EQ(hollow_a->m_hObject, hollow_b->m_hObject);
  EXPECT_EQ(hollow_a->m_hObject, qvis::gdi::GetStockObject(NULL_BRUSH));
  EXPECT_EQ(brushes.Count(7), 2);

  CBrush* solid = brushes.CreateBrush(6, 0x00FF00);
  EXPECT_EQ(brushes.CreateBrush(6, 0x00FF00), solid);
  EXPECT_EQ(brushes.Count(6), 1);
  CBrush* hatch = brushes.CreateBrush(HS_CROSS, 0x00FF00);
  EXPECT_NE(hatch, solid);
  EXPECT_NE(hatch->m_hObject, nullptr);
  // Styles 8 and 9 go to the hatch creation, which refuses them: an empty entry is kept.
  CBrush* eight = brushes.CreateBrush(8, 1);
  ASSERT_NE(eight, nullptr);
  EXPECT_EQ(eight->m_hObject, nullptr);
  EXPECT_EQ(brushes.CreateBrush(8, 1), eight);
  EXPECT_EQ(brushes.CreateBrush(10, 1), nullptr);
  EXPECT_EQ(brushes.Count(), 5);

  // Clearing must not free the stock object.
  brushes.Clear();
  EXPECT_EQ(brushes.Count(), 0);
  Canvas canvas(4, 4);
  EXPECT_NE(qvis::gdi::SelectObject(canvas.dc(), qvis::gdi::GetStockObject(NULL_BRUSH)), nullptr);
  EXPECT_EQ(brushes.CreateBrush(7, 5)->m_hObject, qvis::gdi::GetStockObject(NULL_BRUSH));
}

TEST(FontCacheTest, KeyIsCaseSensitiveAndIgnoresTheCharacterSet) {
  CQVIS_FontMgr fonts;
  CFont* a = fonts.CreateFontA("Arial", 20, 0, 0, 0, 400, 0);
  CFont* b = fonts.CreateFontA("arial", 20, 0, 0, 0, 400, 0);
  ASSERT_NE(a, nullptr);
  EXPECT_NE(a, b);
  EXPECT_EQ(fonts.GetCount(), 2);
  EXPECT_EQ(fonts.CreateFontA("Arial", 20, 0, 0, 0, 400, 0), a);

  fonts.GetAt(0)->SetCharSet(SHIFTJIS_CHARSET);
  EXPECT_EQ(fonts.Find("Arial", 20, 0, 0, 0, 400, 0), a);

  struct Row {
    int height, escapement;
    char italic, underline;
    long weight;
    char strike;
  } differing[] = {{21, 0, 0, 0, 400, 0}, {20, 10, 0, 0, 400, 0}, {20, 0, 1, 0, 400, 0},
                   {20, 0, 0, 1, 400, 0}, {20, 0, 0, 0, 401, 0}, {20, 0, 0, 0, 400, 1}};
  for (const Row& r : differing) {
    EXPECT_EQ(fonts.Find("Arial", r.height, r.escapement, r.italic, r.underline, r.weight,
                         r.strike),
              nullptr);
  }
  fonts.Clear();
  EXPECT_EQ(fonts.GetCount(), 0);
  EXPECT_EQ(fonts.Find("Arial", 20, 0, 0, 0, 400, 0), nullptr);
}

TEST(FontCacheTest, RecordDefaultsAndLongFaces) {
  CQVIS_Font record;
  EXPECT_EQ(record.m_nHeight, 7);
  EXPECT_EQ(record.m_dWeight, 10.0);
  EXPECT_EQ(record.m_pFont, nullptr);
  const std::string face(40, 'F');
  CFont* f = record.CreateFontA(face.c_str(), 12, 0, 0, 0, 400, 0);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(record.m_strFace.GetLength(), 40);  // the key keeps the whole name
  EXPECT_TRUE(record.IsSame(face.c_str(), 12, 0, 0, 0, 400, 0));
  CFont* again = record.CreateFontA("Arial", 13, 0, 0, 0, 400, 0);
  EXPECT_EQ(record.m_nHeight, 13);
  EXPECT_EQ(record.GetFont(), again);
}

TEST(FontCacheTest, CharacterSetFollowsTheCodePage) {
  struct Row {
    int code_page, charset;
  } rows[] = {{949, 129}, {932, 128}, {936, 134}, {950, 136}, {1252, 0}, {437, 0}};
  for (const Row& r : rows) {
    qvis::SetACP(r.code_page);
    CQVIS_Font record;
    EXPECT_EQ(record.GetCharSet(), r.charset) << r.code_page;
  }
  qvis::SetACP(0);
  EXPECT_EQ(qvis::GetACP(), 1252);
}

}  // namespace

namespace {

// The three caches hold at most kCapacity objects: a new key beyond that evicts the least
// recently used object, never one selected into a DC. An evicted object's handle is dead (the
// device layer refuses it); a kept one is still live.
TEST(CacheBoundTest, PensAreEvictedLeastRecentlyUsedFirstAndSelectedOnesArePinned) {
  Canvas canvas(4, 4);
  CQVIS_PenMgr pens;
  const COLORREF red = 0x0000FF;
  CPen* selected = pens.CreatePen(0, 0, 2, red);
  const qvis::HGDIOBJ selected_handle = selected->m_hObject;
  qvis::gdi::SelectObject(canvas.dc(), selected_handle);
  const qvis::HGDIOBJ oldest = pens.CreatePen(0, 0, 3, red)->m_hObject;
  const qvis::HGDIOBJ touched = pens.CreatePen(0, 0, 4, red)->m_hObject;
  // Fill the cache, using the "touched" pen again near the end so that it is recent.
  for (int w = 5; w < CQVIS_PenMgr::kCapacity + 2; ++w) pens.CreatePen(0, 0, w, red);
  EXPECT_EQ(pens.PenCount(), CQVIS_PenMgr::kCapacity);
  EXPECT_EQ(pens.CreatePen(0, 0, 4, red)->m_hObject, touched);
  for (int w = 1000; w < 1000 + 5 * CQVIS_PenMgr::kCapacity; ++w) {
    pens.CreatePen(0, 0, w, red);
    pens.CreatePen(0, 0, 4, red);  // kept in use all along
    ASSERT_LE(pens.PenCount(), CQVIS_PenMgr::kCapacity);
  }
  EXPECT_EQ(qvis::gdi::GetObjectType(oldest), 0u);          // evicted: its handle is dead
  EXPECT_EQ(qvis::gdi::GetObjectType(touched), 1u);         // in use: kept
  EXPECT_EQ(pens.CreatePen(0, 0, 4, red)->m_hObject, touched);
  EXPECT_EQ(qvis::gdi::GetObjectType(selected_handle), 1u);  // selected: pinned
  EXPECT_EQ(pens.CreatePen(0, 0, 2, red), selected);
  EXPECT_EQ(pens.Count(0), 1);  // one end cap in use, whatever was evicted
  // Once deselected it may go like any other.
  qvis::gdi::SelectObject(canvas.dc(), qvis::gdi::GetStockObject(BLACK_PEN));
  for (int w = 3000; w < 3000 + CQVIS_PenMgr::kCapacity; ++w) pens.CreatePen(0, 0, w, red);
  EXPECT_EQ(qvis::gdi::GetObjectType(selected_handle), 0u);
  EXPECT_EQ(pens.PenCount(), CQVIS_PenMgr::kCapacity);
}

TEST(CacheBoundTest, BrushesAndFontsAreBoundedTheSameWay) {
  Canvas canvas(4, 4);
  CQVIS_BrushMgr brushes;
  CBrush* kept = brushes.CreateBrush(6, 0x123456);
  qvis::gdi::SelectObject(canvas.dc(), kept->m_hObject);
  const qvis::HGDIOBJ first = brushes.CreateBrush(6, 0)->m_hObject;
  for (COLORREF c = 1; c < 4 * CQVIS_BrushMgr::kCapacity; ++c) {
    brushes.CreateBrush(c % 2 == 0 ? 6 : HS_CROSS, c);
    ASSERT_LE(brushes.Count(), CQVIS_BrushMgr::kCapacity);
  }
  EXPECT_EQ(brushes.Count(), CQVIS_BrushMgr::kCapacity);
  EXPECT_EQ(qvis::gdi::GetObjectType(first), 0u);
  EXPECT_EQ(brushes.CreateBrush(6, 0x123456), kept);
  EXPECT_EQ(qvis::gdi::GetObjectType(kept->m_hObject), 2u);

  CQVIS_FontMgr fonts;
  CFont* label = fonts.CreateFontA("Arial", 12, 0, 0, 0, 400, 0);
  qvis::gdi::SelectObject(canvas.dc(), label->m_hObject);
  const qvis::HGDIOBJ first_font = fonts.CreateFontA("Arial", 13, 0, 0, 0, 400, 0)->m_hObject;
  for (int h = 14; h < 14 + 3 * CQVIS_FontMgr::kCapacity; ++h) {
    fonts.CreateFontA("Arial", h, 0, 0, 0, 400, 0);
    ASSERT_LE(fonts.GetCount(), CQVIS_FontMgr::kCapacity);
  }
  EXPECT_EQ(fonts.GetCount(), CQVIS_FontMgr::kCapacity);
  EXPECT_EQ(qvis::gdi::GetObjectType(first_font), 0u);
  EXPECT_EQ(fonts.CreateFontA("Arial", 12, 0, 0, 0, 400, 0), label);
  EXPECT_EQ(fonts.GetAt(0)->m_pFont, label);  // the survivors keep their creation order
}

}  // namespace
