// The entry from the core's line and polygon calls into the geometric (wide) pen stroker.
// The core declares it here; the stroker itself lives with the shapes code.
#ifndef QVIS_GDI_RASTER_WIDE_PEN_HOOK_H_
#define QVIS_GDI_RASTER_WIDE_PEN_HOOK_H_

#include "qvis/gdi/raster/geom.h"

namespace qvis::gdi {

struct DeviceContext;

// StrokeWide outlines the polyline points[0..count) (closed: with the segment back to points[0])
// with the DC's selected geometric pen, its caps and joins, and paints the outline with the pen's
// brush through the DC's ROP2 and clip, each pixel once. Called only when the selected pen is
// geometric and at least 2 pixels wide. count < 1 draws nothing.
void StrokeWide(DeviceContext& dc, const PointI* points, int count, bool closed);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_WIDE_PEN_HOOK_H_
