// CPoint, CSize and CRect: the integer point, size and rectangle values of the window and device
// APIs (device pixels or integer world units). Plain values with the familiar members.
#ifndef QVIS_COMPAT_CPOINT_H_
#define QVIS_COMPAT_CPOINT_H_

#include "qvis/compat/types.h"

class CSize {
 public:
  LONG cx = 0;
  LONG cy = 0;
  CSize() = default;
  CSize(LONG x, LONG y) : cx(x), cy(y) {}
  bool operator==(const CSize& o) const { return cx == o.cx && cy == o.cy; }
  bool operator!=(const CSize& o) const { return !(*this == o); }
};

class CPoint {
 public:
  LONG x = 0;
  LONG y = 0;
  CPoint() = default;
  CPoint(LONG px, LONG py) : x(px), y(py) {}
  void SetPoint(LONG px, LONG py) { x = px; y = py; }
  void Offset(LONG dx, LONG dy) { x += dx; y += dy; }
  bool operator==(const CPoint& o) const { return x == o.x && y == o.y; }
  bool operator!=(const CPoint& o) const { return !(*this == o); }
  CPoint operator+(const CSize& s) const { return CPoint(x + s.cx, y + s.cy); }
  CPoint operator-(const CSize& s) const { return CPoint(x - s.cx, y - s.cy); }
  CSize operator-(const CPoint& o) const { return CSize(x - o.x, y - o.y); }
  CPoint& operator+=(const CSize& s) { x += s.cx; y += s.cy; return *this; }
  CPoint& operator-=(const CSize& s) { x -= s.cx; y -= s.cy; return *this; }
};

class CRect {
 public:
  LONG left = 0;
  LONG top = 0;
  LONG right = 0;
  LONG bottom = 0;
  CRect() = default;
  CRect(LONG l, LONG t, LONG r, LONG b) : left(l), top(t), right(r), bottom(b) {}
  CRect(CPoint tl, CPoint br) : left(tl.x), top(tl.y), right(br.x), bottom(br.y) {}
  CRect(CPoint tl, CSize sz) : left(tl.x), top(tl.y), right(tl.x + sz.cx), bottom(tl.y + sz.cy) {}

  LONG Width() const { return right - left; }
  LONG Height() const { return bottom - top; }
  CSize Size() const { return CSize(Width(), Height()); }
  CPoint TopLeft() const { return CPoint(left, top); }
  CPoint BottomRight() const { return CPoint(right, bottom); }
  CPoint CenterPoint() const { return CPoint((left + right) / 2, (top + bottom) / 2); }
  // IsRectEmpty is true when the width or the height is zero or negative.
  bool IsRectEmpty() const { return right <= left || bottom <= top; }
  bool IsRectNull() const { return left == 0 && top == 0 && right == 0 && bottom == 0; }
  // PtInRect: left and top edges are inside, right and bottom edges outside.
  bool PtInRect(CPoint p) const { return p.x >= left && p.x < right && p.y >= top && p.y < bottom; }
  void SetRect(LONG l, LONG t, LONG r, LONG b) { left = l; top = t; right = r; bottom = b; }
  void SetRectEmpty() { left = top = right = bottom = 0; }
  // NormalizeRect swaps edges so that left <= right and top <= bottom.
  void NormalizeRect() {
    if (left > right) { LONG t = left; left = right; right = t; }
    if (top > bottom) { LONG t = top; top = bottom; bottom = t; }
  }
  void OffsetRect(LONG dx, LONG dy) { left += dx; right += dx; top += dy; bottom += dy; }
  void InflateRect(LONG dx, LONG dy) { left -= dx; right += dx; top -= dy; bottom += dy; }
  void DeflateRect(LONG dx, LONG dy) { InflateRect(-dx, -dy); }
  bool operator==(const CRect& o) const {
    return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
  }
  bool operator!=(const CRect& o) const { return !(*this == o); }
};

#endif  // QVIS_COMPAT_CPOINT_H_
