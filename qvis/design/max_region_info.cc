// CQVIS_MaxRegionInfo and CQVIS_MaxRegionInfoDB: extent regions and their
// list.
#include "qvis/design/max_region_info.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>
#include <memory>

#include "qvis/coords/unit_mgr.h"
#include "qvis/geometry/kernel.h"

int CQVIS_MaxRegionInfo::m_nVersion = 1;
int CQVIS_MaxRegionInfoDB::m_nVersion = 1;

template class CExPtrArray<CQVIS_MaxRegionInfo*, CQVIS_MaxRegionInfo*>;

namespace {

// Header of a list record: the version with bit 31 set, which says that the
// count that follows is 64-bit (a clear bit 31 means a 4-byte count).
constexpr DWORD kWideCountFlag = 0x80000000u;
constexpr DWORD kVersionMask = 0x7FFFFFFFu;

// Neighbours in a list are merged when B.min <= A.max and A.min <= B.max on
// both axes (touching edges count). Written as positive tests, unlike
// Overlapped's exclusion test, so that a NaN edge never merges.
bool NeighboursOverlap(const CQVIS_MaxRegionInfo& a,
                       const CQVIS_MaxRegionInfo& b) {
  return b.m_dMinX <= a.m_dMaxX && b.m_dMinY <= a.m_dMaxY &&
         a.m_dMinX <= b.m_dMaxX && a.m_dMinY <= b.m_dMaxY;
}

}  // namespace

// ---------------------------------------------------------------------------
// CQVIS_MaxRegionInfo

CQVIS_MaxRegionInfo::CQVIS_MaxRegionInfo() { Clear(); }

CQVIS_MaxRegionInfo::CQVIS_MaxRegionInfo(const CQVIS_MaxRegionInfo& other)
    : m_dMinX(other.m_dMinX),
      m_dMinY(other.m_dMinY),
      m_dMaxX(other.m_dMaxX),
      m_dMaxY(other.m_dMaxY),
      m_bValid(other.m_bValid) {}

CQVIS_MaxRegionInfo::~CQVIS_MaxRegionInfo() = default;

CQVIS_MaxRegionInfo& CQVIS_MaxRegionInfo::operator=(
    const CQVIS_MaxRegionInfo& other) {
  if (this != &other) Clone(const_cast<CQVIS_MaxRegionInfo*>(&other));
  return *this;
}

bool CQVIS_MaxRegionInfo::operator==(const CQVIS_MaxRegionInfo& other) const {
  if (this == &other) return true;
  if (m_bValid != other.m_bValid) return false;
  return m_dMinX == other.m_dMinX && m_dMinY == other.m_dMinY &&
         m_dMaxX == other.m_dMaxX && m_dMaxY == other.m_dMaxY;
}

bool CQVIS_MaxRegionInfo::operator!=(const CQVIS_MaxRegionInfo& other) const {
  return !(*this == other);
}

void CQVIS_MaxRegionInfo::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << 1;  // version
    ar << m_dMinX << m_dMinY << m_dMaxX << m_dMaxY << m_bValid;
    return;
  }
  int version = 0;
  ar >> version;
  if (version < 1) return;
  ar >> m_dMinX >> m_dMinY >> m_dMaxX >> m_dMaxY >> m_bValid;
}

void CQVIS_MaxRegionInfo::Clear() {
  m_dMinX = m_dMinY = m_dMaxX = m_dMaxY = 0.0;
  m_bValid = 0;
}

void CQVIS_MaxRegionInfo::Clone(CQVIS_MaxRegionInfo* src) {
  if (src == nullptr) return;
  m_dMinX = src->m_dMinX;
  m_dMinY = src->m_dMinY;
  m_dMaxX = src->m_dMaxX;
  m_dMaxY = src->m_dMaxY;
  m_bValid = src->m_bValid;
}

void CQVIS_MaxRegionInfo::Put(double x, double y) {
  if (m_bValid) {
    if (x < m_dMinX) m_dMinX = x;
    if (y < m_dMinY) m_dMinY = y;
    if (x > m_dMaxX) m_dMaxX = x;
    if (y > m_dMaxY) m_dMaxY = y;
  } else {
    m_dMinX = m_dMaxX = x;
    m_dMinY = m_dMaxY = y;
  }
  m_bValid = 1;
}

