// CQVIS_LineOutline: the guide outline of a straight track of given width (two side lines at
// half the width and two half-circle end caps), and the plain pieces EO_Point, EO_Line and
// EO_Arc that such outlines are made of. The drawing surface draws one while a track is placed.
#ifndef QVIS_GEOMETRY_LINE_OUTLINE_H_
#define QVIS_GEOMETRY_LINE_OUTLINE_H_

#include "qvis/compat/export.h"

// EO_Point: a point with three further values and an integer that the library stores as given
// and attaches no meaning to.
class QVIS_API EO_Point {
 public:
  double m_dX = 0.0;
  double m_dY = 0.0;
  double m_dValue1 = 0.0;
  double m_dValue2 = 0.0;
  double m_dValue3 = 0.0;
  int m_nValue = 0;

  // Set stores x, y and zeroes the other four fields.
  void Set(double x, double y);
  // Set stores all six fields in order.
  void Set(double x, double y, double a, double b, double c, int n);
};

// EO_Line: a directed segment.
class QVIS_API EO_Line {
 public:
  double m_dX1 = 0.0;
  double m_dY1 = 0.0;
  double m_dX2 = 0.0;
  double m_dY2 = 0.0;

  // Set stores the four fields.
  void Set(double x1, double y1, double x2, double y2);
};

// EO_Arc: an arc by centre, radius, start and end points and their angles (degrees).
class QVIS_API EO_Arc {
 public:
  double m_dCX = 0.0;
  double m_dCY = 0.0;
  double m_dRadius = 0.0;
  double m_dStartX = 0.0;
  double m_dStartY = 0.0;
  double m_dEndX = 0.0;
  double m_dEndY = 0.0;
  double m_dStartAngle = 0.0;
  double m_dEndAngle = 0.0;

  // Set stores centre, radius and the two end points; the two angles keep their values.
  void Set(double cx, double cy, double r, double sx, double sy, double ex, double ey);
};

// CQVIS_LineOutline: side 1, end cap, side 2, start cap form the closed contour of the track.
class QVIS_API CQVIS_LineOutline {
 public:
  EO_Line m_Line1;     // from start + offset to end + offset
  EO_Line m_Line2;     // from end - offset back to start - offset
  EO_Arc m_StartArc;   // half circle about the start point
  EO_Arc m_EndArc;     // half circle about the end point

  // GetGuideLine fills the two sides at width/2 from the centre line, side 1 on the (dy, -dx)
  // side. Two equal points give two diagonal sides offset by (h, h), not a circle; kept as
  // drawn by every host so far.
  void GetGuideLine(double x1, double y1, double x2, double y2, double width);
  // GetGuideArc fills the sides and the two caps; cap angles are counter-clockwise on the y-up
  // plane (GetAngle of the y-negated points).
  void GetGuideArc(double x1, double y1, double x2, double y2, double width);
  // GetGuideArc2 is GetGuideArc with cap angles in GetAngle's own y-down sense.
  void GetGuideArc2(double x1, double y1, double x2, double y2, double width);
  // IsSameLinePoint tells whether the sides coincide exactly, as given or reversed (always so
  // for width 0).
  bool IsSameLinePoint() const;
  // IsSameArcPoint tells whether all nine fields of the two caps are exactly equal.
  bool IsSameArcPoint() const;
  // Angle returns the direction from point 1 to point 2, counter-clockwise on the y-up plane:
  // x1 = x2 gives 90 (y1 <= y2) or 270; y1 = y2 gives 0 (x2 > x1) or 180; points closer than
  // 0.01 give 0. Uses no field.
  double Angle(double x1, double y1, double x2, double y2) const;
  // Distance returns sqrt((x2 - x1)^2 + (y2 - y1)^2). Uses no field.
  double Distance(double x1, double y1, double x2, double y2) const;

 private:
  void FillCaps(double x1, double y1, double x2, double y2, double width, bool y_up);
};

#endif  // QVIS_GEOMETRY_LINE_OUTLINE_H_
