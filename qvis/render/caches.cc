// The pen, brush and font caches of the drawing surface.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/object_caches.h"

namespace qvis {
namespace {
int g_code_page_override = 0;
}  // namespace

int GetACP() { return g_code_page_override != 0 ? g_code_page_override : 1252; }
void SetACP(int codePage) { g_code_page_override = codePage; }

}  // namespace qvis

// ----- Pens ----------------------------------------------------------------------------------

namespace {

// Selected: whether a cached wrapper's object is selected into some DC (then it is pinned).
bool Selected(const qvis::GdiObjectWrapper* object) {
  return object != nullptr && qvis::gdi::IsSelected(object->GetSafeHandle());
}

}  // namespace

CPen* CQVIS_PenMgr::CreatePen(int style, int endCap, int width, COLORREF color) {
  if (style < 0 || style >= kStyles) return nullptr;
  // Widths below 2 share the 1-pixel key: the request, not the result, is the key, so the end
  // cap still separates two equal-looking cosmetic pens.
  const int key_width = width >= 2 ? width : 1;
  if (auto cap = m_mapPens[style].find(endCap); cap != m_mapPens[style].end()) {
    if (auto w = cap->second.find(key_width); w != cap->second.end()) {
      if (auto it = w->second.find(color); it != w->second.end()) {
        it->second.last_use = ++clock_;
        return it->second.pen.get();
      }
    }
  }

  auto pen = std::make_shared<CPen>();
  if (key_width >= 2) {
    qvis::gdi::LOGBRUSH brush;
    brush.lbStyle = BS_SOLID;
    brush.lbColor = color;
    brush.lbHatch = 0;
    pen->CreatePen(PS_GEOMETRIC | style | endCap, key_width, &brush, 0, nullptr);
  } else {
    pen->CreatePen(style, 1, color);
  }
  MakeRoom();
  CPen* result = pen.get();
  m_mapPens[style][endCap][key_width].emplace(color, Entry{std::move(pen), ++clock_});
  ++held_;
  return result;
}

void CQVIS_PenMgr::MakeRoom() {
  while (held_ >= kCapacity) {
    // The oldest unselected pen: a scan, which runs only when a new key meets a full cache.
    ByColor* oldest_table = nullptr;
    ByColor::iterator oldest;
    for (ByEndCap& table : m_mapPens) {
      for (auto& [cap, by_width] : table) {
        for (auto& [w, by_color] : by_width) {
          for (auto it = by_color.begin(); it != by_color.end(); ++it) {
            if (Selected(it->second.pen.get())) continue;
            if (oldest_table == nullptr || it->second.last_use < oldest->second.last_use) {
              oldest_table = &by_color;
              oldest = it;
            }
          }
        }
      }
    }
    if (oldest_table == nullptr) return;  // every pen is selected: grow
    oldest_table->erase(oldest);
    --held_;
    // Empty tables go too, so that Count keeps counting end caps in use.
    for (ByEndCap& table : m_mapPens) {
      for (auto cap = table.begin(); cap != table.end();) {
        for (auto w = cap->second.begin(); w != cap->second.end();) {
          w = w->second.empty() ? cap->second.erase(w) : std::next(w);
        }
        cap = cap->second.empty() ? table.erase(cap) : std::next(cap);
      }
    }
  }
}

int CQVIS_PenMgr::Count(int style) const {
  if (style < 0 || style >= kStyles) return 0;
  return static_cast<int>(m_mapPens[style].size());
}

int CQVIS_PenMgr::Count() const {
  int n = 0;
  for (int s = 0; s < kStyles; ++s) n += Count(s);
  return n;
}

int CQVIS_PenMgr::PenCount() const { return held_; }

void CQVIS_PenMgr::Clear() {
  for (ByEndCap& table : m_mapPens) table.clear();
  held_ = 0;
}

// ----- Brushes -------------------------------------------------------------------------------