void CQVIS_MaxRegionInfo::Put(CQVIS_MaxRegionInfo* other) {
  if (other == nullptr || !other->m_bValid) return;
  const double x1 = other->m_dMinX, y1 = other->m_dMinY;
  const double x2 = other->m_dMaxX, y2 = other->m_dMaxY;
  Put(x1, y1);
  Put(x2, y2);
}

void CQVIS_MaxRegionInfo::Extend(double d) {
  m_dMinX -= d;
  m_dMinY -= d;
  m_dMaxX += d;
  m_dMaxY += d;
}

void CQVIS_MaxRegionInfo::ExtendEx(double f) {
  if (!m_bValid) return;
  const double w = m_dMaxX - m_dMinX;
  const double h = m_dMaxY - m_dMinY;
  m_dMinX -= w * f;
  m_dMaxX += w * f;
  m_dMinY -= h * f;
  m_dMaxY += h * f;
}

void CQVIS_MaxRegionInfo::Multi(double sx, double sy) {
  m_dMinX *= sx;
  m_dMaxX *= sx;
  m_dMinY *= sy;
  m_dMaxY *= sy;
}

void CQVIS_MaxRegionInfo::Move(double dx, double dy) {
  m_dMinX += dx;
  m_dMaxX += dx;
  m_dMinY += dy;
  m_dMaxY += dy;
}

void CQVIS_MaxRegionInfo::MakeSnap(double step) {
  CQVIS_Math::MakeSnap(m_dMinX, step);
  CQVIS_Math::MakeSnap(m_dMinY, step);
  CQVIS_Math::MakeSnap(m_dMaxX, step);
  CQVIS_Math::MakeSnap(m_dMaxY, step);
}

void CQVIS_MaxRegionInfo::ChangeUnit(int from, int to) {
  m_dMinX = CQVIS_UnitMgr::Change(from, to, m_dMinX);
  m_dMinY = CQVIS_UnitMgr::Change(from, to, m_dMinY);
  m_dMaxX = CQVIS_UnitMgr::Change(from, to, m_dMaxX);
  m_dMaxY = CQVIS_UnitMgr::Change(from, to, m_dMaxY);
}

int CQVIS_MaxRegionInfo::IsInRegion(double x, double y) const {
  const double lo_x = m_dMinX < m_dMaxX ? m_dMinX : m_dMaxX;
  const double hi_x = m_dMinX < m_dMaxX ? m_dMaxX : m_dMinX;
  const double lo_y = m_dMinY < m_dMaxY ? m_dMinY : m_dMaxY;
  const double hi_y = m_dMinY < m_dMaxY ? m_dMaxY : m_dMinY;
  return (x >= lo_x && x <= hi_x && y >= lo_y && y <= hi_y) ? 1 : 0;
}

bool CQVIS_MaxRegionInfo::Overlapped(double x1, double y1, double x2,
                                     double y2) const {
  return !(x1 > m_dMaxX || y1 > m_dMaxY || m_dMinX > x2 || m_dMinY > y2);
}

bool CQVIS_MaxRegionInfo::Overlapped(CQVIS_MaxRegionInfo* other) const {
  if (other == nullptr) return false;
  return Overlapped(other->m_dMinX, other->m_dMinY, other->m_dMaxX,
                    other->m_dMaxY);
}

bool CQVIS_MaxRegionInfo::OverlappedEx(CQVIS_MaxRegionInfo* other,
                                       double margin) const {
  if (other == nullptr) return false;
  return Overlapped(other->m_dMinX - margin, other->m_dMinY - margin,
                    other->m_dMaxX + margin, other->m_dMaxY + margin);
}

double CQVIS_MaxRegionInfo::GetWidth() const {
  return m_bValid ? m_dMaxX - m_dMinX : 0.0;
}

double CQVIS_MaxRegionInfo::GetHeight() const {
  return m_bValid ? m_dMaxY - m_dMinY : 0.0;
}

