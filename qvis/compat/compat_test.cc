// Tests of the compat value types, string, array and archive.
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/compat/archive.h"
#include "qvis/compat/carray.h"
#include "qvis/compat/cpoint.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/message_box.h"
#include "qvis/compat/redraw.h"
#include "qvis/compat/win32_names.h"

namespace {

TEST(CStringTest, FormatAndCompare) {
  CString s;
  s.Format("%s-%03d %.2f", "PAD", 7, 1.5);
  EXPECT_EQ(s, "PAD-007 1.50");
  EXPECT_EQ(s.GetLength(), 12);
  EXPECT_STREQ(s.GetString(), "PAD-007 1.50");
  EXPECT_TRUE(CString().IsEmpty());
  EXPECT_TRUE(CString("a") < CString("b"));
  EXPECT_NE(CString("Arial"), CString("arial"));
  // Formatting longer than any fixed buffer must not truncate.
  s.Format("%0500d", 1);
  EXPECT_EQ(s.GetLength(), 500);
}

TEST(CStringTest, SubstringsClampOutOfRangeArguments) {
  const CString s("R12");
  EXPECT_EQ(s.Left(1), "R");
  EXPECT_EQ(s.Left(99), "R12");
  EXPECT_EQ(s.Left(-3), "");
  EXPECT_EQ(s.Right(2), "12");
  EXPECT_EQ(s.Mid(1), "12");
  EXPECT_EQ(s.Mid(5, 2), "");
  EXPECT_EQ(s.Mid(-1, 2), "R1");
  EXPECT_EQ(s.GetAt(3), '\0');
  EXPECT_EQ(s.Find('1'), 1);
  EXPECT_EQ(s.Find("2", 3), -1);
  EXPECT_EQ(s.Find("R", 7), -1);
}

TEST(CStringTest, BufferAndEdits) {
  CString s("abc");
  char* p = s.GetBuffer(10);
  p[1] = '\0';
  s.ReleaseBuffer();
  EXPECT_EQ(s, "a");
  CString t("  x y  ");
  EXPECT_EQ(t.Trim(), "x y");
  EXPECT_EQ(CString("Net1 Net1").Replace("Net", "N"), 2);
  CString u("mixed");
  EXPECT_EQ(u.MakeUpper(), "MIXED");
}

TEST(CArrayTest, GrowInsertRemove) {
  CArray<int, int> a;
  for (int i = 0; i < 5; ++i) EXPECT_EQ(a.Add(i), i);
  a.InsertAt(1, 42, 2);
  ASSERT_EQ(a.GetSize(), 7);
  EXPECT_EQ(a[1], 42);
  EXPECT_EQ(a[2], 42);
  EXPECT_EQ(a[3], 1);
  a.RemoveAt(1, 2);
  EXPECT_EQ(a.GetSize(), 5);
  EXPECT_EQ(a.GetUpperBound(), 4);
  a.SetAtGrow(9, 7);
  EXPECT_EQ(a.GetSize(), 10);
  EXPECT_EQ(a[8], 0);
  a.Append(a);
  EXPECT_EQ(a.GetSize(), 20);
}

TEST(CArrayTest, OutOfRangeThrowsInvalidArgument) {
  CArray<int, int> a;
  a.Add(1);
  EXPECT_THROW(a.RemoveAt(1), CInvalidArgException);
  EXPECT_THROW(a.RemoveAt(-1), CInvalidArgException);
  EXPECT_THROW(a.RemoveAt(0, 2), CInvalidArgException);
  EXPECT_THROW(a.RemoveAt(0, std::numeric_limits<INT_PTR>::max()), CInvalidArgException);
  EXPECT_THROW(a.GetAt(1), CInvalidArgException);
  EXPECT_THROW(a.SetSize(-1), CInvalidArgException);
  EXPECT_EQ(a.GetSize(), 1);
  a.RemoveAt(0, 1);
  EXPECT_TRUE(a.IsEmpty());
}

TEST(CRectTest, NormaliseAndContain) {
  CRect r(10, 20, 0, 5);
  EXPECT_TRUE(r.IsRectEmpty());
  r.NormalizeRect();
  EXPECT_EQ(r, CRect(0, 5, 10, 20));
  EXPECT_TRUE(r.PtInRect(CPoint(0, 5)));
  EXPECT_FALSE(r.PtInRect(CPoint(10, 5)));
  EXPECT_FALSE(r.PtInRect(CPoint(0, 20)));
  EXPECT_EQ(r.Width(), 10);
  EXPECT_EQ(r.CenterPoint(), CPoint(5, 12));
}

// Every value goes out as its raw little-endian bytes with no padding.
TEST(CArchiveTest, WritesRawLittleEndianWithoutPadding) {
  qvis::MemFile f;
  {
    CArchive ar(&f, CArchive::store);
    ar << 1 << static_cast<DWORD>(0x80000001u) << 1.0 << true << static_cast<long long>(2)
       << static_cast<BYTE>(0xAB) << static_cast<WORD>(0x1234) << 0.5f;
    ar.Close();
  }
  const std::vector<std::uint8_t> want = {
      1, 0, 0, 0,                                      // int
      0x01, 0, 0, 0x80,                                // DWORD
      0, 0, 0, 0, 0, 0, 0xF0, 0x3F,                    // double 1.0
      1,                                               // bool
      2, 0, 0, 0, 0, 0, 0, 0,                          // 64-bit count
      0xAB,                                            // BYTE
      0x34, 0x12,                                      // WORD
      0, 0, 0, 0x3F};                                  // float 0.5
  EXPECT_EQ(f.bytes(), want);

  f.Rewind();
  CArchive in(&f, CArchive::load);
  int i = 0;
  DWORD d = 0;
  double x = 0;
  bool b = false;
  long long n = 0;
  BYTE by = 0;
  WORD w = 0;
  float fl = 0;
  in >> i >> d >> x >> b >> n >> by >> w >> fl;
  EXPECT_EQ(i, 1);
  EXPECT_EQ(d, 0x80000001u);
  EXPECT_EQ(x, 1.0);
  EXPECT_TRUE(b);
  EXPECT_EQ(n, 2);
  EXPECT_EQ(by, 0xAB);
  EXPECT_EQ(w, 0x1234);
  EXPECT_EQ(fl, 0.5f);
  EXPECT_THROW(in >> i, CArchiveException);
}

TEST(CArchiveTest, TruncatedStreamRaisesEndOfFile) {
  qvis::MemFile f(std::vector<std::uint8_t>{1, 2, 3});
  CArchive ar(&f, CArchive::load);
  int v = 0;
  try {
    ar >> v;
    FAIL() << "short read did not throw";
  } catch (const CArchiveException& e) {
    EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
  }
}

TEST(CArchiveTest, WrongDirectionRaisesReadOnlyOrWriteOnly) {
  qvis::MemFile f;
  CArchive store(&f, CArchive::store);
  int v = 0;
  try {
    store >> v;
    FAIL();
  } catch (const CArchiveException& e) {
    EXPECT_EQ(e.m_cause, CArchiveException::writeOnly);
  }
  qvis::MemFile g(std::vector<std::uint8_t>(8, 0));
  CArchive load(&g, CArchive::load);
  try {
    load << v;
    FAIL();
  } catch (const CArchiveException& e) {
    EXPECT_EQ(e.m_cause, CArchiveException::readOnly);
  }
}

// Values that straddle the 4096-byte buffer boundary survive a round trip through a real file.
TEST(CArchiveTest, FileRoundTripAcrossBufferBoundaries) {
  const std::string path = ::testing::TempDir() + "/qvis_archive_roundtrip.bin";
  {
    CFile f(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive ar(&f, CArchive::store, 4096);
    ar << static_cast<BYTE>(7);  // shifts every double off the buffer's alignment
    for (int i = 0; i < 2000; ++i) ar << (i * 0.25);
    ar.Close();
    f.Close();
  }
  CFile f(path.c_str(), CFile::modeRead);
  EXPECT_EQ(f.GetLength(), 1u + 2000u * 8u);
  CArchive ar(&f, CArchive::load);
  BYTE first = 0;
  ar >> first;
  EXPECT_EQ(first, 7);
  for (int i = 0; i < 2000; ++i) {
    double v = -1;
    ar >> v;
    ASSERT_EQ(v, i * 0.25) << i;
  }
  double extra;
  EXPECT_THROW(ar >> extra, CArchiveException);
  std::remove(path.c_str());
}

TEST(CFileTest, MissingFileRaisesFileExceptionWithPath) {
  const std::string path = ::testing::TempDir() + "/qvis-no-such-dir/none.qvs";
  try {
    CFile f(path.c_str(), CFile::modeRead);
    FAIL() << "opened a missing file";
  } catch (const CFileException& e) {
    EXPECT_EQ(e.m_cause, CFileException::fileNotFound);
    EXPECT_EQ(e.m_strFileName, path.c_str());
    EXPECT_NE(std::string(e.what()).find(path), std::string::npos);
  }
}

class FakeKeys : public qvis::KeyStateSource {
 public:
  short KeyState(int vk) const override { return vk == VK_SHIFT ? short(0x8000) : 0; }
  short AsyncKeyState(int vk) const override { return vk == VK_LBUTTON ? short(0x8000) : 0; }
};

TEST(PlatformHooksTest, KeyStateAsksTheGivenSourceAndMessageBoxTheHook) {
  EXPECT_EQ(qvis::GetKeyState(nullptr, VK_SHIFT), 0);
  EXPECT_EQ(qvis::GetAsyncKeyState(nullptr, VK_LBUTTON), 0);
  FakeKeys keys;
  EXPECT_NE(qvis::GetKeyState(&keys, VK_SHIFT) & 0x8000, 0);
  EXPECT_EQ(qvis::GetKeyState(&keys, VK_CONTROL), 0);
  EXPECT_NE(qvis::GetAsyncKeyState(&keys, VK_LBUTTON) & 0x8000, 0);
  EXPECT_EQ(qvis::GetAsyncKeyState(&keys, VK_SHIFT), 0);

  int redraws = 0;
  const qvis::RedrawHandler redraw = [&](qvis::HWND, UINT flags) {
    redraws += static_cast<int>(flags);
    return TRUE;
  };
  const qvis::HWND some_window = reinterpret_cast<qvis::HWND>(&keys);  // compared with null only
  EXPECT_EQ(qvis::RedrawWindow(redraw, nullptr, 1), 0);
  EXPECT_EQ(qvis::RedrawWindow(qvis::RedrawHandler(), some_window, 1), 0);
  EXPECT_EQ(qvis::RedrawWindow(redraw, some_window, 0x105), TRUE);
  EXPECT_EQ(redraws, 0x105);

  std::string seen;
  auto prev = qvis::SetMessageBoxHandler([&](const char* t) { seen = t; return IDOK; });
  EXPECT_EQ(qvis::ShowMessageBox("hello"), IDOK);
  EXPECT_EQ(seen, "hello");
  qvis::SetMessageBoxHandler(prev);
}

}  // namespace
