// Tests of the design file: the byte layout written by hand from the record tables, round trips,
// old versions, and damaged, truncated and missing files.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "qvis/compat/archive.h"
#include "qvis/compat/exceptions.h"
#include "qvis/compat/failing_writes_test_support.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"

namespace {

// Little-endian byte writer for the expected file images.
class Bytes {
 public:
  Bytes& I32(std::int32_t v) { return Raw(&v, 4); }
  Bytes& U32(std::uint32_t v) { return Raw(&v, 4); }
  Bytes& F64(double v) { return Raw(&v, 8); }
  Bytes& B8(bool v) {
    data.push_back(v ? 1 : 0);
    return *this;
  }
  std::vector<std::uint8_t> data;

 private:
  Bytes& Raw(const void* p, size_t n) {
    // The format is little-endian; so is every machine we build on.
    const auto* b = static_cast<const std::uint8_t*>(p);
    data.insert(data.end(), b, b + n);
    return *this;
  }
};

// Files go to a directory of this process's own, so that test runs side by side never meet.
std::string TempPath(const std::string& name) {
  static const std::string dir = [] {
    std::string d = testing::TempDir() + "qvis_design_file_test_" + std::to_string(::getpid());
    std::filesystem::create_directories(d);
    return d;
  }();
  return dir + "/" + name;
}

std::vector<std::uint8_t> ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}