void CQVIS_MaxRegionInfo::GetCenter(double& x, double& y) const {
  x = (m_dMinX + m_dMaxX) * 0.5;
  y = (m_dMinY + m_dMaxY) * 0.5;
}

// ---------------------------------------------------------------------------
// CQVIS_MaxRegionInfoDB

CQVIS_MaxRegionInfoDB::CQVIS_MaxRegionInfoDB() = default;

CQVIS_MaxRegionInfoDB::~CQVIS_MaxRegionInfoDB() = default;

void CQVIS_MaxRegionInfoDB::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << static_cast<DWORD>(kWideCountFlag | 1u);
    ar << static_cast<long long>(GetSize());
    for (CQVIS_MaxRegionInfo* r : *this) {
      // A null slot is written as an empty region so that the count holds.
      CQVIS_MaxRegionInfo empty;
      (r != nullptr ? r : &empty)->Serialize(ar);
    }
    return;
  }
  // The list is read into a list of its own and validated; only a whole, valid list replaces
  // the regions (a damaged one used to leave the host with none).
  DWORD header = 0;
  ar >> header;
  if ((header & kVersionMask) != 1u) {
    DeleteAll();
    return;
  }
  const std::uint64_t count_at = ar.GetPosition();
  long long count = 0;
  if (header & kWideCountFlag) {
    ar >> count;
  } else {
    int narrow = 0;
    ar >> narrow;
    count = narrow;
  }
  const CString path = ar.GetFile() ? ar.GetFile()->GetFilePath() : CString();
  auto bad = [&](const char* field, std::uint64_t at, const std::string& why,
                 int cause = CArchiveException::genericException) {
    throw CArchiveException(cause, path,
                            std::string("extent list field '") + field + "' at byte " +
                                std::to_string(at) + ": " + why);
  };
  // Every region record takes at least its 4-byte version: a count the rest of the file
  // cannot hold is refused before anything is read or allocated.
  const std::uint64_t most = ar.BytesLeft() / 4;
  if (count > 0 && static_cast<unsigned long long>(count) > most) {
    bad("count", count_at,
        std::to_string(count) + " regions, the file ends after at most " + std::to_string(most),
        CArchiveException::endOfFile);
  }
  std::vector<CQVIS_MaxRegionInfo> regions;
  for (long long i = 0; i < count; ++i) {
    const std::uint64_t at = ar.GetPosition();
    CQVIS_MaxRegionInfo read;
    read.Serialize(ar);
    if (!std::isfinite(read.m_dMinX) || !std::isfinite(read.m_dMinY) ||
        !std::isfinite(read.m_dMaxX) || !std::isfinite(read.m_dMaxY)) {
      bad("corner", at + 4, "region " + std::to_string(i) + " has a corner that is not finite");
    }
    if (read.m_bValid != 0 && read.m_bValid != 1) {
      bad("valid", at + 36, "region " + std::to_string(i) + " has a valid flag other than 0 or 1");
    }
    if (read.m_bValid) regions.push_back(read);
  }
  CQVIS_MaxRegionInfoDB staged;
  try {
    for (const CQVIS_MaxRegionInfo& r : regions) {
      staged.Add(r.m_dMinX, r.m_dMinY, r.m_dMaxX, r.m_dMaxY, 0.0);
    }
    const std::vector<CQVIS_MaxRegionInfo*> old(GetData(), GetData() + GetSize());
    Copy(staged);  // the last step that can fail: until here the list is untouched
    staged.RemoveAll();
    for (CQVIS_MaxRegionInfo* r : old) delete r;
  } catch (...) {
    staged.DeleteAll();
    throw;
  }
}

int CQVIS_MaxRegionInfoDB::operator==(const CQVIS_MaxRegionInfoDB& other) const {
  if (this == &other) return 1;
  const INT_PTR n = GetSize();
  if (n != other.GetSize()) return 0;
  for (INT_PTR i = 0; i < n; ++i) {
    const CQVIS_MaxRegionInfo* a = GetData()[i];
    const CQVIS_MaxRegionInfo* b = other.GetData()[i];
    if (a == nullptr || b == nullptr) {
      if (a != b) return 0;
      continue;
    }
    if (*a != *b) return 0;
  }
  return 1;
}

