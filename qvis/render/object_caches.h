// CQVIS_PenMgr, CQVIS_BrushMgr, CQVIS_FontMgr and CQVIS_Font: the caches that turn the drawing
// surface's many pen, brush and font requests into lookups. Each makes a device-layer object on
// the first request for a key and returns the same object afterwards. Each holds at most
// kCapacity objects: a new key beyond that evicts the least recently used object that no DC
// has selected (selected ones are pinned; if every one is selected the cache grows), so a zoom
// that makes a new pen width or font height at every step does not grow memory. An object
// returned earlier stays valid until the next request for a new key may evict it.
// Owned by CQVIS_GDI (one of each).
#ifndef QVIS_RENDER_OBJECT_CACHES_H_
#define QVIS_RENDER_OBJECT_CACHES_H_

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "qvis/compat/carray.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/types.h"
#include "qvis/render/gdi_objects.h"

namespace qvis {

// GetACP returns the ANSI code page the fonts' default character set is chosen from: the one
// set by SetACP, else 1252 (this platform has no system code page of that kind).
QVIS_API int GetACP();
// SetACP overrides the code page GetACP reports (0 restores the default).
QVIS_API void SetACP(int codePage);

}  // namespace qvis

// CQVIS_PenMgr: pens keyed by (style 0..5, end-cap flags, pixel width, colour). Widths below 2
// are keyed and made as 1-pixel cosmetic pens; 2 and more as geometric pens with the end-cap
// and join flags. Copies share the pen objects (shared ownership; an object lives while any
// copy lists it).
class QVIS_API CQVIS_PenMgr {
 public:
  CQVIS_PenMgr() = default;
  CQVIS_PenMgr(const CQVIS_PenMgr& other) = default;
  CQVIS_PenMgr& operator=(const CQVIS_PenMgr& other) = default;
  virtual ~CQVIS_PenMgr() { Clear(); }

  // CreatePen returns the cached pen of the key, making it on first use. A style outside 0..5
  // returns null (nothing stored). If the device layer refuses the pen, the empty wrapper is
  // stored and returned all the same (selecting it selects nothing).
  CPen* CreatePen(int style, int endCap, int width, COLORREF color);
  // Count(style) is the number of distinct end-cap values used with that style (not the
  // number of pens); 0 for a style outside 0..5.
  int Count(int style) const;
  // Count() is the sum of Count(style) over the six styles.
  int Count() const;
  // PenCount is the number of pens held (all keys), for callers that want the real size.
  int PenCount() const;
  // Clear releases every pen of every table.
  void Clear();

  static constexpr int kStyles = 6;
  // kCapacity: the most pens held while some are not selected.
  static constexpr int kCapacity = 256;

 private:
  struct Entry {
    std::shared_ptr<CPen> pen;
    std::uint64_t last_use = 0;
  };
  using ByColor = std::map<COLORREF, Entry>;
  using ByWidth = std::map<int, ByColor>;
  using ByEndCap = std::map<int, ByWidth>;
  // MakeRoom evicts least recently used unselected pens until one more fits.
  void MakeRoom();
  ByEndCap m_mapPens[kStyles];
  std::uint64_t clock_ = 0;  // use counter: last_use values grow with every request
  int held_ = 0;             // pens held, all tables
};

// CQVIS_BrushMgr: brushes keyed by (style 0..9, colour). Style 6 is solid, 7 the stock hollow
// brush (one entry per colour, all the same stock object, never deleted), every other style a
// hatch brush of that index (8 and 9 are refused by the device layer and stay empty).
class QVIS_API CQVIS_BrushMgr {
 public:
  CQVIS_BrushMgr() = default;
  CQVIS_BrushMgr(const CQVIS_BrushMgr& other) = default;
  CQVIS_BrushMgr& operator=(const CQVIS_BrushMgr& other) = default;
  virtual ~CQVIS_BrushMgr() { Clear(); }

