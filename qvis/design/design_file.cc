// The design file: the design record and the records it embeds, written and read through a
// binary archive (raw little-endian values, no header of its own).
//
// Loading never half-loads: every record is read into values of its own and every field is
// checked (known unit codes, a finite zoom inside the zoom range, finite, positive and bounded
// grid and snap spacings, finite positions, 0/1 switches); only then are the records applied,
// through the classes' own Serialize over the bytes just checked. A short, damaged or hostile
// file throws CArchiveException naming the field and its byte offset, and the design is exactly
// as it was.
#include <cmath>
#include <cstdio>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "qvis/compat/archive.h"
#include "qvis/coords/unit_mgr.h"
#include "qvis/coords/zoom_range.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"

namespace {

// Buffer size of the archives over a design file.
constexpr int kArchiveBuffer = 4096;
// Largest magnitude accepted for a world position or size read from a file, and the range of
// grid and snap spacings: beyond them no view of the design can be drawn or snapped to.
constexpr double kMaxWorld = 1e12;
constexpr double kMinSpacing = 1e-9;
constexpr double kMaxSpacing = 1e9;

// One record as read: its bytes (to be replayed into the object once all is checked).
struct Record {
  bool present = false;
  std::vector<std::uint8_t> bytes;
};

// Reads typed values, remembering each field's offset for the messages and keeping the bytes.
class FieldReader {
 public:
  explicit FieldReader(CArchive& ar) : ar_(ar) {
    if (ar.GetFile() != nullptr) path_ = ar.GetFile()->GetFilePath();
  }

  void Begin(Record* record) {
    record_ = record;
    record_->present = true;
    record_->bytes.clear();
  }

  template <class T>
  T Get(const char* field) {
    field_ = field;
    at_ = ar_.GetPosition();
    std::uint8_t b[sizeof(T)];
    try {
      ar_.Read(b, sizeof(T));
    } catch (const CArchiveException& e) {
      throw CArchiveException(e.m_cause, path_,
                              std::string("field '") + field + "' at byte " + std::to_string(at_) +
                                  " is cut off by the end of the file");
    }
    if (record_ != nullptr) record_->bytes.insert(record_->bytes.end(), b, b + sizeof(T));
    T v;
    std::memcpy(&v, b, sizeof(T));  // the format is little-endian, as CArchive writes it
    return v;
  }

  // Bad reports the field read last.
  [[noreturn]] void Bad(const std::string& why) const {
    throw CArchiveException(CArchiveException::genericException, path_,
                            "field '" + field_ + "' at byte " + std::to_string(at_) + ": " + why);
  }

  double Finite(const char* field, double limit) {
    const double v = Get<double>(field);
    if (!std::isfinite(v) || std::fabs(v) > limit) Bad("not a finite value within +/-" + Num(limit));
    return v;
  }
  double Spacing(const char* field) {
    const double v = Get<double>(field);
    if (!(v >= kMinSpacing && v <= kMaxSpacing)) {
      Bad(Num(v) + " is not a spacing in [" + Num(kMinSpacing) + ", " + Num(kMaxSpacing) + "]");
    }
    return v;
  }
  template <class T>
  T Switch(const char* field) {
    const T v = Get<T>(field);
    if (v != 0 && v != 1) Bad(std::to_string(static_cast<long long>(v)) + " is not 0 or 1");
    return v;
  }
  int Unit(const char* field) {
    const int v = Get<int>(field);
    if (v < UNIT_MM || v > UNIT_MICRO) Bad("unknown unit code " + std::to_string(v));
    return v;
  }

  static std::string Num(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%g", v);
    return buf;
  }

