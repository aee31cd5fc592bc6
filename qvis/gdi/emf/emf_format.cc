// Validation of metafile images: nothing is played from a file that fails any check, so the
// player itself can read fields without further bounds tests.
#include "qvis/gdi/emf/emf_format.h"

#include <cstring>
#include <memory>

namespace qvis::gdi {
namespace {

// FitsPoints: whether `fixed` bytes of fields and `count` items of `item` bytes fit the record.
bool Fits(const RecordView& r, std::uint64_t fixed, std::uint64_t count, std::uint64_t item) {
  return fixed + count * item <= r.size;
}

bool CheckPolyPoly(const RecordView& r, std::uint64_t point_size) {
  if (r.size < 32) return false;
  const std::uint64_t polys = r.U32(24);
  const std::uint64_t total = r.U32(28);
  if (!Fits(r, 32, polys, 4) || !Fits(r, 32 + polys * 4, total, point_size)) return false;
  std::uint64_t sum = 0;
  for (std::uint64_t i = 0; i < polys; ++i) sum += r.U32(static_cast<std::uint32_t>(32 + i * 4));
  return sum == total;
}

}  // namespace

bool CheckRecord(const RecordView& r) {
  switch (r.type) {
    case kEmrHeader:
      return r.size >= kEmfHeaderMinSize;
    case kEmrPolyBezier:
    case kEmrPolygon:
    case kEmrPolyline:
    case kEmrPolyBezierTo:
    case kEmrPolylineTo:
      return r.size >= 28 && Fits(r, 28, r.U32(24), 8);
    case kEmrPolyBezier16:
    case kEmrPolygon16:
    case kEmrPolyline16:
    case kEmrPolyBezierTo16:
    case kEmrPolylineTo16:
      return r.size >= 28 && Fits(r, 28, r.U32(24), 4);
    case kEmrPolyPolyline:
    case kEmrPolyPolygon:
      return CheckPolyPoly(r, 8);
    case kEmrPolyPolyline16:
    case kEmrPolyPolygon16:
      return CheckPolyPoly(r, 4);
    case kEmrSetWindowExtEx:
    case kEmrSetWindowOrgEx:
    case kEmrSetViewportExtEx:
    case kEmrSetViewportOrgEx:
    case kEmrSetBrushOrgEx:
    case kEmrMoveToEx:
    case kEmrLineTo:
      return r.size >= 16;
    case kEmrSetPixelV:
      return r.size >= 20;
    case kEmrSetMapMode:
    case kEmrSetBkMode:
    case kEmrSetPolyFillMode:
    case kEmrSetRop2:
    case kEmrSetTextAlign:
    case kEmrSetTextColor:
    case kEmrSetBkColor:
    case kEmrRestoreDc:
    case kEmrSelectObject:
    case kEmrDeleteObject:
    case kEmrSetArcDirection:
    case kEmrSetMiterLimit:
      return r.size >= 12;
    case kEmrCreatePen:
      return r.size >= 28;
    case kEmrCreateBrushIndirect:
      return r.size >= 24;
    case kEmrEllipse:
    case kEmrRectangle:
      return r.size >= 24;
    case kEmrRoundRect:
      return r.size >= 32;
    case kEmrArc:
    case kEmrChord:
    case kEmrPie:
    case kEmrArcTo:
      return r.size >= 40;
    case kEmrExtCreatePen:
      return r.size >= 52;
    default:
      return true;  // records without fields, and unknown ones
  }
}

EnhMetaFile* ParseEnhMetaFile(const std::uint8_t* data, std::size_t size) {
  if (data == nullptr || size < kEmfHeaderMinSize || size > 0xFFFFFFFFu) return nullptr;
  RecordView head{0, data, static_cast<std::uint32_t>(size)};
  if (head.U32(0) != kEmrHeader || head.U32(40) != kEmfSignature) return nullptr;
  // nBytes is the metafile's own length; trailing bytes beyond it are ignored.
  std::uint32_t total = head.U32(48);
  if (total < kEmfHeaderMinSize || total > size) return nullptr;

  auto emf = std::make_unique<EnhMetaFile>();
  std::uint32_t offset = 0;
  bool seen_eof = false;
  while (offset < total && !seen_eof) {
    if (total - offset < 8) return nullptr;
    RecordView r{0, data + offset, 0};
    r.size = total - offset;
    r.type = r.U32(0);
    std::uint32_t record_size = r.U32(4);
    if (record_size < 8 || record_size % 4 != 0 || record_size > total - offset) return nullptr;
    r.size = record_size;
    if ((offset == 0) != (r.type == kEmrHeader)) return nullptr;  // one header, first
    if (!CheckRecord(r)) return nullptr;
    emf->record_offsets.push_back(offset);
    seen_eof = r.type == kEmrEof;
    offset += record_size;
  }
  if (!seen_eof) return nullptr;

  EmfHeader& h = emf->header;
  for (int i = 0; i < 4; ++i) {
    h.bounds[i] = head.I32(8 + 4 * static_cast<std::uint32_t>(i));
    h.frame[i] = head.I32(24 + 4 * static_cast<std::uint32_t>(i));
  }
  h.handles = head.U32(56) & 0xFFFFu;
  h.device_px[0] = head.I32(72);
  h.device_px[1] = head.I32(76);
  h.device_mm[0] = head.I32(80);
  h.device_mm[1] = head.I32(84);
  emf->bytes.assign(data, data + offset);
  return emf.release();
}

}  // namespace qvis::gdi
