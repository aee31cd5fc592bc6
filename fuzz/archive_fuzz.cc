// Fuzz target for the archive readers of the extent list, the extent region
// and the view coordinates. Any input must either load or raise
// CArchiveException; whatever loads must write back and reload to the same
// value. Built as a libFuzzer target under clang and as a corpus replay
// driver otherwise (see README.md).
#include <cmath>
#include <cstdint>
#include <vector>

#include "fuzz/fuzz_util.h"
#include "qvis/compat/archive.h"
#include "qvis/coords/view_coords.h"
#include "qvis/design/max_region_info.h"

namespace {

void Check(bool ok, const char* what) { qvis::fuzz::CheckInvariant(ok, "archive_fuzz", what); }

bool HasNaN(const CQVIS_MaxRegionInfo& r) {
  return std::isnan(r.m_dMinX) || std::isnan(r.m_dMinY) || std::isnan(r.m_dMaxX) ||
         std::isnan(r.m_dMaxY);
}

bool HasNaN(const CQVIS_Coords& c) {
  for (double v : {c.m_dZoom, c.m_dViewX, c.m_dViewY, c.m_dGridX, c.m_dGridY, c.m_dSnapX,
                   c.m_dSnapY, c.m_dReserved1, c.m_dReserved2}) {
    if (std::isnan(v)) return true;
  }
  return false;
}

bool IsPoint(const CQVIS_MaxRegionInfo& r) {
  return r.m_dMinX == r.m_dMaxX && r.m_dMinY == r.m_dMaxY;
}

// A loaded list holds only valid regions (invalid and single-point records
// are dropped) and survives a write and a reload, except for regions that
// became single points (a NaN corner is never taken by Put), which the
// reload drops like any single point.
void CheckLoadedDb(CQVIS_MaxRegionInfoDB& db, size_t input_size) {
  Check(static_cast<size_t>(db.GetSize()) <= input_size / 40, "more regions than records");
  std::vector<CQVIS_MaxRegionInfo*> kept;
  bool nan = false;
  for (CQVIS_MaxRegionInfo* r : db) {
    Check(r != nullptr && r->m_bValid == 1, "loaded region is not valid");
    Check(!(r->m_dMinX > r->m_dMaxX) && !(r->m_dMinY > r->m_dMaxY), "region not normalised");
    nan = nan || HasNaN(*r);
    if (!IsPoint(*r)) kept.push_back(r);
  }
  const std::vector<std::uint8_t> bytes = qvis::fuzz::StoreBytes(db);
  Check(bytes.size() == 12 + 40 * static_cast<size_t>(db.GetSize()), "list record size");
  CQVIS_MaxRegionInfoDB again;
  qvis::fuzz::LoadBytes(bytes, again);
  if (!nan) {
    Check(static_cast<size_t>(again.GetSize()) == kept.size(), "reloaded list size");
    for (size_t i = 0; i < kept.size(); ++i) {
      Check(*again.GetAt(static_cast<INT_PTR>(i)) == *kept[i], "reloaded region differs");
    }
  }
  again.DeleteAll();
}

void CheckLoadedCoords(CQVIS_Coords& c) {
  const std::vector<std::uint8_t> bytes = qvis::fuzz::StoreBytes(c);
  Check(bytes.size() == 84, "coordinate record size");
  CQVIS_Coords again;
  qvis::fuzz::LoadBytes(bytes, again);
  if (!HasNaN(c)) Check(again == c, "coordinates do not reload to themselves");
}

}  // namespace

// The first byte picks what the rest holds: a list record, a coordinate
// record, or a region, a list and a coordinate record in one stream.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const int mode = data[0] % 3;
  qvis::MemFile file(data + 1, size - 1);
  CArchive ar(&file, CArchive::load, 64);
  CQVIS_MaxRegionInfoDB db;
  CQVIS_Coords coords;
  CQVIS_MaxRegionInfo region;
  bool db_loaded = false, coords_loaded = false;
  try {
    if (mode == 2) region.Serialize(ar);
    if (mode != 1) {
      db.Serialize(ar);
      db_loaded = true;
    }
    if (mode != 0) {
      coords.Serialize(ar);
      coords_loaded = true;
    }
  } catch (const CArchiveException&) {
    // A short or damaged record: the expected outcome for most inputs.
  }
  if (db_loaded) CheckLoadedDb(db, size);
  if (coords_loaded) CheckLoadedCoords(coords);
  db.DeleteAll();  // the list never frees its regions by itself
  return 0;
}
