// Placeholders for the curve, path and wide-pen calls until their real versions land; each
// draws nothing and reports failure. Owner: gdishapes (deletes an entry when it implements it).
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/raster/wide_pen_hook.h"

namespace qvis::gdi {

BOOL Ellipse(HDC, int, int, int, int) { return 0; }
BOOL RoundRect(HDC, int, int, int, int, int, int) { return 0; }
BOOL Arc(HDC, int, int, int, int, int, int, int, int) { return 0; }
BOOL ArcTo(HDC, int, int, int, int, int, int, int, int) { return 0; }
BOOL Pie(HDC, int, int, int, int, int, int, int, int) { return 0; }
BOOL Chord(HDC, int, int, int, int, int, int, int, int) { return 0; }
HRGN CreateEllipticRgn(int, int, int, int) { return nullptr; }

// Until the geometric stroker exists, wide outlines are drawn 1 pixel wide.
void StrokeWide(DeviceContext& dc, const PointI* points, int count, bool closed) {
  DrawCosmeticPolyline(dc, points, count, closed);
}

BOOL BeginPath(HDC) { return 0; }
BOOL EndPath(HDC) { return 0; }
BOOL AbortPath(HDC) { return 0; }
BOOL CloseFigure(HDC) { return 0; }
BOOL StrokePath(HDC) { return 0; }
BOOL FillPath(HDC) { return 0; }
BOOL StrokeAndFillPath(HDC) { return 0; }

}  // namespace qvis::gdi
