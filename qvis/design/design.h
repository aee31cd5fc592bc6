// CQVIS_Design: the document-and-view controller of one drawing canvas.
// Owned by the drawing window (CQVIS_Wnd); owns the surface, the render buffer and the
// seventeen interaction objects, and saves and loads the design file.
#ifndef QVIS_DESIGN_DESIGN_H_
#define QVIS_DESIGN_DESIGN_H_

#include <memory>

#include "qvis/compat/archive.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/design/max_region_info.h"

class CQVIS_GDI;
class CQVIS_Coords;
class CQVIS_GridSnapMgr;
class CQVIS_ZoomMgr;
class CQVIS_MousePanMgr;
class CQVIS_CursorMgr;
class CQVIS_DrawSelectCmd;
class CQVIS_DrawLineCmd;
class CQVIS_DrawCircleCmd;
class CQVIS_Draw3PCircleCmd;
class CQVIS_DrawArcCmd;
class CQVIS_DrawFlashCircleCmd;
class CQVIS_DrawFlashRectCmd;
class CQVIS_DrawRectCmd;
class CQVIS_DrawPolygonCmd;
class CQVIS_DrawFlashObroundCmd;
class CQVIS_DrawFlashPolygonCmd;
class CQVIS_DrawPointCmd;

namespace qvis {
class RenderBuffer;
}  // namespace qvis

class QVIS_API CQVIS_Design {
 public:
  // CQVIS_Design: creates the surface and the render buffer, then runs Init.
  CQVIS_Design();
  // CQVIS_Design(copy): a short-lived copy that shares the surface, the render buffer and
  // every manager and command with the source. The copy never deletes what it shares.
  CQVIS_Design(const CQVIS_Design& other);
  // operator=: Clone of the other design (values only); self-assignment does nothing.
  CQVIS_Design& operator=(const CQVIS_Design& other);
  virtual ~CQVIS_Design();

  // Init: creates every manager and command that does not exist yet, hands them the
  // surface's device contexts and sets the view defaults (mm, zoom 10, view (-50, -50),
  // grid 10, snap 2). Safe to call again: existing objects are kept.
  void Init();
  // Release: deletes the managers and commands in member order and leaves their pointers
  // null, so a second Release (or the destructor after it) deletes nothing twice.
  void Release();
  // ShareSurfaceDCs: hands the surface's current DCs to the managers and commands: the
  // drawing DC to the grid display, the origin DC (the screen) to the cursor and to every
  // command's rubber band. Init does it; a window calls it again when its DCs change.
  void ShareSurfaceDCs();
  // Clone: copies extent, unit, file name, layer and mouse position of src after Clear;
  // managers, commands, surface and view stay. A null src changes nothing.
  void Clone(const CQVIS_Design* src);
  // Clear: brings the view position to the design's unit and the current layer to 0.
  void Clear();

  // SetUnit: stores the unit code as given; nothing is converted.
  virtual void SetUnit(int unit);
  // GetUnit: the design's unit code.
  virtual int GetUnit();
  // GetUnitString: "MM", "INCH", "MIL", "CM" or "MICROM"; "" for an unknown code.
  CString GetUnitString();

  int GetCurrentLayerID();
  // SetCurrentLayerID: stores the layer and gives it to every drawing command, whose two
  // colours are reset to red; active rubber bands are erased and redrawn, never left stale.
  void SetCurrentLayerID(int id);

  // Defaults a host uses for a new design.
  int GetInitDesignUnit();
  // GetInitDesignWidth: 0.2 when the view is in mm, otherwise 10.0.
  double GetInitDesignWidth();
  int GetInitDesignSnapEnable();
  double GetInitDesignZoomLevel();
  double GetInitDesignGridX();
  double GetInitDesignGridY();
  double GetInitDesignSnapX();
  double GetInitDesignSnapY();

  // GetCurrentProcInfo: the name of the first active command in the fixed order, or "".
  virtual CString GetCurrentProcInfo();
  // AllDeactiveCmd: ends every command, erasing its rubber band; the pan and the cursor
  // are left alone.
  virtual void AllDeactiveCmd();

