// The geometry value types shared by every subsystem and the host: points and rectangles in
// world units (double or float), 3-D points, the plain DPoint record of the arc-point lists, and
// growable arrays of them. Plain values; equality is exact.
#ifndef QVIS_GEOMETRY_VALUE_TYPES_H_
#define QVIS_GEOMETRY_VALUE_TYPES_H_

#include "qvis/compat/carray.h"
#include "qvis/compat/export.h"

class CArchive;

// CPointD: a world point.
class QVIS_API CPointD {
 public:
  double m_dX = 0.0;
  double m_dY = 0.0;

  CPointD() = default;
  CPointD(double x, double y) : m_dX(x), m_dY(y) {}
  virtual ~CPointD() = default;
  CPointD(const CPointD&) = default;
  CPointD& operator=(const CPointD&) = default;

  double GetX() const { return m_dX; }
  double GetY() const { return m_dY; }
  void SetX(double x) { m_dX = x; }
  void SetY(double y) { m_dY = y; }
  void SetData(double x, double y) { m_dX = x; m_dY = y; }
  bool operator==(const CPointD& o) const { return m_dX == o.m_dX && m_dY == o.m_dY; }
  bool operator!=(const CPointD& o) const { return !(*this == o); }
};

// CPointF: a single-precision point; Serialize writes x then y as 4-byte floats.
class QVIS_API CPointF {
 public:
  float m_fX = 0.0f;
  float m_fY = 0.0f;

  CPointF() = default;
  CPointF(float x, float y) : m_fX(x), m_fY(y) {}
  virtual ~CPointF() = default;
  CPointF(const CPointF&) = default;
  CPointF& operator=(const CPointF&) = default;

  bool operator==(const CPointF& o) const { return m_fX == o.m_fX && m_fY == o.m_fY; }
  bool operator!=(const CPointF& o) const { return !(*this == o); }
  virtual void Serialize(CArchive& ar);
};

// CRectD: a world rectangle by its four edges. Width is right - left, height bottom - top; they
// are negative for an inverted rectangle (nothing normalises it).
class QVIS_API CRectD {
 public:
  double m_dLeft = 0.0;
  double m_dTop = 0.0;
  double m_dRight = 0.0;
  double m_dBottom = 0.0;

  CRectD() = default;
  CRectD(double left, double top, double right, double bottom)
      : m_dLeft(left), m_dTop(top), m_dRight(right), m_dBottom(bottom) {}
  virtual ~CRectD() = default;
  CRectD(const CRectD&) = default;
  CRectD& operator=(const CRectD&) = default;

  // Init sets all four edges to 0.
  void Init() { m_dLeft = m_dTop = m_dRight = m_dBottom = 0.0; }
  void SetData(double left, double top, double right, double bottom) {
    m_dLeft = left; m_dTop = top; m_dRight = right; m_dBottom = bottom;
  }
  double GetWidth() const { return m_dRight - m_dLeft; }
  double GetHeight() const { return m_dBottom - m_dTop; }
  double GetArea() const { return GetWidth() * GetHeight(); }
  bool operator==(const CRectD& o) const {
    return m_dLeft == o.m_dLeft && m_dTop == o.m_dTop && m_dRight == o.m_dRight &&
           m_dBottom == o.m_dBottom;
  }
  bool operator!=(const CRectD& o) const { return !(*this == o); }
  // clone returns a heap copy owned by the caller.
  virtual CRectD* clone() const { return new CRectD(*this); }
};

// CRectF: a single-precision rectangle, made from a CRectD by narrowing each edge; Serialize
// writes left, top, right, bottom as 4-byte floats.
class QVIS_API CRectF {
 public:
  float m_fLeft = 0.0f;
  float m_fTop = 0.0f;
  float m_fRight = 0.0f;
  float m_fBottom = 0.0f;