int CQVIS_MaxRegionInfoDB::operator!=(const CQVIS_MaxRegionInfoDB& other) const {
  return (*this == other) ? 0 : 1;
}

void CQVIS_MaxRegionInfoDB::Init() {
  RemoveAll();
  FreeExtra();
}
void CQVIS_MaxRegionInfoDB::Clear() { Init(); }
void CQVIS_MaxRegionInfoDB::Release() { Init(); }

void CQVIS_MaxRegionInfoDB::Add(double x1, double y1, double x2, double y2,
                                double margin) {
  if (margin == 0 && x1 == x2 && y1 == y2) return;
  auto owned = std::make_unique<CQVIS_MaxRegionInfo>();
  CQVIS_MaxRegionInfo* r = owned.get();
  r->Put(x1, y1);
  r->Put(x2, y2);
  r->m_bValid = 1;
  if (margin != 0) r->Extend(margin);
  // The region built here is stored in the list. (The two Add forms used to
  // hand a box back and forth without ever storing it, which only ended in a
  // stack overflow; storing is what both evidently intend, and it is why
  // MergeAll keeps its merged region and loading keeps the valid regions.)
  Base::Add(r);
  owned.release();  // the list owns it now
}

void CQVIS_MaxRegionInfoDB::Add(CQVIS_MaxRegionInfo* r) {
  if (r == nullptr || !r->m_bValid) return;
  Add(r->m_dMinX, r->m_dMinY, r->m_dMaxX, r->m_dMaxY, 0.0);
}

void CQVIS_MaxRegionInfoDB::GetMaxRegion(CQVIS_MaxRegionInfo* out) const {
  if (out == nullptr) return;
  for (const CQVIS_MaxRegionInfo* r : *this) {
    if (r == nullptr) continue;
    const double x1 = r->m_dMinX, y1 = r->m_dMinY;
    const double x2 = r->m_dMaxX, y2 = r->m_dMaxY;
    out->Put(x1, y1);
    out->Put(x2, y2);
  }
}

void CQVIS_MaxRegionInfoDB::MergeAll() {
  CQVIS_MaxRegionInfo all;
  GetMaxRegion(&all);
  Init();  // the former regions are dropped, not deleted
  if (all.m_bValid) Add(all.m_dMinX, all.m_dMinY, all.m_dMaxX, all.m_dMaxY, 0.0);
}

void CQVIS_MaxRegionInfoDB::MergeOverlapped() {
  // Each merge removes one entry, so the restarts end after at most
  // size - 1 merges.
  INT_PTR i = 0;
  while (i < GetSize() - 1) {
    CQVIS_MaxRegionInfo* a = GetData()[i];
    CQVIS_MaxRegionInfo* b = GetData()[i + 1];
    if (a == nullptr || b == nullptr || !NeighboursOverlap(*a, *b)) {
      ++i;
      continue;
    }
    const double x1 = b->m_dMinX, y1 = b->m_dMinY;
    const double x2 = b->m_dMaxX, y2 = b->m_dMaxY;
    a->Put(x1, y1);
    a->Put(x2, y2);
    a->m_bValid = 1;
    RemoveAt(i + 1);  // b is dropped from the list, not deleted
    i = 0;
  }
}

void CQVIS_MaxRegionInfoDB::MakeSnap(double step) {
  for (CQVIS_MaxRegionInfo* r : *this) {
    if (r != nullptr) r->MakeSnap(step);
  }
}

void CQVIS_MaxRegionInfoDB::Multi(double sx, double sy) {
  for (CQVIS_MaxRegionInfo* r : *this) {
    if (r != nullptr) r->Multi(sx, sy);
  }
}

void CQVIS_MaxRegionInfoDB::Move(double dx, double dy) {
  for (CQVIS_MaxRegionInfo* r : *this) {
    if (r != nullptr) r->Move(dx, dy);
  }
}

void CQVIS_MaxRegionInfoDB::ChangeUnit(int from, int to) {
  for (CQVIS_MaxRegionInfo* r : *this) {
    if (r != nullptr) r->ChangeUnit(from, to);
  }
}