  // CreateBrush returns the cached brush of the key, making it on first use. A style outside
  // 0..9 returns null (nothing stored).
  CBrush* CreateBrush(int style, COLORREF color);
  // Count(style) is the number of brushes of that style; 0 outside 0..9.
  int Count(int style) const;
  int Count() const;
  void Clear();

  static constexpr int kStyles = 10;
  // kCapacity: the most brushes held while some are not selected.
  static constexpr int kCapacity = 256;

 private:
  struct Entry {
    std::shared_ptr<CBrush> brush;
    std::uint64_t last_use = 0;
  };
  // MakeRoom evicts least recently used unselected brushes until one more fits.
  void MakeRoom();
  std::map<COLORREF, Entry> m_mapBrushes[kStyles];
  std::uint64_t clock_ = 0;
  int held_ = 0;
};

// CQVIS_Font: one cached font and the key it was made from.
class QVIS_API CQVIS_Font {
 public:
  // The constructor picks the character set from the ANSI code page (949 Hangul 129, 932
  // Shift-JIS 128, 936 GB2312 134, 950 Big5 136, any other ANSI 0).
  CQVIS_Font();
  CQVIS_Font(const CQVIS_Font&) = delete;
  CQVIS_Font& operator=(const CQVIS_Font&) = delete;
  virtual ~CQVIS_Font();

  // IsSame: equal strike-out, height, escapement, italic, underline, weight (as a double) and
  // face (exact, case-sensitive). The character set is not compared.
  bool IsSame(const CString& face, int height, int escapement, char italic, char underline,
              long weight, char strikeOut) const;
  // CreateFontA stores the key, releases any font held and makes a new one (TrueType only,
  // draft quality, weight truncated, face cut to 31 characters). Returns the font object,
  // whose handle is null when the device layer refused it.
  CFont* CreateFontA(const CString& face, int height, int escapement, char italic,
                     char underline, long weight, char strikeOut);
  // SetCharSet stores the character set used by the next CreateFontA.
  void SetCharSet(int charSet) { m_nCharSet = charSet; }
  int GetCharSet() const { return m_nCharSet; }
  CFont* GetFont() const { return m_pFont; }

  CFont* m_pFont = nullptr;   // owned
  CString m_strFace;
  int m_nEscapement = 0;      // tenths of a degree
  int m_nHeight = 7;          // device units
  char m_cItalic = 0;
  char m_cUnderline = 0;
  double m_dWeight = 10.0;
  char m_cStrikeOut = 0;
  int m_nCharSet = 0;
};

// CQVIS_FontMgr: fonts in creation order, found by a linear scan (few are in use at a time).
class QVIS_API CQVIS_FontMgr {
 public:
  CQVIS_FontMgr();
  CQVIS_FontMgr(const CQVIS_FontMgr&) = delete;
  CQVIS_FontMgr& operator=(const CQVIS_FontMgr&) = delete;
  virtual ~CQVIS_FontMgr();

  // Find returns the font of the first record for which IsSame holds, or null.
  CFont* Find(const CString& face, int height, int escapement, char italic, char underline,
              long weight, char strikeOut) const;
  // CreateFontA returns Find's font, or appends a new record and makes its font (evicting the
  // least recently used unselected record when kCapacity are held).
  CFont* CreateFontA(const CString& face, int height, int escapement, char italic,
                     char underline, long weight, char strikeOut);
  // Clear destroys every record and its font.
  void Clear();
  // GetCount is the number of records; GetAt the record at i (null when out of range).
  int GetCount() const;
  CQVIS_Font* GetAt(int i) const;

  // kCapacity: the most fonts held while some are not selected (each holds a rasteriser face).
  static constexpr int kCapacity = 32;

 private:
  // MakeRoom evicts least recently used unselected records until one more fits.
  void MakeRoom();
  CArray<CQVIS_Font*, CQVIS_Font*>* m_pArrFonts = nullptr;  // owned, as are its records
  std::vector<std::uint64_t> last_use_;  // parallel to m_pArrFonts
  std::uint64_t clock_ = 0;
};

#endif  // QVIS_RENDER_OBJECT_CACHES_H_
