// Placeholders for the text, metafile and PNG calls until their real versions land; each draws
// nothing and reports failure. Owner: gditext (deletes an entry when it implements it).
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {


HENHMETAFILE GetEnhMetaFileA(const char*) { return nullptr; }
HENHMETAFILE SetEnhMetaFileBits(UINT, const BYTE*) { return nullptr; }
BOOL PlayEnhMetaFile(HDC, HENHMETAFILE, const CRect*) { return 0; }
BOOL DeleteEnhMetaFile(HENHMETAFILE) { return 0; }

}  // namespace qvis::gdi
