// CQVIS_MaxRegionInfo: an axis-aligned extent rectangle in world coordinates
// that grows as points and other regions are put into it; the design holds
// one by value for ZoomAll. CQVIS_MaxRegionInfoDB: a list of extents with
// merge operations, owned by the host together with its regions.
#ifndef QVIS_DESIGN_MAX_REGION_INFO_H_
#define QVIS_DESIGN_MAX_REGION_INFO_H_

#include "qvis/compat/archive.h"
#include "qvis/compat/export.h"
#include "qvis/util/ex_ptr_array.h"

class QVIS_API CQVIS_MaxRegionInfo {
 public:
  // Version written first by Serialize.
  static int m_nVersion;

  // CQVIS_MaxRegionInfo starts empty: corners 0, not valid.
  CQVIS_MaxRegionInfo();
  // Copies the corners and the valid flag.
  CQVIS_MaxRegionInfo(const CQVIS_MaxRegionInfo& other);
  // Virtual so that owning arrays may delete a region through its pointer.
  virtual ~CQVIS_MaxRegionInfo();
  // operator= copies the corners and the valid flag; self-assignment does
  // nothing.
  CQVIS_MaxRegionInfo& operator=(const CQVIS_MaxRegionInfo& other);

  // operator== is true for the same object; false when the valid flags
  // differ; else true when the four coordinates are exactly equal (invalid
  // regions are compared by coordinates too).
  virtual bool operator==(const CQVIS_MaxRegionInfo& other) const;
  // operator!= negates operator==.
  virtual bool operator!=(const CQVIS_MaxRegionInfo& other) const;
  // Serialize writes or reads version, min X, min Y, max X, max Y, valid. A
  // loaded version below 1 stops right after the version; a short archive
  // throws CArchiveException (end of file).
  virtual void Serialize(CArchive& ar);

  // Clear sets the corners to 0 and the region to not valid.
  void Clear();
  // Clone copies src's corners and valid flag into this region; null src is
  // ignored.
  void Clone(CQVIS_MaxRegionInfo* src);

  // Put grows a valid region to include (x, y); an invalid region becomes
  // that point. The region is valid afterwards.
  void Put(double x, double y);
  // Put grows this region by other's min corner, then its max corner; an
  // invalid or null other is ignored.
  void Put(CQVIS_MaxRegionInfo* other);

  // Extend moves min down and max up by d (even when not valid; a negative d
  // may leave min > max).
  void Extend(double d);
  // ExtendEx grows a valid region by the fraction f of its width and height
  // on each side; an invalid region is unchanged.
  void ExtendEx(double f);
  // Multi scales both x values by sx and both y values by sy (no
  // renormalisation).
  void Multi(double sx, double sy);
  // Move shifts both x values by dx and both y values by dy.
  void Move(double dx, double dy);
  // MakeSnap snaps each of the four values to `step` with the kernel's snap
  // rule.
  void MakeSnap(double step);
  // ChangeUnit converts the four values from unit `from` to unit `to`; unknown
  // codes leave them unchanged.
  void ChangeUnit(int from, int to);

  // IsInRegion returns 1 when (x, y) lies between the two x values and the
  // two y values, inclusive, whatever their order; the valid flag is not
  // consulted.
  int IsInRegion(double x, double y) const;
  // Overlapped is false when x1 > max x, y1 > max y, min x > x2 or min y > y2,
  // else true. (x1, y1) must be the lower corner; nothing is normalised and
  // the valid flag is not consulted.
  bool Overlapped(double x1, double y1, double x2, double y2) const;
  // Overlapped tests against other's corners; null other gives false.
  bool Overlapped(CQVIS_MaxRegionInfo* other) const;
  // OverlappedEx tests against other grown by margin on every side; null
  // other gives false.
  bool OverlappedEx(CQVIS_MaxRegionInfo* other, double margin) const;

  // GetWidth returns max x - min x, or 0 when not valid.
  double GetWidth() const;
  // GetHeight returns max y - min y, or 0 when not valid.
  double GetHeight() const;
  // GetCenter returns the midpoint of the corners, whatever the valid flag.
  void GetCenter(double& x, double& y) const;

  double m_dMinX;
  double m_dMinY;
  double m_dMaxX;
  double m_dMaxY;
  BOOL m_bValid;  // 0 while nothing has been put into the region
};

// The list of extents. It never deletes its regions by itself: Init, Clear,
// Release and the destructor only drop the pointers; the owner frees the
// regions through DeleteAll first when it wants them freed.
class QVIS_API CQVIS_MaxRegionInfoDB
    : public CExPtrArray<CQVIS_MaxRegionInfo*, CQVIS_MaxRegionInfo*> {
 public:
  // Version of the list record (its header is the version with bit 31 set).
  static int m_nVersion;

  CQVIS_MaxRegionInfoDB();
  ~CQVIS_MaxRegionInfoDB() override;

  // Serialize writes the header 0x80000001, a 64-bit count and each region's
  // record. Loading reads the header (a version other than 1 empties the list
  // and stops there), the count (64-bit when bit 31 of the header is set,
  // else a 4-byte int; a negative count reads nothing) and then each region
  // into a list of its own; only when every record is whole and valid
  // (finite corners, a 0/1 valid flag) do its valid regions replace the
  // list's (deleted). A count larger than the bytes left can hold, a short
  // or a damaged record throws CArchiveException naming the field and byte
  // offset, and leaves the list exactly as it was.
  virtual void Serialize(CArchive& ar);
  // operator== returns 1 for the same object or when both lists hold equal
  // regions in the same order, else 0.
  virtual int operator==(const CQVIS_MaxRegionInfoDB& other) const;
  // operator!= negates operator==.
  virtual int operator!=(const CQVIS_MaxRegionInfoDB& other) const;

  // Init drops every pointer (regions not deleted) and frees the storage.
  void Init();
  // Clear is Init.
  void Clear();
  // Release is Init.
  void Release();

  // Add stores a new region spanning the two corners (normalised), grown by
  // margin on every side. A single point with margin 0 adds nothing.
  void Add(double x1, double y1, double x2, double y2, double margin);
  // Add stores a new region with r's corners (r itself is not stored and
  // stays the caller's); an invalid or null r adds nothing.
  void Add(CQVIS_MaxRegionInfo* r);

  // GetMaxRegion grows *out by every region in index order (valid flags of
  // the regions not consulted); out is not cleared first. An empty list or a
  // null out changes nothing.
  void GetMaxRegion(CQVIS_MaxRegionInfo* out) const;
  // MergeAll replaces the list by one new region spanning all of them. The
  // former regions are dropped from the list, not deleted.
  void MergeAll();
  // MergeOverlapped merges neighbours in the list that overlap (touching
  // counts), restarting after each merge, until no neighbours overlap. The
  // absorbed region is dropped from the list, not deleted. Overlapping
  // regions that are not neighbours stay apart.
  void MergeOverlapped();

  // MakeSnap, Multi, Move and ChangeUnit apply the region operation of the
  // same name to every region in index order (null entries skipped).
  void MakeSnap(double step);
  void Multi(double sx, double sy);
  void Move(double dx, double dy);
  void ChangeUnit(int from, int to);
};

#endif  // QVIS_DESIGN_MAX_REGION_INFO_H_
