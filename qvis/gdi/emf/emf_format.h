// Enhanced-metafile records: the record numbers the player knows, a bounds-checked reader of
// the little-endian record stream, and the validated metafile object behind HENHMETAFILE.
#ifndef QVIS_GDI_EMF_EMF_FORMAT_H_
#define QVIS_GDI_EMF_EMF_FORMAT_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "qvis/gdi/gdi.h"

namespace qvis::gdi {

// Record numbers (the file format's own values) under engine names.
enum EmfRecord : std::uint32_t {
  kEmrHeader = 1,
  kEmrPolyBezier = 2,
  kEmrPolygon = 3,
  kEmrPolyline = 4,
  kEmrPolyBezierTo = 5,
  kEmrPolylineTo = 6,
  kEmrPolyPolyline = 7,
  kEmrPolyPolygon = 8,
  kEmrSetWindowExtEx = 9,
  kEmrSetWindowOrgEx = 10,
  kEmrSetViewportExtEx = 11,
  kEmrSetViewportOrgEx = 12,
  kEmrSetBrushOrgEx = 13,
  kEmrEof = 14,
  kEmrSetPixelV = 15,
  kEmrSetMapMode = 17,
  kEmrSetBkMode = 18,
  kEmrSetPolyFillMode = 19,
  kEmrSetRop2 = 20,
  kEmrSetTextAlign = 22,
  kEmrSetTextColor = 24,
  kEmrSetBkColor = 25,
  kEmrMoveToEx = 27,
  kEmrSaveDc = 33,
  kEmrRestoreDc = 34,
  kEmrSelectObject = 37,
  kEmrCreatePen = 38,
  kEmrCreateBrushIndirect = 39,
  kEmrDeleteObject = 40,
  kEmrEllipse = 42,
  kEmrRectangle = 43,
  kEmrRoundRect = 44,
  kEmrArc = 45,
  kEmrChord = 46,
  kEmrPie = 47,
  kEmrLineTo = 54,
  kEmrArcTo = 55,
  kEmrSetArcDirection = 57,
  kEmrSetMiterLimit = 58,
  kEmrBeginPath = 59,
  kEmrEndPath = 60,
  kEmrCloseFigure = 61,
  kEmrFillPath = 62,
  kEmrStrokeAndFillPath = 63,
  kEmrStrokePath = 64,
  kEmrPolyBezier16 = 85,
  kEmrPolygon16 = 86,
  kEmrPolyline16 = 87,
  kEmrPolyBezierTo16 = 88,
  kEmrPolylineTo16 = 89,
  kEmrPolyPolyline16 = 90,
  kEmrPolyPolygon16 = 91,
  kEmrExtCreatePen = 95,
};

// The header's signature, " EMF" as a little-endian word.
inline constexpr std::uint32_t kEmfSignature = 0x464D4520u;
// Size of the header fields the player reads (through szlMillimeters).
inline constexpr std::uint32_t kEmfHeaderMinSize = 88;
// Stock objects are selected by index with this bit set.
inline constexpr std::uint32_t kEmfStockObjectBit = 0x80000000u;

// RecordView is one record: its type, its bytes (header included) and checked field access.
// Reads past the end give 0; the loader has already checked every record it will play.
struct RecordView {
  std::uint32_t type = 0;
  const std::uint8_t* data = nullptr;
  std::uint32_t size = 0;

  std::uint32_t U32(std::uint32_t offset) const {
    if (offset > size || size - offset < 4) return 0;
    return static_cast<std::uint32_t>(data[offset]) | static_cast<std::uint32_t>(data[offset + 1]) << 8 |
           static_cast<std::uint32_t>(data[offset + 2]) << 16 |
           static_cast<std::uint32_t>(data[offset + 3]) << 24;
  }
  std::int32_t I32(std::uint32_t offset) const { return static_cast<std::int32_t>(U32(offset)); }
  std::int16_t I16(std::uint32_t offset) const {
    if (offset > size || size - offset < 2) return 0;
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(data[offset] | data[offset + 1] << 8));
  }
};

// CheckRecord tells whether a record is large enough for the fields and counts it declares.
// Unknown record types pass (they are skipped when played).
bool CheckRecord(const RecordView& record);

// EmfHeader holds the header fields that playback needs.
struct EmfHeader {
  std::int32_t bounds[4] = {};  // left, top, right, bottom: inclusive, reference device pixels
  std::int32_t frame[4] = {};   // left, top, right, bottom: inclusive, 0.01 mm
  std::uint32_t handles = 0;    // size of the object table, entry 0 unused
  std::int32_t device_px[2] = {};  // reference device size in pixels
  std::int32_t device_mm[2] = {};  // and in millimetres
};

// EnhMetaFile is a loaded metafile whose every record has passed CheckRecord.
struct EnhMetaFile {
  EmfHeader header;
  std::vector<std::uint8_t> bytes;         // the records, header first
  std::vector<std::uint32_t> record_offsets;  // start of each record, EOF last
};

// ParseEnhMetaFile validates a metafile image: header type, signature and sizes, every record
// inside the data with a size that is a multiple of 4 and at least 8, known records consistent
// with their counts, and an EOF record. Returns null for anything else.
EnhMetaFile* ParseEnhMetaFile(const std::uint8_t* data, std::size_t size);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_EMF_EMF_FORMAT_H_
