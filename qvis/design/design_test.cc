// Tests of the design controller: defaults, life cycle, active command names, zoom operations,
// copies and comparison.
#include "qvis/design/design.h"

#include <cmath>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/compat/key_state.h"
#include "qvis/coords/zoom_range.h"
#include "qvis/design/design_objects.h"

namespace {

TEST(DesignTest, NewDesignHasTheDocumentedView) {
  CQVIS_Design d;
  EXPECT_EQ(d.GetUnit(), 0);
  EXPECT_STREQ(d.GetUnitString().GetString(), "MM");
  EXPECT_EQ(d.GetCurrentLayerID(), 0);
  EXPECT_EQ(d.m_pCoords, d.m_pSurface->GetCoords());
  EXPECT_EQ(d.m_pCoords->m_dZoom, 10.0);
  EXPECT_EQ(d.m_pCoords->m_dViewX, -50.0);
  EXPECT_EQ(d.m_pCoords->m_dViewY, -50.0);
  EXPECT_EQ(d.m_pCoords->m_dGridX, 10.0);
  EXPECT_EQ(d.m_pCoords->m_dGridY, 10.0);
  EXPECT_EQ(d.m_pCoords->m_dSnapX, 2.0);
  EXPECT_EQ(d.m_pCoords->m_dSnapY, 2.0);
  EXPECT_EQ(d.m_pCoords->m_bSnap, 1);
  EXPECT_EQ(d.m_pSurface->GetBkColor(), 0u);
  EXPECT_STREQ(d.GetCurrentProcInfo().GetString(), "");
  EXPECT_FALSE(d.m_MaxRegion.m_bValid);
  EXPECT_EQ(d.m_pDrawFlashPolygonCmd->GetSideCount(), 3);
  EXPECT_NE(d.m_pSelectCmd, d.m_pCaptureCmd);
}

TEST(DesignTest, InitKeepsObjectsAndResetsTheView) {
  CQVIS_Design d;
  CQVIS_DrawLineCmd* line = d.m_pDrawLineCmd;
  CQVIS_CursorMgr* cursor = d.m_pCursorMgr;
  d.m_pCoords->SetZoom(3.0);
  d.m_pCoords->SetScreenViewPosition(7.0, 8.0);
  d.SetUnit(2);
  d.SetCurrentLayerID(5);
  d.m_strFileName = "x.dat";
  d.Init();
  EXPECT_EQ(d.m_pDrawLineCmd, line);
  EXPECT_EQ(d.m_pCursorMgr, cursor);
  EXPECT_EQ(d.GetUnit(), 0);
  EXPECT_EQ(d.GetCurrentLayerID(), 0);
  EXPECT_STREQ(d.m_strFileName.GetString(), "");
  EXPECT_EQ(d.m_pCoords->m_dZoom, 10.0);
  EXPECT_EQ(d.m_pCoords->m_dViewX, -50.0);
}

TEST(DesignTest, ReleaseTwiceAndInitAfterReleaseAreSafe) {
  CQVIS_Design d;
  d.Release();
  EXPECT_EQ(d.m_pDrawLineCmd, nullptr);
  EXPECT_EQ(d.m_pSetOriginCmd, nullptr);
  EXPECT_STREQ(d.GetCurrentProcInfo().GetString(), "");
  d.AllDeactiveCmd();  // nothing to end, nothing to crash on
  d.Release();
  d.Init();
  EXPECT_NE(d.m_pDrawLineCmd, nullptr);
  EXPECT_NE(d.m_pSetOriginCmd, nullptr);
}

// Each row activates one object; the name of the active command follows a fixed order.
TEST(DesignTest, CurrentProcInfoNamesTheActiveCommand) {
  struct Row {
    std::function<void(CQVIS_Design&)> activate;
    const char* name;
  };
  const std::vector<Row> rows = {
      {[](CQVIS_Design& d) { d.m_pZoomMgr->Active(); }, "Zoom Command"},
      {[](CQVIS_Design& d) { d.m_pSelectCmd->Active(); }, "Select Command"},
      {[](CQVIS_Design& d) { d.m_pDrawLineCmd->Active(); }, "Draw Line Command"},
      {[](CQVIS_Design& d) { d.m_pDrawCircleCmd->Active(); }, "Draw Circle Command"},
      {[](CQVIS_Design& d) { d.m_pDraw3PCircleCmd->Active(); }, "Draw 3 Point Circle Command"},
      {[](CQVIS_Design& d) { d.m_pDrawArcCmd->Active(); }, "Draw Arc Command"},
      {[](CQVIS_Design& d) { d.m_pDrawFlashCircleCmd->Active(); },
       "Place Flash Circle Command"},
      {[](CQVIS_Design& d) { d.m_pDrawFlashRectCmd->Active(); },
       "Place Flash Rectangle Command"},
      {[](CQVIS_Design& d) { d.m_pDrawRectCmd->Active(); }, "Draw Rectangle Command"},
      {[](CQVIS_Design& d) { d.m_pDrawPolygonCmd->Active(); }, "Draw Polygon Command"},
      {[](CQVIS_Design& d) { d.m_pDrawFlashObroundCmd->Active(); },
       "Place Flash Obround Command"},
      {[](CQVIS_Design& d) { d.m_pDrawFlashPolygonCmd->Active(); },
       "Place Flash Polygon Command"},
      {[](CQVIS_Design& d) { d.m_pCaptureCmd->Active(); }, "Capture Command"},
      {[](CQVIS_Design& d) { d.m_pSetOriginCmd->Active(); }, "Set Origin Command"},
  };
  for (const Row& row : rows) {
    CQVIS_Design d;
    row.activate(d);
    EXPECT_STREQ(d.GetCurrentProcInfo().GetString(), row.name);
    d.AllDeactiveCmd();
    EXPECT_STREQ(d.GetCurrentProcInfo().GetString(), "") << row.name;
  }
  // With two commands on, the earlier one in the order is named.
  CQVIS_Design d;
  d.m_pSetOriginCmd->Active();
  d.m_pDrawCircleCmd->Active();
  EXPECT_STREQ(d.GetCurrentProcInfo().GetString(), "Draw Circle Command");
}

TEST(DesignTest, AllDeactiveCmdEndsFiguresInProgress) {
  CQVIS_Design d;
  d.m_pDrawCircleCmd->Active();
  d.m_pDrawCircleCmd->MouseDown(1, 1.0, 1.0);
  d.m_pDrawLineCmd->Active();
  d.m_pDrawLineCmd->MouseDown(1, 0.0, 0.0);
  ASSERT_TRUE(d.m_pDrawCircleCmd->IsBusy());
  ASSERT_TRUE(d.m_pDrawLineCmd->IsBusy());
  d.AllDeactiveCmd();
  EXPECT_FALSE(d.m_pDrawCircleCmd->IsActived());
  EXPECT_FALSE(d.m_pDrawCircleCmd->IsBusy());
  EXPECT_FALSE(d.m_pDrawLineCmd->IsActived());
  EXPECT_EQ(d.m_pDrawLineCmd->m_pPointList->GetSize(), 0);
}

TEST(DesignTest, SetCurrentLayerIdReachesEveryDrawingCommand) {
  CQVIS_Design d;
  d.m_pDrawCircleCmd->SetColor(0x123456, 0x654321);
  d.m_pDrawFlashPolygonCmd->SetColor(0x111111, 0x222222);
  d.m_pSelectCmd->m_crColor = 0xABCDEF;
  d.SetCurrentLayerID(4);
  EXPECT_EQ(d.GetCurrentLayerID(), 4);
  EXPECT_EQ(d.m_pDrawLineCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawCircleCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDraw3PCircleCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawArcCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawFlashCircleCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawFlashRectCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawRectCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawPolygonCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawFlashObroundCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawFlashPolygonCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pSetOriginCmd->GetLayer(), 4);
  EXPECT_EQ(d.m_pDrawCircleCmd->m_crColor, 0x0000FFu);
  EXPECT_EQ(d.m_pDrawCircleCmd->m_crXORColor, 0x0000FFu);
  EXPECT_EQ(d.m_pDrawFlashPolygonCmd->m_crXORColor, 0x0000FFu);
  EXPECT_EQ(d.m_pSelectCmd->m_crColor, 0xABCDEFu);  // the selections keep their colour
}

TEST(DesignTest, InitDesignWidthFollowsTheViewUnit) {
  CQVIS_Design d;
  EXPECT_EQ(d.GetInitDesignWidth(), 0.2);
  d.m_pCoords->SetCurrentUnit(2);  // the design's own unit stays mm
  EXPECT_EQ(d.GetInitDesignWidth(), 10.0);
}

// The world point under the mouse stays under the mouse through ZoomIn and ZoomOut.
TEST(DesignTest, ZoomInAndOutKeepThePointUnderTheMouse) {
  CQVIS_Design d;
  CQVIS_Coords* c = d.m_pCoords;
  d.m_dMouseWorldX = 3.3;
  d.m_dMouseWorldY = -7.9;
  const long px = c->WorldXToScreen(3.3);
  const long py = c->WorldYToScreen(-7.9);
  d.ZoomIn();
  EXPECT_DOUBLE_EQ(c->m_dZoom, 12.0);
  EXPECT_EQ(c->WorldXToScreen(3.3), px);
  EXPECT_EQ(c->WorldYToScreen(-7.9), py);
  d.ZoomOut();
  EXPECT_NEAR(c->m_dZoom, 10.0, 1e-12);
  EXPECT_EQ(c->WorldXToScreen(3.3), px);
  EXPECT_EQ(c->WorldYToScreen(-7.9), py);
}

TEST(DesignTest, ZoomOutNeverReachesZero) {
  CQVIS_Design d;
  d.m_pCoords->m_dZoom = 0.0;  // 0 / 1.2 is exactly 0
  d.ZoomOut();
  EXPECT_EQ(d.m_pCoords->m_dZoom, 1e-8);
}

// Host zoom operations stop at the zoom range's limits instead of running to infinity, and a
// zoom box or zoom-all that would leave the range does nothing.
TEST(DesignTest, HostZoomOperationsStayInsideTheZoomRange) {
  CQVIS_Design d;
  CQVIS_Coords* c = d.m_pCoords;
  d.m_dMouseWorldX = 1.0;
  d.m_dMouseWorldY = 2.0;
  for (int i = 0; i < 5000; ++i) d.ZoomIn();
  EXPECT_LE(c->m_dZoom, qvis::kMaxZoom);
  EXPECT_GT(c->m_dZoom * 1.2, qvis::kMaxZoom);
  EXPECT_TRUE(std::isfinite(c->ScreenXToWorld(1000)));
  for (int i = 0; i < 10000; ++i) d.ZoomOut();
  EXPECT_GE(c->m_dZoom, qvis::kMinZoom);
  EXPECT_LT(c->m_dZoom / 1.2, qvis::kMinZoom);
  EXPECT_TRUE(std::isfinite(c->m_dViewX) && std::isfinite(c->m_dViewY));

  c->SetZoom(10.0);
  const CQVIS_Coords before(*c);
  d.ZoomWindow(800, 600, 0.0, 0.0, 1e-9, 1e-9, 0.0);  // a box a billionth wide
  EXPECT_TRUE(*c == before);
  CQVIS_MaxRegionInfo tiny;
  tiny.Put(0.0, 0.0);
  tiny.Put(1e-12, 1e-12);
  d.ZoomAll(800, 600, tiny, 100);
  EXPECT_TRUE(*c == before);
  CQVIS_MaxRegionInfo huge;
  huge.Put(-1e300, -1e300);
  huge.Put(1e300, 1e300);
  d.ZoomAll(800, 600, huge, 100);
  EXPECT_TRUE(*c == before);
}

TEST(DesignTest, ZoomAllRejectsBadInputAndWidensTheRegion) {
  CQVIS_Design d;
  CQVIS_Coords* c = d.m_pCoords;
  CQVIS_MaxRegionInfo invalid;
  EXPECT_EQ(d.ZoomAll(800, 600, invalid, 90), 0);
  EXPECT_EQ(c->m_dZoom, 10.0);

  CQVIS_MaxRegionInfo region;
  region.Put(0.0, 0.0);
  region.Put(100.0, 50.0);
  EXPECT_EQ(d.ZoomAll(0, 600, region, 90), 0);
  EXPECT_EQ(d.ZoomAll(800, -1, region, 90), 0);
  EXPECT_EQ(region.m_dMaxX, 100.0);
  EXPECT_EQ(c->m_dZoom, 10.0);

  CQVIS_MaxRegionInfo full = region;
  EXPECT_EQ(d.ZoomAll(800, 600, full, 100), 1);
  EXPECT_EQ(full.m_dMinX, 0.0);  // fill 100: no margin
  EXPECT_EQ(full.m_dMaxX, 100.0);
  EXPECT_DOUBLE_EQ(c->m_dZoom, 8.0);  // 800 px over 100 mm

  EXPECT_EQ(d.ZoomAll(800, 600, region, 90), 1);
  EXPECT_DOUBLE_EQ(region.m_dMinX, -10.0);  // a tenth of the larger side on each side
  EXPECT_DOUBLE_EQ(region.m_dMaxY, 60.0);
  EXPECT_DOUBLE_EQ(c->m_dZoom, 800.0 / 120.0);
  EXPECT_EQ(d.ZoomAll(800, 600, false, 90), 0);
}

TEST(DesignTest, ZoomWindowIgnoresCornerOrder) {
  const double corners[4][4] = {
      {10, 20, 60, 40}, {60, 40, 10, 20}, {60, 20, 10, 40}, {10, 40, 60, 20}};
  double zoom = 0, view_x = 0, view_y = 0;
  for (int i = 0; i < 4; ++i) {
    CQVIS_Design d;
    const double* k = corners[i];
    d.ZoomWindow(500, 400, k[0], k[1], k[2], k[3], 0.1);
    if (i == 0) {
      zoom = d.m_pCoords->m_dZoom;
      view_x = d.m_pCoords->m_dViewX;
      view_y = d.m_pCoords->m_dViewY;
      EXPECT_DOUBLE_EQ(zoom, 500.0 / 60.0);  // 50 wide plus 5 on each side
    } else {
      EXPECT_EQ(d.m_pCoords->m_dZoom, zoom) << i;
      EXPECT_EQ(d.m_pCoords->m_dViewX, view_x) << i;
      EXPECT_EQ(d.m_pCoords->m_dViewY, view_y) << i;
    }
  }
  CQVIS_Design d;
  d.ZoomWindow(0, 400, 10, 20, 60, 40, 0.1);
  EXPECT_EQ(d.m_pCoords->m_dZoom, 10.0);
}

TEST(DesignTest, CloneCopiesValuesOnly) {
  CQVIS_Design a;
  CQVIS_Design b;
  b.SetUnit(1);
  b.SetCurrentLayerID(3);
  b.m_strFileName = "board.dat";
  b.m_dMouseWorldX = 1.5;
  b.m_nMouseScreenY = 42;
  b.m_MaxRegion.Put(1.0, 2.0);
  b.m_pCoords->SetZoom(99.0);

  CQVIS_Design untouched;
  untouched.Clone(nullptr);
  EXPECT_EQ(untouched.m_pCoords->m_dZoom, 10.0);

  a.Clone(&b);
  EXPECT_EQ(a.GetUnit(), 1);
  EXPECT_EQ(a.GetCurrentLayerID(), 3);
  EXPECT_STREQ(a.m_strFileName.GetString(), "board.dat");
  EXPECT_EQ(a.m_dMouseWorldX, 1.5);
  EXPECT_EQ(a.m_nMouseScreenY, 42);
  EXPECT_TRUE(a.m_MaxRegion == b.m_MaxRegion);
  EXPECT_EQ(a.m_pCoords->m_dZoom, 10.0);  // the view is not copied
  EXPECT_NE(a.m_pDrawLineCmd, b.m_pDrawLineCmd);

  CQVIS_Design c;
  c = b;
  EXPECT_EQ(c.GetCurrentLayerID(), 3);
  c = c;  // self-assignment leaves everything
  EXPECT_EQ(c.GetCurrentLayerID(), 3);
}

TEST(DesignTest, CopyConstructorSharesAndNeverDeletes) {
  auto* d = new CQVIS_Design;
  {
    CQVIS_Design copy(*d);
    EXPECT_EQ(copy.m_pSurface, d->m_pSurface);
    EXPECT_EQ(copy.m_pDrawLineCmd, d->m_pDrawLineCmd);
    EXPECT_TRUE(copy == *d);
    copy.Release();  // a copy releases nothing it shares
    EXPECT_NE(d->m_pDrawLineCmd, nullptr);
  }
  // The source still owns working objects after the copy went away.
  d->m_pDrawLineCmd->Active();
  EXPECT_STREQ(d->GetCurrentProcInfo().GetString(), "Draw Line Command");
  delete d;
}

TEST(DesignTest, EqualityComparesUnitLayerExtentAndSettings) {
  CQVIS_Design a;
  CQVIS_Design b;
  EXPECT_EQ(a == b, 1);
  EXPECT_EQ(a != b, 0);
  b.m_strFileName = "other";
  b.m_dMouseWorldX = 5.0;
  b.m_pDrawLineCmd->Active();
  EXPECT_EQ(a == b, 1);  // file name, mouse and commands are not compared

  const std::vector<std::function<void(CQVIS_Design&)>> changes = {
      [](CQVIS_Design& d) { d.SetUnit(3); },
      [](CQVIS_Design& d) { d.m_nCurrentLayerID = 2; },
      [](CQVIS_Design& d) { d.m_MaxRegion.Put(1.0, 1.0); },
      [](CQVIS_Design& d) { d.m_pSurface->SetBkColor(0x102030); },
      [](CQVIS_Design& d) { d.m_pCoords->SetSnap(0.5, 0.5); },
      [](CQVIS_Design& d) { d.m_pGridSnapMgr->SetShowGrid(0); },
      [](CQVIS_Design& d) { d.m_pCursorMgr->SetColor(0x00FF00); },
  };
  for (size_t i = 0; i < changes.size(); ++i) {
    CQVIS_Design changed;
    changes[i](changed);
    EXPECT_EQ(a == changed, 0) << i;
    EXPECT_EQ(a != changed, 1) << i;
  }
}

}  // namespace
