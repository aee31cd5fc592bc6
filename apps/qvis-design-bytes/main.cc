// qvis-design-bytes DESIGN RECORDS: writes a design with every setting changed from its default
// to DESIGN, and the records that travel outside a design (extent list, points, rectangles,
// view) to RECORDS. The output depends on nothing but this program, so the files written by the
// Linux and the Windows builds must be the same bytes.
#include <cstdio>
#include <exception>

#include "qvis/compat/archive.h"
#include "qvis/coords/view_coords.h"
#include "qvis/design/design.h"
#include "qvis/design/max_region_info.h"
#include "qvis/geometry/value_types.h"
#include "qvis/render/cursor_display.h"
#include "qvis/render/grid_snap_display.h"
#include "qvis/render/surface.h"

namespace {

void Customise(CQVIS_Design& d) {
  d.SetUnit(2);
  d.m_nCurrentLayerID = -7;
  d.m_MaxRegion.Put(-1.5, 2.25);
  d.m_MaxRegion.Put(30.0, 40.5e6);
  d.m_pSurface->SetBkColor(0x00112233);
  d.m_pSurface->SetTextSizeUnit(2.5);
  CQVIS_Coords* c = d.m_pCoords;
  c->m_nUnit = 1;
  c->m_dZoom = 3.5;
  c->m_dViewX = -12.0;
  c->m_dViewY = 8.125;
  c->m_dGridX = 5.0;
  c->m_dGridY = 6.0;
  c->m_dSnapX = 0.5;
  c->m_dSnapY = 0.25;
  c->m_bSnap = 0;
  CQVIS_GridSnapMgr* g = d.m_pGridSnapMgr;
  g->SetGridColor(0x000A0B0C);
  g->SetSnapColor(0x00010203);
  g->SetOriginColor(0x00FF0000);
  g->SetShowGrid(0);
  g->SetShowSnap(1);
  g->SetGridStyle(1);
  CQVIS_CursorMgr* k = d.m_pCursorMgr;
  k->ExtXCrossOn();
  k->SetSize(800.0, 600.0);
  k->SetColor(0x0000FF00);
}

void WriteRecords(const char* path) {
  CFile file(path, CFile::modeCreate | CFile::modeWrite);
  CArchive ar(&file, CArchive::store);
  CQVIS_MaxRegionInfoDB regions;
  regions.Add(-3.0, 4.0, 1e9, -2.5, 0.125);
  regions.Add(0.0, 0.0, 1.0, 1.0, 0.0);
  regions.Serialize(ar);
  CPointF point(-1.25f, 3.0e7f);
  point.Serialize(ar);
  CRectF rect;
  rect.m_fLeft = -4.0f;
  rect.m_fTop = 8.5f;
  rect.m_fRight = 1e-3f;
  rect.m_fBottom = -0.0f;
  rect.Serialize(ar);
  CQVIS_Coords view;
  view.m_dZoom = 0.1;
  view.m_dViewX = 1e300;
  view.Serialize(ar);
  ar.Close();
  file.Close();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: qvis-design-bytes DESIGN RECORDS\n");
    return 2;
  }
  try {
    CQVIS_Design design;
    Customise(design);
    design.SaveToFile(argv[1]);
    WriteRecords(argv[2]);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "qvis-design-bytes: %s\n", e.what());
    return 1;
  }
  return 0;
}
