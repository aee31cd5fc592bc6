// Placeholders for the text, metafile and PNG calls until their real versions land; each draws
// nothing and reports failure. Owner: gditext (deletes an entry when it implements it).
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {

BOOL TextOutA(HDC, int, int, const char*, int) { return 0; }
BOOL ExtTextOutA(HDC, int, int, UINT, const CRect*, const char*, UINT, const int*) { return 0; }
int DrawTextA(HDC, const char*, int, CRect*, UINT) { return 0; }
BOOL GetTextExtentPointA(HDC, const char*, int, CSize*) { return 0; }
BOOL GetTextExtentPoint32A(HDC, const char*, int, CSize*) { return 0; }

HENHMETAFILE GetEnhMetaFileA(const char*) { return nullptr; }
HENHMETAFILE SetEnhMetaFileBits(UINT, const BYTE*) { return nullptr; }
BOOL PlayEnhMetaFile(HDC, HENHMETAFILE, const CRect*) { return 0; }
BOOL DeleteEnhMetaFile(HENHMETAFILE) { return 0; }

}  // namespace qvis::gdi
