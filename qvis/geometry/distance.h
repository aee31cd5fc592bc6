// CQVIS_CalcDistance: clearances between stroked artwork primitives (point, track, ring, disk,
// arc) with the nearest points, and the operand records with their bounding areas. Stateless;
// hosts call it directly.
//
// Shapes: a track is the segment stroked with its width (round ends); a ring is the circle's
// outline stroked with the width (the band r - w/2 .. r + w/2); a disk is everything within
// r + w/2 of the centre; an arc is the arc stroked with the width (round ends). Width 0 is the
// bare geometry. Each pair function returns the edge-to-edge gap (0 when the shapes touch or
// overlap, apart from the two noted exceptions) and writes four doubles: the nearest point on
// the first operand, then the one on the second. The point functions are the exception to that
// order: they write the nearest point on the shape first and the point itself second.
// Degenerate operands: a null output array is allowed (nothing is written); the exact pairs
// take a negative width as 0; NaN input gives NaN or infinite results, never a crash or loop.
#ifndef QVIS_GEOMETRY_DISTANCE_H_
#define QVIS_GEOMETRY_DISTANCE_H_

#include "qvis/compat/export.h"

// CQVIS_DIST_AREA: the bounding area of an operand; valid once SetArea has run.
class QVIS_API CQVIS_DIST_AREA {
 public:
  bool m_bValid = false;
  double m_dMinX = 0.0;
  double m_dMinY = 0.0;
  double m_dMaxX = 0.0;
  double m_dMaxY = 0.0;

  // Set stores the four edges as given and marks the area valid.
  void Set(double minX, double minY, double maxX, double maxY);
};

class QVIS_API CQVIS_DIST_POINT {
 public:
  double m_dX = 0.0;
  double m_dY = 0.0;
  CQVIS_DIST_AREA m_Area;

  CQVIS_DIST_POINT() = default;
  CQVIS_DIST_POINT(double x, double y);
  // SetArea sets the area to (x, y, x, y).
  void SetArea();
};

class QVIS_API CQVIS_DIST_LINE {
 public:
  double m_dX1 = 0.0;
  double m_dY1 = 0.0;
  double m_dX2 = 0.0;
  double m_dY2 = 0.0;
  double m_dWidth = 0.0;
  CQVIS_DIST_AREA m_Area;

  CQVIS_DIST_LINE() = default;
  CQVIS_DIST_LINE(double x1, double y1, double x2, double y2, double width);
  // SetArea sets the area to the segment's box grown by width/2 on every side.
  void SetArea();
};

// CQVIS_DIST_CIRCLE serves both the ring and the disk; the pair function chosen decides.
class QVIS_API CQVIS_DIST_CIRCLE {
 public:
  double m_dCX = 0.0;
  double m_dCY = 0.0;
  double m_dRadius = 0.0;
  double m_dWidth = 0.0;
  CQVIS_DIST_AREA m_Area;

  CQVIS_DIST_CIRCLE() = default;
  CQVIS_DIST_CIRCLE(double cx, double cy, double r, double width);
  // SetArea sets the area to the full circle's box grown by width/2.
  void SetArea();
};

// CQVIS_DIST_ARC: the arc runs counter-clockwise (CQVIS_Math::GetAngle sense, degrees) from the
// start to the end angle; the start and end points are its ends.
class QVIS_API CQVIS_DIST_ARC {
 public:
  double m_dCX = 0.0;
  double m_dCY = 0.0;
  double m_dRadius = 0.0;
  double m_dWidth = 0.0;
  double m_dStartX = 0.0;
  double m_dStartY = 0.0;
  double m_dEndX = 0.0;
  double m_dEndY = 0.0;
  double m_dStartAngle = 0.0;
  double m_dEndAngle = 0.0;
  CQVIS_DIST_AREA m_Area;

  CQVIS_DIST_ARC() = default;
  CQVIS_DIST_ARC(double cx, double cy, double r, double width, double sx, double sy, double ex,
                 double ey, double startAngle, double endAngle);
  // SetArea sets the area to the full circle's box grown by width/2 (the arc's own extent is
  // not used, so the area is a cheap superset).
  void SetArea();
};