  // Every zoom operation keeps the view inside the zoom range of qvis/coords/zoom_range.h:
  // one that would leave it does nothing.
  // ZoomIn: zoom by 1.2 about the last mouse world position (it stays under the mouse).
  virtual void ZoomIn();
  // ZoomOut: zoom by 1/1.2 about the last mouse world position.
  virtual void ZoomOut();
  // ZoomAll(region): fits the region, widened by (100 - fillPercent)% of its larger side,
  // into width x height pixels; the caller's region is widened too. Returns 0 and changes
  // nothing for a size <= 0 or a region that is not valid, else 1.
  virtual int ZoomAll(double width, double height, CQVIS_MaxRegionInfo& region,
                      double fillPercent);
  // ZoomAll(flag): a hook for a derived design; the base returns 0 and does nothing.
  virtual int ZoomAll(double width, double height, bool flag, double fillPercent);
  // ZoomWindow: fits the rectangle of two corners (any order), widened by marginFactor
  // times its larger side; nothing happens for a size <= 0.
  virtual void ZoomWindow(double width, double height, double x1, double y1, double x2,
                          double y2, double marginFactor);

  // operator==: 1 for the same object, else unit, layer, extent, surface, grid/snap
  // display and cursor must all be equal. Commands, file name and mouse are not compared.
  virtual int operator==(const CQVIS_Design& other) const;
  virtual int operator!=(const CQVIS_Design& other) const;

  // Serialize: writes or reads the design record (version, unit, layer, then the extent,
  // surface, grid/snap and cursor records). A stored version below 1 stops the read
  // right after it. Reading checks every field before it changes anything: a short stream
  // throws CArchiveException(endOfFile), a bad value CArchiveException(genericException),
  // each naming the field and byte offset, and the design stays exactly as it was.
  virtual void Serialize(CArchive& ar);
  // SaveToFile: writes the design file through a temporary file renamed over the old one; a
  // write that fails (cannot create, disk full, size limit, I/O error) throws CFileException
  // and leaves the old file byte-for-byte as it was. Returns 1.
  int SaveToFile(CString path);
  // LoadFromFile: read and check the design file, then Clear, remember the path and take
  // its values. A missing file throws CFileException; a short or damaged one
  // CArchiveException; either way the design is left exactly as it was. Returns 1.
  int LoadFromFile(CString path);

  static int m_nVersion;

  CQVIS_MaxRegionInfo m_MaxRegion;
  int m_nUnit;
  int m_nCurrentLayerID;
  CString m_strFileName;
  double m_dMouseWorldX;
  double m_dMouseWorldY;
  int m_nMouseScreenX;
  int m_nMouseScreenY;
  CQVIS_GDI* m_pSurface;
  CQVIS_Coords* m_pCoords;
  qvis::RenderBuffer* m_pRenderBuffer;
  CQVIS_GridSnapMgr* m_pGridSnapMgr;
  CQVIS_ZoomMgr* m_pZoomMgr;
  CQVIS_MousePanMgr* m_pMousePanMgr;
  CQVIS_CursorMgr* m_pCursorMgr;
  CQVIS_DrawSelectCmd* m_pSelectCmd;
  CQVIS_DrawLineCmd* m_pDrawLineCmd;
  CQVIS_DrawCircleCmd* m_pDrawCircleCmd;
  CQVIS_Draw3PCircleCmd* m_pDraw3PCircleCmd;
  CQVIS_DrawArcCmd* m_pDrawArcCmd;
  CQVIS_DrawFlashCircleCmd* m_pDrawFlashCircleCmd;
  CQVIS_DrawFlashRectCmd* m_pDrawFlashRectCmd;
  CQVIS_DrawRectCmd* m_pDrawRectCmd;
  CQVIS_DrawPolygonCmd* m_pDrawPolygonCmd;
  CQVIS_DrawFlashObroundCmd* m_pDrawFlashObroundCmd;
  CQVIS_DrawFlashPolygonCmd* m_pDrawFlashPolygonCmd;
  CQVIS_DrawSelectCmd* m_pCaptureCmd;
  CQVIS_DrawPointCmd* m_pSetOriginCmd;

 private:
  // Owned: what this design made (surface, render buffer, managers, commands). The public
  // pointers above observe these objects; a failed construction frees what it made.
  struct Owned;
  struct OwnedDeleter {
    void operator()(Owned* owned) const;
  };
  std::unique_ptr<Owned, OwnedDeleter> owned_;
  // False for a copy made by the copy constructor: it shares, and never deletes, the
  // surface, the buffer and the interaction objects of its source.
  bool owns_objects_ = true;
};

#endif  // QVIS_DESIGN_DESIGN_H_
