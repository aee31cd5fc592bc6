// The design file: the design record and the records it embeds, written and read through a
// binary archive (raw little-endian values, no header of its own).
#include "qvis/compat/archive.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"

namespace {
// Buffer size of the archives over a design file.
constexpr int kArchiveBuffer = 4096;
}  // namespace

void CQVIS_Design::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << 1 << m_nUnit << m_nCurrentLayerID;
  } else {
    int version = 0;
    ar >> version;
    // A record older than the first version holds nothing more we can read.
    if (version < 1) return;
    ar >> m_nUnit >> m_nCurrentLayerID;
  }
  m_MaxRegion.Serialize(ar);
  if (m_pSurface != nullptr) m_pSurface->Serialize(ar);
  if (m_pGridSnapMgr != nullptr) m_pGridSnapMgr->Serialize(ar);
  if (m_pCursorMgr != nullptr) m_pCursorMgr->Serialize(ar);
}

int CQVIS_Design::SaveToFile(CString path) {
  CFile file(path, CFile::modeCreate | CFile::modeWrite);
  CArchive ar(&file, CArchive::store, kArchiveBuffer);
  Serialize(ar);
  ar.Close();
  file.Close();
  return 1;
}

int CQVIS_Design::LoadFromFile(CString path) {
  Clear();
  m_strFileName = path;
  CFile file(path, CFile::modeRead);
  CArchive ar(&file, CArchive::load, kArchiveBuffer);
  Serialize(ar);
  ar.Close();
  file.Close();
  return 1;
}