  CRectF() = default;
  CRectF(float left, float top, float right, float bottom)
      : m_fLeft(left), m_fTop(top), m_fRight(right), m_fBottom(bottom) {}
  CRectF(const CRectD& r)  // NOLINT: converting, as the original allows
      : m_fLeft(static_cast<float>(r.m_dLeft)), m_fTop(static_cast<float>(r.m_dTop)),
        m_fRight(static_cast<float>(r.m_dRight)), m_fBottom(static_cast<float>(r.m_dBottom)) {}
  virtual ~CRectF() = default;
  CRectF(const CRectF&) = default;
  CRectF& operator=(const CRectF&) = default;
  CRectF& operator=(const CRectD& r) { return *this = CRectF(r); }

  bool operator==(const CRectF& o) const {
    return m_fLeft == o.m_fLeft && m_fTop == o.m_fTop && m_fRight == o.m_fRight &&
           m_fBottom == o.m_fBottom;
  }
  bool operator!=(const CRectF& o) const { return !(*this == o); }
  virtual void Serialize(CArchive& ar);
};

// CPoint3D: a point with a z value (a height or a parameter carried along).
class QVIS_API CPoint3D {
 public:
  double m_dX = 0.0;
  double m_dY = 0.0;
  double m_dZ = 0.0;

  CPoint3D() = default;
  CPoint3D(double x, double y, double z) : m_dX(x), m_dY(y), m_dZ(z) {}
  virtual ~CPoint3D() = default;
  CPoint3D(const CPoint3D&) = default;
  CPoint3D& operator=(const CPoint3D&) = default;

  void GetData(double& x, double& y, double& z) const { x = m_dX; y = m_dY; z = m_dZ; }
  void SetData(double x, double y, double z) { m_dX = x; m_dY = y; m_dZ = z; }
  double GetZ() const { return m_dZ; }
  void SetZ(double z) { m_dZ = z; }
  bool operator==(const CPoint3D& o) const {
    return m_dX == o.m_dX && m_dY == o.m_dY && m_dZ == o.m_dZ;
  }
  bool operator!=(const CPoint3D& o) const { return !(*this == o); }
  virtual CPoint3D* clone() const { return new CPoint3D(*this); }
};

// DPoint: the plain record of the arc-point lists, zeroed by its constructor.
class QVIS_API DPoint {
 public:
  double x = 0.0;
  double y = 0.0;
  DPoint() = default;
  DPoint(double px, double py) : x(px), y(py) {}
  virtual ~DPoint() = default;
  DPoint(const DPoint&) = default;
  DPoint& operator=(const DPoint&) = default;
};

// Growable arrays of the values above, copyable, with a virtual clone (a heap copy).
class QVIS_API CArrayPointD : public CArray<CPointD, const CPointD&> {
 public:
  CArrayPointD() = default;
  CArrayPointD(const CArrayPointD&) = default;
  CArrayPointD& operator=(const CArrayPointD&) = default;
  virtual CArrayPointD* clone() const { return new CArrayPointD(*this); }
};

class QVIS_API CArrayArrayPointD : public CArray<CArrayPointD, const CArrayPointD&> {
 public:
  CArrayArrayPointD() = default;
  CArrayArrayPointD(const CArrayArrayPointD&) = default;
  CArrayArrayPointD& operator=(const CArrayArrayPointD&) = default;
  virtual CArrayArrayPointD* clone() const { return new CArrayArrayPointD(*this); }
};

class QVIS_API CArrayRectD : public CArray<CRectD, const CRectD&> {
 public:
  CArrayRectD() = default;
  CArrayRectD(const CArrayRectD&) = default;
  CArrayRectD& operator=(const CArrayRectD&) = default;
  virtual CArrayRectD* clone() const { return new CArrayRectD(*this); }
};

class QVIS_API CArrayPoint3D : public CArray<CPoint3D, const CPoint3D&> {
 public:
  CArrayPoint3D() = default;
  CArrayPoint3D(const CArrayPoint3D&) = default;
  CArrayPoint3D& operator=(const CArrayPoint3D&) = default;
  virtual CArrayPoint3D* clone() const { return new CArrayPoint3D(*this); }
};

#endif  // QVIS_GEOMETRY_VALUE_TYPES_H_