CBrush* CQVIS_BrushMgr::CreateBrush(int style, COLORREF color) {
  if (style < 0 || style >= kStyles) return nullptr;
  if (auto it = m_mapBrushes[style].find(color); it != m_mapBrushes[style].end()) {
    it->second.last_use = ++clock_;
    return it->second.brush.get();
  }

  auto brush = std::make_shared<CBrush>();
  if (style == 6) {
    brush->CreateSolidBrush(color);
  } else if (style == 7) {
    // The stock hollow brush is shared by every colour; the wrapper only borrows it.
    brush->Attach(qvis::gdi::GetStockObject(NULL_BRUSH));
  } else {
    brush->CreateHatchBrush(style, color);
  }
  MakeRoom();
  CBrush* result = brush.get();
  m_mapBrushes[style].emplace(color, Entry{std::move(brush), ++clock_});
  ++held_;
  return result;
}

void CQVIS_BrushMgr::MakeRoom() {
  while (held_ >= kCapacity) {
    std::map<COLORREF, Entry>* oldest_table = nullptr;
    std::map<COLORREF, Entry>::iterator oldest;
    for (auto& table : m_mapBrushes) {
      for (auto it = table.begin(); it != table.end(); ++it) {
        if (Selected(it->second.brush.get())) continue;
        if (oldest_table == nullptr || it->second.last_use < oldest->second.last_use) {
          oldest_table = &table;
          oldest = it;
        }
      }
    }
    if (oldest_table == nullptr) return;  // every brush is selected: grow
    oldest_table->erase(oldest);
    --held_;
  }
}

int CQVIS_BrushMgr::Count(int style) const {
  if (style < 0 || style >= kStyles) return 0;
  return static_cast<int>(m_mapBrushes[style].size());
}

int CQVIS_BrushMgr::Count() const {
  int n = 0;
  for (int s = 0; s < kStyles; ++s) n += Count(s);
  return n;
}

void CQVIS_BrushMgr::Clear() {
  for (auto& table : m_mapBrushes) table.clear();
  held_ = 0;
}

// ----- Fonts ---------------------------------------------------------------------------------

CQVIS_Font::CQVIS_Font() {
  switch (qvis::GetACP()) {
    case 949: m_nCharSet = HANGUL_CHARSET; break;
    case 932: m_nCharSet = SHIFTJIS_CHARSET; break;
    case 936: m_nCharSet = GB2312_CHARSET; break;
    case 950: m_nCharSet = CHINESEBIG5_CHARSET; break;
    default: m_nCharSet = ANSI_CHARSET; break;
  }
}

CQVIS_Font::~CQVIS_Font() { delete m_pFont; }

bool CQVIS_Font::IsSame(const CString& face, int height, int escapement, char italic,
                        char underline, long weight, char strikeOut) const {
  return m_cStrikeOut == strikeOut && m_nHeight == height && m_nEscapement == escapement &&
         m_cItalic == italic && m_cUnderline == underline &&
         m_dWeight == static_cast<double>(weight) && m_strFace.str() == face.str();
}

CFont* CQVIS_Font::CreateFontA(const CString& face, int height, int escapement, char italic,
                               char underline, long weight, char strikeOut) {
  m_cStrikeOut = strikeOut;
  m_cItalic = italic;
  m_nHeight = height;
  m_nEscapement = escapement;
  m_cUnderline = underline;
  m_dWeight = static_cast<double>(weight);
  m_strFace = face;

  qvis::gdi::LOGFONTA lf;
  lf.lfHeight = height;
  lf.lfWidth = 0;
  lf.lfEscapement = escapement;
  lf.lfOrientation = 0;
  lf.lfWeight = static_cast<LONG>(m_dWeight);
  lf.lfItalic = static_cast<BYTE>(m_cItalic);
  lf.lfUnderline = static_cast<BYTE>(m_cUnderline);
  lf.lfStrikeOut = static_cast<BYTE>(m_cStrikeOut);
  lf.lfCharSet = static_cast<BYTE>(m_nCharSet);
  lf.lfOutPrecision = OUT_TT_ONLY_PRECIS;
  lf.lfClipPrecision = 0;
  lf.lfQuality = DRAFT_QUALITY;
  lf.lfPitchAndFamily = 0;
  // A longer face is the caller's error; the description holds 31 characters and the NUL.
  const size_t n = std::min<size_t>(m_strFace.str().size(), qvis::gdi::kFaceNameSize - 1);
  std::memcpy(lf.lfFaceName, m_strFace.GetString(), n);
  lf.lfFaceName[n] = '\0';

  // The new font is made before the old one goes: a failed allocation leaves the old font
  // (and no dangling pointer) behind.
  auto font = std::make_unique<CFont>();
  font->CreateFontIndirectA(&lf);
  delete std::exchange(m_pFont, font.release());
  return m_pFont;
}

