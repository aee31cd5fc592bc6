#include "qvis/geometry/value_types.h"

#include "qvis/compat/archive.h"

void CPointF::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << m_fX << m_fY;
  } else {
    ar >> m_fX >> m_fY;
  }
}

void CRectF::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << m_fLeft << m_fTop << m_fRight << m_fBottom;
  } else {
    ar >> m_fLeft >> m_fTop >> m_fRight >> m_fBottom;
  }
}