void WriteAll(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

// A design with a non-default value in every field the file holds that has a setter.
void Customise(CQVIS_Design& d) {
  d.SetUnit(2);
  d.m_nCurrentLayerID = 7;
  d.m_MaxRegion.Put(-1.5, 2.25);
  d.m_MaxRegion.Put(30.0, 40.5);
  d.m_pSurface->SetBkColor(0x00112233);
  d.m_pSurface->SetTextSizeUnit(2.5);
  CQVIS_Coords* c = d.m_pCoords;
  c->m_nUnit = 1;
  c->m_dZoom = 3.5;
  c->m_dViewX = -12.0;
  c->m_dViewY = 8.125;
  c->m_dGridX = 5.0;
  c->m_dGridY = 6.0;
  c->m_dSnapX = 0.5;
  c->m_dSnapY = 0.25;
  c->m_dReserved1 = 11.0;
  c->m_dReserved2 = 12.0;
  c->m_bSnap = 0;
  CQVIS_GridSnapMgr* g = d.m_pGridSnapMgr;
  g->SetGridColor(0x000A0B0C);
  g->SetSnapColor(0x00010203);
  g->SetOriginColor(0x00FF0000);
  g->SetShowGrid(0);
  g->SetShowSnap(1);
  g->SetGridStyle(1);
  g->SetShowOrigin(0);
  CQVIS_CursorMgr* k = d.m_pCursorMgr;
  k->ExtCrossOff();
  k->ExtXCrossOn();
  k->SetSize(800.0, 600.0);
  k->SetColor(0x0000FF00);
}

std::vector<std::uint8_t> CustomisedImage() {
  Bytes b;
  b.I32(1).I32(2).I32(7);                                                   // design
  b.I32(1).F64(-1.5).F64(2.25).F64(30.0).F64(40.5).I32(1);                  // extent
  b.I32(1).U32(0x00112233).F64(2.5);                                        // surface
  b.I32(1).I32(1).F64(3.5).F64(-12.0).F64(8.125).F64(5.0).F64(6.0);         // view ...
  b.F64(0.5).F64(0.25).F64(11.0).F64(12.0).I32(0);                          // ... view
  b.I32(1).U32(0x000A0B0C).U32(0x00010203).U32(0x00FF0000);                 // grid/snap
  b.I32(0).I32(1).I32(1).I32(0);
  b.I32(1).I32(0).I32(1).B8(true).B8(false).F64(0.0).F64(0.0);              // cursor
  b.F64(800.0).F64(600.0).I32(0).I32(0).U32(0x0000FF00);
  return b.data;
}

TEST(DesignFileTest, NewDesignIs242Bytes) {
  CQVIS_Design d;
  const std::string path = TempPath("new_design.dat");
  EXPECT_EQ(d.SaveToFile(path.c_str()), 1);
  const std::vector<std::uint8_t> bytes = ReadAll(path);
  ASSERT_EQ(bytes.size(), 242u);
  // Spot checks of defaults at their offsets: view zoom at 12 + 40 + 16 + 8, grid colour
  // right after the 152 bytes of design, extent and surface, cursor size at 184 + 30.
  double zoom = 0;
  std::memcpy(&zoom, &bytes[76], 8);
  EXPECT_EQ(zoom, 10.0);
  std::uint32_t grid_colour = 0;
  std::memcpy(&grid_colour, &bytes[156], 4);
  EXPECT_EQ(grid_colour, 0x00C8C8C8u);
  double size_x = 0;
  std::memcpy(&size_x, &bytes[214], 8);
  EXPECT_EQ(size_x, 3000.0);
}

TEST(DesignFileTest, WritesTheRecordsByteForByte) {
  CQVIS_Design d;
  Customise(d);
  const std::string path = TempPath("custom.dat");
  d.SaveToFile(path.c_str());
  EXPECT_EQ(ReadAll(path), CustomisedImage());
}

TEST(DesignFileTest, ReadsAHandWrittenFile) {
  const std::string path = TempPath("hand.dat");
  WriteAll(path, CustomisedImage());
  CQVIS_Design expected;
  Customise(expected);
  CQVIS_Design d;
  EXPECT_EQ(d.LoadFromFile(path.c_str()), 1);
  EXPECT_STREQ(d.m_strFileName.GetString(), path.c_str());
  EXPECT_TRUE(d == expected);
  EXPECT_TRUE(*d.m_pSurface == *expected.m_pSurface);
  EXPECT_TRUE(*d.m_pCoords == *expected.m_pCoords);
  EXPECT_TRUE(*d.m_pGridSnapMgr == *expected.m_pGridSnapMgr);
  EXPECT_TRUE(*d.m_pCursorMgr == *expected.m_pCursorMgr);
  EXPECT_EQ(d.m_pCoords->m_dViewY, 8.125);
  EXPECT_EQ(d.m_pGridSnapMgr->GetGridStyle(), 1);
}

TEST(DesignFileTest, RoundTripKeepsEqualityAndScale) {
  CQVIS_Design a;
  Customise(a);
  const std::string path = TempPath("round.dat");
  a.SaveToFile(path.c_str());
  CQVIS_Design b;
  b.m_pCoords->m_dScale = 2.0;  // not in the file: a loaded view keeps its own scale
  b.LoadFromFile(path.c_str());
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  EXPECT_EQ(b.m_pCoords->m_dScale, 2.0);
  b.SaveToFile(path.c_str());
  EXPECT_EQ(ReadAll(path), CustomisedImage());
}

TEST(DesignFileTest, VersionZeroLoadsNothingButClearAndTheName) {
  std::vector<std::uint8_t> image = CustomisedImage();
  image[0] = 0;  // design version 0
  const std::string path = TempPath("v0.dat");
  WriteAll(path, image);
  CQVIS_Design d;
  d.m_nCurrentLayerID = 9;
  d.m_pCoords->m_dZoom = 4.0;
  d.LoadFromFile(path.c_str());
  EXPECT_EQ(d.GetCurrentLayerID(), 0);  // Clear
  EXPECT_EQ(d.GetUnit(), 0);
  EXPECT_EQ(d.m_pCoords->m_dZoom, 4.0);
  EXPECT_FALSE(d.m_MaxRegion.m_bValid);
  EXPECT_STREQ(d.m_strFileName.GetString(), path.c_str());
}

TEST(DesignFileTest, EveryTruncationRaisesEndOfFile) {
  const std::vector<std::uint8_t> image = CustomisedImage();
  for (size_t n = 0; n < image.size(); ++n) {
    qvis::MemFile file(image.data(), n);
    CArchive ar(&file, CArchive::load);
    CQVIS_Design d;
    try {
      d.Serialize(ar);
      ADD_FAILURE() << "no exception at length " << n;
    } catch (const CArchiveException& e) {
      EXPECT_EQ(e.m_cause, CArchiveException::endOfFile) << n;
    }
  }
}

TEST(DesignFileTest, RandomBytesNeverCrash) {
  std::mt19937 rng(1234);
  std::uniform_int_distribution<int> byte(0, 255);
  std::uniform_int_distribution<size_t> length(0, 300);
  for (int i = 0; i < 300; ++i) {
    std::vector<std::uint8_t> bytes(length(rng));
    for (auto& b : bytes) b = static_cast<std::uint8_t>(byte(rng));
    if (i % 2 == 0 && bytes.size() >= 4) bytes[0] = 1, bytes[1] = bytes[2] = bytes[3] = 0;
    qvis::MemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    CQVIS_Design d;
    try {
      d.Serialize(ar);
      EXPECT_GE(bytes.size(), 4u);
    } catch (const CArchiveException& e) {
      // Cut off (end of file) or a value no design can hold (generic), never anything else.
      EXPECT_TRUE(e.m_cause == CArchiveException::endOfFile ||
                  e.m_cause == CArchiveException::genericException)
          << e.what();
    }
  }
}

TEST(DesignFileTest, MissingFileRaisesFileExceptionWithThePath) {
  const std::string path = TempPath("no/such/dir/design.dat");
  CQVIS_Design d;
  try {
    d.LoadFromFile(path.c_str());
    FAIL() << "no exception";
  } catch (const CFileException& e) {
    EXPECT_STREQ(e.m_strFileName.GetString(), path.c_str());
  }
  EXPECT_THROW(d.SaveToFile(path.c_str()), CFileException);
}

// A save that hits the file-size limit part-way throws and leaves the old design file intact
// (it used to report success over a file truncated to what fitted).
TEST(DesignFileTest, FailedSaveKeepsTheOldFileAndThrows) {
  const std::string path = TempPath("limited.dat");
  CQVIS_Design old_design;
  Customise(old_design);
  old_design.SaveToFile(path.c_str());
  const std::vector<std::uint8_t> before = ReadAll(path);
  CQVIS_Design d;
  {
#ifdef _WIN32
    // Windows has no file-size limit; it refuses to replace a read-only file, which fails the
    // save at its last step, after every byte was written.
    qvis::testing_support::MakeReadOnly(path);
    const int expected_cause = CFileException::accessDenied;
#else
    qvis::testing_support::FileSizeLimit limit(100);  // the file needs 242 bytes
    ASSERT_TRUE(limit.active());
    const int expected_cause = CFileException::diskFull;
#endif
    try {
      d.SaveToFile(path.c_str());
      ADD_FAILURE() << "a save that could not write reported success";
    } catch (const CFileException& e) {
      EXPECT_EQ(e.m_cause, expected_cause) << e.what();
      EXPECT_STREQ(e.m_strFileName.GetString(), path.c_str());
    }
  }
#ifdef _WIN32
  qvis::testing_support::MakeReadOnly(path, false);
#endif
  EXPECT_EQ(ReadAll(path), before);
  const auto entries = qvis::testing_support::FolderEntries(
      std::filesystem::path(path).parent_path().string());
  for (const std::string& name : entries) {
    EXPECT_EQ(name.find(".tmp-"), std::string::npos) << "temporary file left: " << name;
  }
#ifndef _WIN32
  EXPECT_THROW(d.SaveToFile("/dev/full"), CFileException);
#endif
}

// Hostile values at their offsets in CustomisedImage: each load throws, names the field and its
// byte offset, and leaves the design byte-for-byte as it was (saved before and after).
TEST(DesignFileTest, FailedLoadLeavesTheDesignExactlyAsItWas) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  struct Damage {
    const char* what;
    size_t at;
    std::vector<std::uint8_t> bytes;
  };
  auto f64 = [](double v) {
    std::vector<std::uint8_t> b(8);
    std::memcpy(b.data(), &v, 8);
    return b;
  };
  auto i32 = [](std::int32_t v) {
    std::vector<std::uint8_t> b(4);
    std::memcpy(b.data(), &v, 4);
    return b;
  };
  const std::vector<Damage> damages = {
      {"design unit", 4, i32(99)},   {"view unit", 72, i32(-1)},
      {"view zoom", 76, f64(0.0)},   {"view zoom", 76, f64(-2.0)},
      {"view zoom", 76, f64(nan)},   {"view zoom", 76, f64(inf)},
      {"view zoom", 76, f64(1e300)}, {"view x", 84, f64(inf)},
      {"grid x", 100, f64(0.0)},     {"grid y", 108, f64(nan)},
      {"snap x", 116, f64(-0.5)},    {"snap y", 124, f64(1e300)},
      {"snap on", 148, i32(2)},      {"grid style", 176, i32(5)},
      {"extent min x", 16, f64(nan)}, {"cursor width", 214, f64(-1.0)},
      {"text size unit", 60, f64(inf)},
  };
  CQVIS_Design d;
  Customise(d);
  d.m_pCoords->m_dZoom = 7.0;  // different from the file's, so a half-load would show
  d.m_strFileName = "kept.dat";
  const std::string before_path = TempPath("before.dat");
  d.SaveToFile(before_path.c_str());
  const std::vector<std::uint8_t> before = ReadAll(before_path);
  for (const Damage& damage : damages) {
    std::vector<std::uint8_t> image = CustomisedImage();
    std::copy(damage.bytes.begin(), damage.bytes.end(), image.begin() + damage.at);
    const std::string path = TempPath("damaged.dat");
    WriteAll(path, image);
    try {
      d.LoadFromFile(path.c_str());
      ADD_FAILURE() << damage.what << " accepted";
    } catch (const CArchiveException& e) {
      const std::string msg = e.what();
      EXPECT_NE(msg.find(std::string("'") + damage.what + "' at byte " +
                         std::to_string(damage.at)),
                std::string::npos)
          << msg;
    }
    const std::string after_path = TempPath("after.dat");
    d.SaveToFile(after_path.c_str());
    EXPECT_EQ(ReadAll(after_path), before) << damage.what;
    EXPECT_STREQ(d.m_strFileName.GetString(), "kept.dat") << damage.what;
  }
  // Every truncation, through the file path, too.
  const std::vector<std::uint8_t> image = CustomisedImage();
  for (size_t n = 4; n < image.size(); n += 7) {
    const std::string path = TempPath("short.dat");
    WriteAll(path, std::vector<std::uint8_t>(image.begin(), image.begin() + n));
    EXPECT_THROW(d.LoadFromFile(path.c_str()), CArchiveException) << n;
    const std::string after_path = TempPath("after.dat");
    d.SaveToFile(after_path.c_str());
    ASSERT_EQ(ReadAll(after_path), before) << "length " << n;
  }
}

}  // namespace
