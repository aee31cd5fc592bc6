// Tests of CQVIS_MaxRegionInfo and CQVIS_MaxRegionInfoDB: growing, the
// transforms, overlap tests, merging and the archive records.
#include "qvis/design/max_region_info.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/coords/unit_mgr.h"
#include "qvis/geometry/value_types.h"

// Every owning-array instance the library exports compiles in full.
template class CExPtrArray<CArrayPointD*, CArrayPointD*>;
template class CExPtrArray<CRectD*, CRectD*>;
template class CExPtrArray<CPoint3D*, CPoint3D*>;
template class CExPtrArray<DPoint*, DPoint*>;

namespace {

const double kNaN = std::nan("");

using Box = std::array<double, 4>;  // min x, min y, max x, max y

CQVIS_MaxRegionInfo Region(Box b) {
  CQVIS_MaxRegionInfo r;
  r.Put(b[0], b[1]);
  r.Put(b[2], b[3]);
  return r;
}

Box BoxOf(const CQVIS_MaxRegionInfo& r) {
  return {r.m_dMinX, r.m_dMinY, r.m_dMaxX, r.m_dMaxY};
}

// A list whose regions the test owns: at the end it frees every region it
// handed to the list and every region the list created, whether or not a
// merge dropped it from the list.
class RegionListTest : public ::testing::Test {
 protected:
  ~RegionListTest() override {
    for (CQVIS_MaxRegionInfo* r : db_) {
      if (r != nullptr && std::find(owned_.begin(), owned_.end(), r) == owned_.end()) {
        owned_.push_back(r);
      }
    }
    for (CQVIS_MaxRegionInfo* r : owned_) delete r;
    db_.RemoveAll();
  }
  // Push appends through the array itself (not through Add).
  CQVIS_MaxRegionInfo* Push(Box b) {
    owned_.push_back(new CQVIS_MaxRegionInfo(Region(b)));
    db_.CExPtrArray::Base::Add(owned_.back());
    return owned_.back();
  }
  std::vector<Box> Boxes() const {
    std::vector<Box> out;
    for (const CQVIS_MaxRegionInfo* r : db_) out.push_back(BoxOf(*r));
    return out;
  }
  CQVIS_MaxRegionInfoDB db_;
  std::vector<CQVIS_MaxRegionInfo*> owned_;
};

// --- single region -------------------------------------------------------------

TEST(MaxRegionInfoTest, PutGrowsFromTheFirstPoint) {
  CQVIS_MaxRegionInfo r;
  EXPECT_EQ(r.GetWidth(), 0.0);
  r.Put(3, 4);
  EXPECT_EQ(r.m_bValid, 1);
  EXPECT_EQ(BoxOf(r), (Box{3, 4, 3, 4}));
  r.Put(1, 6);
  EXPECT_EQ(BoxOf(r), (Box{1, 4, 3, 6}));
  EXPECT_EQ(r.GetHeight(), 2.0);
  CQVIS_MaxRegionInfo other;
  r.Put(&other);  // invalid: ignored
  r.Put(nullptr);
  other = Region({-5, 5, 0, 10});
  r.Put(&other);
  EXPECT_EQ(BoxOf(r), (Box{-5, 4, 3, 10}));
  r.Clear();
  EXPECT_EQ(r, CQVIS_MaxRegionInfo());
}

TEST(MaxRegionInfoTest, ExtendAndTransformsDoNotRenormalise) {
  CQVIS_MaxRegionInfo r = Region({0, 0, 10, 20});
  r.ExtendEx(0.1);
  EXPECT_EQ(BoxOf(r), (Box{-1, -2, 11, 22}));
  CQVIS_MaxRegionInfo empty;
  empty.ExtendEx(0.1);  // not valid: unchanged
  EXPECT_EQ(empty, CQVIS_MaxRegionInfo());
  empty.Extend(1);  // applies even when not valid
  EXPECT_EQ(BoxOf(empty), (Box{-1, -1, 1, 1}));
  EXPECT_EQ(empty.GetWidth(), 0.0);
  r = Region({0, 0, 2, 2});
  r.Extend(-3);
  EXPECT_EQ(BoxOf(r), (Box{3, 3, -1, -1}));
  EXPECT_EQ(r.IsInRegion(0, 0), 1);  // the containment test normalises
  r = Region({1, 2, 3, 4});
  r.Multi(2, -1);
  r.Move(1, 10);
  EXPECT_EQ(BoxOf(r), (Box{3, 8, 7, 6}));
  r.m_dMinX = 14, r.m_dMinY = -15, r.m_dMaxX = 15, r.m_dMaxY = -16;
  r.MakeSnap(10);  // +0.5 for v >= 0, -0.4 below
  EXPECT_EQ(BoxOf(r), (Box{10, -10, 20, -20}));
  r = Region({25.4, 2.54, 254, 50.8});
  r.ChangeUnit(UNIT_MM, UNIT_INCH);
  EXPECT_EQ(BoxOf(r), (Box{25.4 / 25.4, 2.54 / 25.4, 254 / 25.4, 50.8 / 25.4}));
  double cx = 0, cy = 0;
  Region({0, 0, 3, 5}).GetCenter(cx, cy);
  EXPECT_EQ(cx, 1.5);
  EXPECT_EQ(cy, 2.5);
}

TEST(MaxRegionInfoTest, OverlapTests) {
  const CQVIS_MaxRegionInfo r = Region({0, 0, 5, 5});
  const struct {
    Box b;
    bool want;
  } rows[] = {
      {{5, 5, 8, 8}, true},        // shared corner
      {{5.01, 0, 8, 5}, false},    // right of it
      {{-3, -3, -0.01, 8}, false}, // left of it
      {{0, 6, 5, 9}, false},       // above
      {{-1, -1, 9, 9}, true},      // around
      {{8, 8, 5, 5}, false},       // corners swapped: not normalised
  };
  for (const auto& row : rows) {
    EXPECT_EQ(r.Overlapped(row.b[0], row.b[1], row.b[2], row.b[3]), row.want) << row.b[0];
  }
  CQVIS_MaxRegionInfo other = Region({6, 6, 8, 8});
  EXPECT_FALSE(r.Overlapped(&other));
  EXPECT_FALSE(r.OverlappedEx(&other, 0.5));
  EXPECT_TRUE(r.OverlappedEx(&other, 1.0));
  EXPECT_FALSE(r.Overlapped(nullptr));
  EXPECT_EQ(r.IsInRegion(5, 0), 1);
  EXPECT_EQ(r.IsInRegion(5.01, 0), 0);
  EXPECT_EQ(r.IsInRegion(kNaN, 0), 0);
}

TEST(MaxRegionInfoTest, EqualityLooksAtTheValidFlagFirst) {
  CQVIS_MaxRegionInfo a = Region({1, 2, 3, 4});
  CQVIS_MaxRegionInfo b(a);
  EXPECT_TRUE(a == b);
  b.m_bValid = 0;  // same corners, different flags
  EXPECT_TRUE(a != b);
  CQVIS_MaxRegionInfo c, d;
  c.m_dMinX = 1;  // two invalid regions compare by coordinates
  EXPECT_FALSE(c == d);
}

// --- list ------------------------------------------------------------------------

TEST_F(RegionListTest, AddStoresANormalisedRegion) {
  db_.Add(1, 1, 1, 1, 0);  // a single point: nothing
  EXPECT_EQ(db_.GetSize(), 0);
  db_.Add(4, 3, 2, 1, 0);
  db_.Add(1, 1, 1, 1, 0.5);  // a point with a margin is a box
  CQVIS_MaxRegionInfo invalid;
  db_.Add(&invalid);
  db_.Add(nullptr);
  CQVIS_MaxRegionInfo given = Region({7, 8, 9, 10});
  db_.Add(&given);
  EXPECT_EQ(Boxes(), (std::vector<Box>{{2, 1, 4, 3}, {0.5, 0.5, 1.5, 1.5}, {7, 8, 9, 10}}));
  EXPECT_NE(db_.GetAt(2), &given);  // a copy; the caller keeps its own
}

TEST_F(RegionListTest, GetMaxRegionAndMergeAll) {
  CQVIS_MaxRegionInfo out = Region({100, 100, 101, 101});
  db_.GetMaxRegion(&out);  // empty list: unchanged
  db_.MergeAll();
  EXPECT_EQ(db_.GetSize(), 0);
  Push({0, 0, 1, 1});
  Push({-5, 2, 3, 4})->m_bValid = 0;  // the regions' flags are not looked at
  Push({10, -3, 12, 1});
  db_.GetMaxRegion(&out);  // out is not cleared first
  EXPECT_EQ(BoxOf(out), (Box{-5, -3, 101, 101}));
  db_.MergeAll();
  EXPECT_EQ(Boxes(), (std::vector<Box>{{-5, -3, 12, 4}}));
  EXPECT_EQ(db_.GetAt(0)->m_bValid, 1);
}

TEST_F(RegionListTest, MergeOverlappedOnlyMergesNeighbours) {
  const struct {
    std::vector<Box> in, out;
  } rows[] = {
      {{{0, 0, 2, 2}, {10, 10, 12, 12}, {1, 1, 3, 3}},
       {{0, 0, 2, 2}, {10, 10, 12, 12}, {1, 1, 3, 3}}},
      {{{0, 0, 2, 2}, {1, 1, 3, 3}, {10, 10, 12, 12}}, {{0, 0, 3, 3}, {10, 10, 12, 12}}},
      // Touching edges count; merging restarts from the front, so a chain
      // collapses into one region.
      {{{0, 0, 1, 1}, {1, 0, 2, 1}, {2, 1, 3, 2}, {3, 2, 4, 3}}, {{0, 0, 4, 3}}},
      {{{0, 0, 1, 1}, {0, 0, kNaN, 1}}, {{0, 0, 1, 1}, {0, 0, kNaN, 1}}},
  };
  for (const auto& row : rows) {
    db_.RemoveAll();
    for (const Box& b : row.in) {
      Push(b)->m_dMaxX = b[2];  // set directly so a NaN edge is kept
    }
    CQVIS_MaxRegionInfo* first = db_.GetAt(0);
    db_.MergeOverlapped();
    const std::vector<Box> got = Boxes();
    ASSERT_EQ(got.size(), row.out.size());
    for (size_t i = 0; i < got.size(); ++i) {
      for (int k = 0; k < 4; ++k) {
        if (std::isnan(row.out[i][k])) continue;
        EXPECT_EQ(got[i][k], row.out[i][k]) << i << "," << k;
      }
    }
    EXPECT_EQ(db_.GetAt(0), first);  // merged into the first of the pair
  }
}

TEST_F(RegionListTest, ListTransformsSkipNullSlots) {
  Push({1, 1, 2, 2});
  db_.CExPtrArray::Base::Add(nullptr);
  Push({14, 14, 16, 16});
  db_.Move(1, 1);
  db_.Multi(2, 2);
  db_.MakeSnap(10);
  db_.ChangeUnit(UNIT_CM, UNIT_MM);
  db_.MergeOverlapped();  // the null slot keeps its neighbours apart
  EXPECT_EQ(db_.GetAt(1), nullptr);
  db_.RemoveNullElement();
  EXPECT_EQ(Boxes(), (std::vector<Box>{{0, 0, 100, 100}, {300, 300, 300, 300}}));
}

TEST_F(RegionListTest, EqualityIsPairwiseByIndexAndClearDoesNotDelete) {
  CQVIS_MaxRegionInfoDB other;
  EXPECT_EQ(db_ == other, 1);
  CQVIS_MaxRegionInfo* r = Push({0, 0, 1, 1});
  Push({5, 5, 6, 6});
  EXPECT_EQ(db_ == other, 0);
  other.Add(5, 5, 6, 6, 0);
  other.Add(0, 0, 1, 1, 0);
  EXPECT_EQ(db_ != other, 1);  // same regions, other order
  other.Reverse();
  EXPECT_EQ(db_ == other, 1);
  other.DeleteAll();
  db_.Release();
  EXPECT_EQ(db_.GetSize(), 0);
  r->Move(1, 1);  // still alive (ASan catches a use after free)
}

// --- archive records ---------------------------------------------------------------

std::vector<std::uint8_t> Bytes(std::initializer_list<std::vector<std::uint8_t>> parts) {
  std::vector<std::uint8_t> out;
  for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

template <class T>
std::vector<std::uint8_t> Raw(T v) {
  std::vector<std::uint8_t> b(sizeof v);
  std::memcpy(b.data(), &v, sizeof v);
  return b;
}

std::vector<std::uint8_t> RegionRecord(Box b, std::int32_t valid, std::int32_t version = 1) {
  return Bytes({Raw(version), Raw(b[0]), Raw(b[1]), Raw(b[2]), Raw(b[3]), Raw(valid)});
}

TEST(MaxRegionInfoTest, RecordIs40BytesAndStopsBelowVersionOne) {
  CQVIS_MaxRegionInfo r = Region({-1.5, 2, 3, 4.25});
  qvis::MemFile f;
  CArchive out(&f, CArchive::store);
  r.Serialize(out);
  out.Close();
  EXPECT_EQ(f.bytes(), RegionRecord({-1.5, 2, 3, 4.25}, 1));

  qvis::MemFile old(Bytes({RegionRecord({1, 2, 3, 4}, 1, 0)}));
  CArchive in(&old, CArchive::load);
  r.Serialize(in);
  EXPECT_EQ(r, Region({-1.5, 2, 3, 4.25}));  // unchanged
  double next = 0;
  in >> next;
  EXPECT_EQ(next, 1.0);  // the reading position is right after the version
}

TEST_F(RegionListTest, ListRecordRoundTripsAndDropsInvalidRegions) {
  Push({0, 0, 1, 1});
  Push({2, 2, 3, 3})->m_bValid = 0;
  Push({4, 4, 5, 6});
  qvis::MemFile f;
  CArchive out(&f, CArchive::store);
  db_.Serialize(out);
  out.Close();
  EXPECT_EQ(f.bytes(), Bytes({Raw<std::uint32_t>(0x80000001u), Raw<std::int64_t>(3),
                              RegionRecord({0, 0, 1, 1}, 1), RegionRecord({2, 2, 3, 3}, 0),
                              RegionRecord({4, 4, 5, 6}, 1)}));
  f.Rewind();
  CArchive in(&f, CArchive::load);
  CQVIS_MaxRegionInfoDB loaded;
  loaded.Add(9, 9, 10, 10, 0);  // loading deletes what the list held
  loaded.Serialize(in);
  ASSERT_EQ(loaded.GetSize(), 2);
  EXPECT_EQ(*loaded.GetAt(0), Region({0, 0, 1, 1}));
  EXPECT_EQ(*loaded.GetAt(1), Region({4, 4, 5, 6}));
  loaded.DeleteAll();
}

TEST(MaxRegionInfoDBTest, ListHeaderVariantsAndDamagedData) {
  const auto wide = Raw<std::uint32_t>(0x80000001u);
  const struct {
    const char* name;
    std::vector<std::uint8_t> bytes;
    int regions;  // -1: CArchiveException (end of file) expected
  } rows[] = {
      {"narrow count", Bytes({Raw<std::uint32_t>(1), Raw<std::int32_t>(1),
                              RegionRecord({0, 0, 2, 2}, 1)}), 1},
      {"negative narrow count", Bytes({Raw<std::uint32_t>(1), Raw<std::int32_t>(-5)}), 0},
      {"other version", Bytes({Raw<std::uint32_t>(0x80000002u)}), 0},
      {"single-point region", Bytes({wide, Raw<std::int64_t>(1),
                                     RegionRecord({1, 1, 1, 1}, 1)}), 0},
      {"element below version 1", Bytes({wide, Raw<std::int64_t>(2), Raw<std::int32_t>(0),
                                         RegionRecord({0, 0, 2, 2}, 1)}), 1},
      {"count 2^62", Bytes({wide, Raw<std::int64_t>(1LL << 62),
                            RegionRecord({0, 0, 2, 2}, 1)}), -1},
      {"empty", {}, -1},
  };
  for (const auto& row : rows) {
    qvis::MemFile f(row.bytes);
    CArchive ar(&f, CArchive::load);
    CQVIS_MaxRegionInfoDB db;
    int got = 0;
    try {
      db.Serialize(ar);
      got = static_cast<int>(db.GetSize());
    } catch (const CArchiveException& e) {
      EXPECT_EQ(e.m_cause, CArchiveException::endOfFile) << row.name;
      got = -1;
    }
    EXPECT_EQ(got, row.regions) << row.name;
    db.DeleteAll();
  }
}

// A short or damaged list never costs the host its regions: the list is exactly as it was.
TEST(MaxRegionInfoDBTest, TruncatedOrDamagedListLeavesTheListAsItWas) {
  const auto full = Bytes({Raw<std::uint32_t>(0x80000001u), Raw<std::int64_t>(2),
                           RegionRecord({0, 0, 2, 2}, 1), RegionRecord({4, 4, 5, 5}, 1)});
  auto check_untouched = [](CQVIS_MaxRegionInfoDB& db, const std::string& what) {
    ASSERT_EQ(db.GetSize(), 1) << what;
    EXPECT_EQ(db[0]->m_dMinX, -7.0) << what;
    EXPECT_EQ(db[0]->m_dMaxY, 9.0) << what;
  };
  for (size_t len = 0; len < full.size(); ++len) {
    qvis::MemFile f(std::vector<std::uint8_t>(full.begin(), full.begin() + len));
    CArchive ar(&f, CArchive::load);
    CQVIS_MaxRegionInfoDB db;
    db.Add(-7.0, -8.0, 6.0, 9.0, 0.0);
    try {
      db.Serialize(ar);
      ADD_FAILURE() << "no exception at length " << len;
    } catch (const CArchiveException& e) {
      EXPECT_EQ(e.m_cause, CArchiveException::endOfFile) << len;
      EXPECT_NE(std::string(e.what()).find("byte"), std::string::npos) << e.what();
    }
    check_untouched(db, "length " + std::to_string(len));
    db.DeleteAll();
  }
  // A corner that is not finite, or a valid flag that is neither 0 nor 1, in the second record.
  for (int damage = 0; damage < 2; ++damage) {
    std::vector<std::uint8_t> bytes = full;
    const size_t second = 12 + 40;
    if (damage == 0) {
      const double nan = std::numeric_limits<double>::quiet_NaN();
      std::memcpy(&bytes[second + 4 + 8], &nan, 8);
    } else {
      bytes[second + 36] = 7;
    }
    qvis::MemFile f(bytes);
    CArchive ar(&f, CArchive::load);
    CQVIS_MaxRegionInfoDB db;
    db.Add(-7.0, -8.0, 6.0, 9.0, 0.0);
    try {
      db.Serialize(ar);
      ADD_FAILURE() << "damage " << damage << " was accepted";
    } catch (const CArchiveException& e) {
      EXPECT_EQ(e.m_cause, CArchiveException::genericException);
      EXPECT_NE(std::string(e.what()).find("at byte " + std::to_string(second + (damage ? 36 : 4))),
                std::string::npos)
          << e.what();
    }
    check_untouched(db, "damage " + std::to_string(damage));
    db.DeleteAll();
  }
}

}  // namespace