CQVIS_FontMgr::CQVIS_FontMgr() : m_pArrFonts(new CArray<CQVIS_Font*, CQVIS_Font*>) {}

CQVIS_FontMgr::~CQVIS_FontMgr() {
  Clear();
  delete m_pArrFonts;
}

CFont* CQVIS_FontMgr::Find(const CString& face, int height, int escapement, char italic,
                           char underline, long weight, char strikeOut) const {
  const INT_PTR n = m_pArrFonts->GetSize();
  for (INT_PTR i = 0; i < n; ++i) {
    CQVIS_Font* font = m_pArrFonts->GetAt(i);
    if (font->IsSame(face, height, escapement, italic, underline, weight, strikeOut)) {
      return font->m_pFont;
    }
  }
  return nullptr;
}

CFont* CQVIS_FontMgr::CreateFontA(const CString& face, int height, int escapement, char italic,
                                  char underline, long weight, char strikeOut) {
  const INT_PTR n = m_pArrFonts->GetSize();
  for (INT_PTR i = 0; i < n; ++i) {
    CQVIS_Font* font = m_pArrFonts->GetAt(i);
    if (font->IsSame(face, height, escapement, italic, underline, weight, strikeOut)) {
      last_use_[static_cast<size_t>(i)] = ++clock_;
      return font->m_pFont;
    }
  }
  auto record = std::make_unique<CQVIS_Font>();
  CFont* font = record->CreateFontA(face, height, escapement, italic, underline, weight, strikeOut);
  MakeRoom();
  last_use_.reserve(last_use_.size() + 1);  // so that the push below cannot throw
  m_pArrFonts->Add(record.get());
  record.release();  // the list owns it now
  last_use_.push_back(++clock_);
  return font;
}

void CQVIS_FontMgr::MakeRoom() {
  while (m_pArrFonts->GetSize() >= kCapacity) {
    INT_PTR oldest = -1;
    for (INT_PTR i = 0; i < m_pArrFonts->GetSize(); ++i) {
      if (Selected(m_pArrFonts->GetAt(i)->m_pFont)) continue;
      if (oldest < 0 || last_use_[static_cast<size_t>(i)] < last_use_[static_cast<size_t>(oldest)]) {
        oldest = i;
      }
    }
    if (oldest < 0) return;  // every font is selected: grow
    delete m_pArrFonts->GetAt(oldest);
    m_pArrFonts->RemoveAt(oldest);
    last_use_.erase(last_use_.begin() + oldest);
  }
}

void CQVIS_FontMgr::Clear() {
  const INT_PTR n = m_pArrFonts->GetSize();
  for (INT_PTR i = 0; i < n; ++i) delete m_pArrFonts->GetAt(i);
  m_pArrFonts->RemoveAll();
  m_pArrFonts->FreeExtra();
  last_use_.clear();
}

int CQVIS_FontMgr::GetCount() const { return static_cast<int>(m_pArrFonts->GetSize()); }

CQVIS_Font* CQVIS_FontMgr::GetAt(int i) const {
  if (i < 0 || i >= GetCount()) return nullptr;
  return m_pArrFonts->GetAt(i);
}