 private:
  CArchive& ar_;
  CString path_;
  Record* record_ = nullptr;
  std::string field_;
  std::uint64_t at_ = 0;
};

// The records of a design file, read and checked.
struct DesignImage {
  bool complete = false;  // false: the design version was below 1 and nothing else was read
  int unit = 0;
  int layer = 0;
  Record extent, surface, coords, grid, cursor;
  COLORREF background = 0;
  double text_size_unit = 0;
};

void ReadExtent(FieldReader& r, Record* rec) {
  r.Begin(rec);
  if (r.Get<int>("extent version") < 1) return;
  const double x1 = r.Finite("extent min x", kMaxWorld);
  const double y1 = r.Finite("extent min y", kMaxWorld);
  const double x2 = r.Finite("extent max x", kMaxWorld);
  const double y2 = r.Finite("extent max y", kMaxWorld);
  const BOOL valid = r.Switch<BOOL>("extent valid");
  if (valid && (x1 > x2 || y1 > y2)) r.Bad("a valid extent whose minimum exceeds its maximum");
}

void ReadCoords(FieldReader& r, Record* rec) {
  r.Begin(rec);
  if (r.Get<int>("view version") < 1) return;
  r.Unit("view unit");
  const double zoom = r.Get<double>("view zoom");
  if (!qvis::ZoomInRange(zoom)) {
    r.Bad(FieldReader::Num(zoom) + " is not a zoom in [" + FieldReader::Num(qvis::kMinZoom) +
          ", " + FieldReader::Num(qvis::kMaxZoom) + "]");
  }
  r.Finite("view x", kMaxWorld);
  r.Finite("view y", kMaxWorld);
  r.Spacing("grid x");
  r.Spacing("grid y");
  r.Spacing("snap x");
  r.Spacing("snap y");
  r.Finite("view reserved 1", kMaxWorld);
  r.Finite("view reserved 2", kMaxWorld);
  r.Switch<BOOL>("snap on");
}

void ReadGrid(FieldReader& r, Record* rec) {
  r.Begin(rec);
  if (r.Get<int>("grid/snap version") < 1) return;
  r.Get<COLORREF>("grid colour");
  r.Get<COLORREF>("snap colour");
  r.Get<COLORREF>("origin colour");
  r.Switch<int>("show grid");
  r.Switch<int>("show snap");
  r.Switch<int>("grid style");
  r.Switch<int>("show origin");
}

void ReadCursor(FieldReader& r, Record* rec) {
  r.Begin(rec);
  if (r.Get<int>("cursor version") < 1) return;
  r.Switch<int>("cursor extension cross");
  r.Switch<int>("cursor extension x-cross");
  r.Switch<std::uint8_t>("cursor on");
  r.Switch<std::uint8_t>("cursor drawn");
  r.Finite("cursor x", kMaxWorld);
  r.Finite("cursor y", kMaxWorld);
  const double w = r.Finite("cursor width", kMaxWorld);
  if (w < 0) r.Bad("a negative size");
  const double h = r.Finite("cursor height", kMaxWorld);
  if (h < 0) r.Bad("a negative size");
  r.Get<int>("cursor line style");
  r.Get<int>("cursor reserved");
  r.Get<COLORREF>("cursor colour");
}

// Replays checked bytes into an object through its own Serialize.
template <class T>
void Replay(const Record& rec, T& object) {
  if (!rec.present) return;
  qvis::MemFile file(rec.bytes);
  CArchive ar(&file, CArchive::load);
  object.Serialize(ar);
}

// Load reads and checks a design record from ar, then (only then) applies it to d; with
// load_path, d is first cleared and takes the path as its file name, as LoadFromFile does.
void Load(CQVIS_Design& d, CArchive& ar, const CString* load_path) {
  FieldReader r(ar);
  DesignImage image;
  // A record older than the first version holds nothing more we can read.
  if (r.Get<int>("design version") >= 1) {
    image.complete = true;
    image.unit = r.Unit("design unit");
    image.layer = r.Get<int>("current layer");
    ReadExtent(r, &image.extent);
    if (d.m_pSurface != nullptr) {
      r.Begin(&image.surface);
      if (r.Get<int>("surface version") >= 1) {
        image.background = r.Get<COLORREF>("background colour");
        image.text_size_unit = r.Get<double>("text size unit");
        if (!(image.text_size_unit > 0 && image.text_size_unit <= kMaxSpacing)) {
          r.Bad("not a positive size within " + FieldReader::Num(kMaxSpacing));
        }
      } else {
        image.surface.present = false;
      }
      ReadCoords(r, &image.coords);
    }
    if (d.m_pGridSnapMgr != nullptr) ReadGrid(r, &image.grid);
    if (d.m_pCursorMgr != nullptr) ReadCursor(r, &image.cursor);
  }

  // Stage the new values in objects of their own (this can only fail for want of memory)...
  CQVIS_MaxRegionInfo region(d.m_MaxRegion);
  Replay(image.extent, region);
  CQVIS_Coords coords;
  if (d.m_pCoords != nullptr) coords = *d.m_pCoords;
  Replay(image.coords, coords);
  CQVIS_GridSnapMgr grid(nullptr);
  if (d.m_pGridSnapMgr != nullptr) grid = *d.m_pGridSnapMgr;
  Replay(image.grid, grid);
  CQVIS_CursorMgr cursor(nullptr);
  if (d.m_pCursorMgr != nullptr) cursor = *d.m_pCursorMgr;
  Replay(image.cursor, cursor);
  CString name;
  if (load_path != nullptr) name = *load_path;

  // ... then replace the design's.
  if (load_path != nullptr) {
    d.Clear();
    d.m_strFileName = name;
  }
  if (!image.complete) return;
  d.m_nUnit = image.unit;
  d.m_nCurrentLayerID = image.layer;
  d.m_MaxRegion = region;
  if (d.m_pSurface != nullptr && image.surface.present) {
    d.m_pSurface->SetBkColor(image.background);
    d.m_pSurface->SetTextSizeUnit(image.text_size_unit);
  }
  if (d.m_pCoords != nullptr && image.coords.present) *d.m_pCoords = coords;  // keeps the scale
  if (d.m_pGridSnapMgr != nullptr) *d.m_pGridSnapMgr = grid;
  if (d.m_pCursorMgr != nullptr) *d.m_pCursorMgr = cursor;
}

}  // namespace

void CQVIS_Design::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << 1 << m_nUnit << m_nCurrentLayerID;
    m_MaxRegion.Serialize(ar);
    if (m_pSurface != nullptr) m_pSurface->Serialize(ar);
    if (m_pGridSnapMgr != nullptr) m_pGridSnapMgr->Serialize(ar);
    if (m_pCursorMgr != nullptr) m_pCursorMgr->Serialize(ar);
    return;
  }
  Load(*this, ar, nullptr);
}

int CQVIS_Design::SaveToFile(CString path) {
  CFile file(path, CFile::modeCreate | CFile::modeWrite);
  CArchive ar(&file, CArchive::store, kArchiveBuffer);
  Serialize(ar);
  ar.Close();
  file.Close();  // renames the finished file over the old one; throws when it cannot
  return 1;
}

int CQVIS_Design::LoadFromFile(CString path) {
  CFile file(path, CFile::modeRead);
  CArchive ar(&file, CArchive::load, kArchiveBuffer);
  Load(*this, ar, &path);
  ar.Close();
  file.Close();
  return 1;
}