class QVIS_API CQVIS_CalcDistance {
 public:
  // PointPoint returns the plain distance (|dy| when dx = 0, |dx| when dy = 0).
  double PointPoint(double x1, double y1, double x2, double y2) const;

  // PointLine returns the clearance from the point to the track. A track within 0.1 of
  // vertical is measured as vertical at its first end's x.
  double PointLine(const CQVIS_DIST_POINT* p, const CQVIS_DIST_LINE* l, double* pts) const;
  // PointCircle returns the clearance from the point to the ring (0 inside the band).
  double PointCircle(const CQVIS_DIST_POINT* p, const CQVIS_DIST_CIRCLE* c, double* pts) const;
  // PointDisk returns the clearance from the point to the disk (0 inside it).
  double PointDisk(const CQVIS_DIST_POINT* p, const CQVIS_DIST_CIRCLE* c, double* pts) const;
  // PointArc returns the clearance from the point to the stroked arc.
  double PointArc(const CQVIS_DIST_POINT* p, const CQVIS_DIST_ARC* a, double* pts) const;

  // LineLine returns the clearance of two tracks; crossing centre lines give 0.
  double LineLine(const CQVIS_DIST_LINE* l1, const CQVIS_DIST_LINE* l2, double* pts) const;
  // LineCircle returns the clearance of a track and a ring.
  double LineCircle(const CQVIS_DIST_LINE* l, const CQVIS_DIST_CIRCLE* c, double* pts) const;
  // LineDisk returns the clearance of a track and a disk.
  double LineDisk(const CQVIS_DIST_LINE* l, const CQVIS_DIST_CIRCLE* c, double* pts) const;
  // LineArc returns the clearance of a track and a stroked arc.
  double LineArc(const CQVIS_DIST_LINE* l, const CQVIS_DIST_ARC* a, double* pts) const;

  // CircleCircle returns the clearance of two rings (a ring inside another's hole measures
  // across the gap between them).
  double CircleCircle(const CQVIS_DIST_CIRCLE* c1, const CQVIS_DIST_CIRCLE* c2,
                      double* pts) const;
  // CircleDisk returns the clearance of a ring and a disk.
  double CircleDisk(const CQVIS_DIST_CIRCLE* c, const CQVIS_DIST_CIRCLE* d, double* pts) const;
  // CircleArc returns the clearance of a ring and a stroked arc.
  double CircleArc(const CQVIS_DIST_CIRCLE* c, const CQVIS_DIST_ARC* a, double* pts) const;

  // DiskDisk returns d - (r1 + r2 + w1/2 + w2/2), but 0 with the midpoint of the centres as
  // both nearest points when the bare radii overlap (r1 + r2 > d). The overlap test ignores the
  // widths, so disks whose strokes overlap but whose radii do not give a negative value; hosts
  // read that as the overlap depth, so it is kept.
  double DiskDisk(const CQVIS_DIST_CIRCLE* d1, const CQVIS_DIST_CIRCLE* d2, double* pts) const;
  // ArcDisk returns the clearance of a stroked arc and a disk, measured to the disk's bare
  // radius when their centres differ: the disk's half width is not subtracted there (so a disk
  // of radius 1, width 2 at 3 from a thin arc gives 2). Kept as hosts' clearance rules expect.
  double ArcDisk(const CQVIS_DIST_ARC* a, const CQVIS_DIST_CIRCLE* d, double* pts) const;
  // ArcArc returns the clearance of two stroked arcs.
  double ArcArc(const CQVIS_DIST_ARC* a1, const CQVIS_DIST_ARC* a2, double* pts) const;

  // IsOverlap returns -1 when either area is not valid, 0 when b lies beyond a grown by margin,
  // else 1.
  int IsOverlap(const CQVIS_DIST_AREA* a, const CQVIS_DIST_AREA* b, double margin) const;
};

#endif  // QVIS_GEOMETRY_DISTANCE_H_
