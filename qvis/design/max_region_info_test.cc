// Tests of CQVIS_MaxRegionInfo and CQVIS_MaxRegionInfoDB: growing, the
// transforms, overlap tests, merging and the archive records.
#include "qvis/design/max_region_info.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
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

struct Box {
  double x1, y1, x2, y2;
};

CQVIS_MaxRegionInfo Region(Box b) {
  CQVIS_MaxRegionInfo r;
  r.Put(b.x1, b.y1);
  r.Put(b.x2, b.y2);
  return r;
}

void ExpectBox(const CQVIS_MaxRegionInfo& r, Box b, const char* what = "") {
  EXPECT_EQ(r.m_dMinX, b.x1) << what;
  EXPECT_EQ(r.m_dMinY, b.y1) << what;
  EXPECT_EQ(r.m_dMaxX, b.x2) << what;
  EXPECT_EQ(r.m_dMaxY, b.y2) << what;
}

// A list whose regions the test owns: it frees every region it ever handed
// to the list, and every region the list created, whether or not a merge
// dropped it from the list.
class RegionListTest : public ::testing::Test {
 protected:
  ~RegionListTest() override {
    Collect();
    for (CQVIS_MaxRegionInfo* r : owned_) delete r;
    db_.RemoveAll();
  }
  // Appends a region through the array itself (not through Add).
  CQVIS_MaxRegionInfo* Push(Box b) {
    auto* r = new CQVIS_MaxRegionInfo(Region(b));
    db_.CExPtrArray::Base::Add(r);
    owned_.push_back(r);
    return r;
  }
  // Records the regions the list holds now, so they are freed at the end.
  void Collect() {
    for (CQVIS_MaxRegionInfo* r : db_) {
      bool known = false;
      for (CQVIS_MaxRegionInfo* o : owned_) known = known || o == r;
      if (!known && r != nullptr) owned_.push_back(r);
    }
  }
  std::vector<Box> Boxes() const {
    std::vector<Box> out;
    for (const CQVIS_MaxRegionInfo* r : db_) {
      out.push_back({r->m_dMinX, r->m_dMinY, r->m_dMaxX, r->m_dMaxY});
    }
    return out;
  }
  void ExpectBoxes(const std::vector<Box>& want) {
    const std::vector<Box> got = Boxes();
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < want.size(); ++i) {
      EXPECT_EQ(got[i].x1, want[i].x1) << i;
      EXPECT_EQ(got[i].y1, want[i].y1) << i;
      EXPECT_EQ(got[i].x2, want[i].x2) << i;
      EXPECT_EQ(got[i].y2, want[i].y2) << i;
    }
  }
  CQVIS_MaxRegionInfoDB db_;
  std::vector<CQVIS_MaxRegionInfo*> owned_;
};

// --- single region -----------------------------------------------------------

TEST(MaxRegionInfoTest, PutGrowsFromTheFirstPoint) {
  CQVIS_MaxRegionInfo r;
  EXPECT_EQ(r.m_bValid, 0);
  EXPECT_EQ(r.GetWidth(), 0.0);
  EXPECT_EQ(r.GetHeight(), 0.0);
  r.Put(3, 4);
  EXPECT_EQ(r.m_bValid, 1);
  ExpectBox(r, {3, 4, 3, 4});
  r.Put(1, 6);
  ExpectBox(r, {1, 4, 3, 6});
  EXPECT_EQ(r.GetWidth(), 2.0);
  EXPECT_EQ(r.GetHeight(), 2.0);

  CQVIS_MaxRegionInfo other;
  r.Put(&other);  // invalid: ignored
  r.Put(nullptr);
  ExpectBox(r, {1, 4, 3, 6});
  other = Region({-5, 5, 0, 10});
  r.Put(&other);
  ExpectBox(r, {-5, 4, 3, 10});
  r.Put(&r);  // itself: unchanged
  ExpectBox(r, {-5, 4, 3, 10});
  r.Clear();
  EXPECT_EQ(r, CQVIS_MaxRegionInfo());
}

TEST(MaxRegionInfoTest, ExtendAndExtendEx) {
  CQVIS_MaxRegionInfo r = Region({0, 0, 10, 20});
  r.ExtendEx(0.1);
  ExpectBox(r, {-1, -2, 11, 22});
  CQVIS_MaxRegionInfo empty;
  empty.ExtendEx(0.1);
  EXPECT_EQ(empty, CQVIS_MaxRegionInfo());
  empty.Extend(1);  // applies even when not valid
  ExpectBox(empty, {-1, -1, 1, 1});
  EXPECT_EQ(empty.m_bValid, 0);
  EXPECT_EQ(empty.GetWidth(), 0.0);  // not valid: width 0
  r = Region({0, 0, 2, 2});
  r.Extend(-3);  // no renormalisation
  ExpectBox(r, {3, 3, -1, -1});
  EXPECT_EQ(r.IsInRegion(0, 0), 1);  // the test itself normalises
  EXPECT_EQ(r.IsInRegion(4, 0), 0);
}

TEST(MaxRegionInfoTest, TransformsApplyToAllFourValues) {
  CQVIS_MaxRegionInfo r = Region({1, 2, 3, 4});
  r.Multi(2, -1);
  ExpectBox(r, {2, -2, 6, -4});
  r.Move(1, 10);
  ExpectBox(r, {3, 8, 7, 6});
  r.m_dMinX = 14;  // set directly: the snap rule differs per sign
  r.m_dMinY = -15;
  r.m_dMaxX = 15;
  r.m_dMaxY = -16;
  r.MakeSnap(10);
  ExpectBox(r, {10, -10, 20, -20});
  r = Region({25.4, 50.8, 254, 2.54});
  r.ChangeUnit(UNIT_MM, UNIT_INCH);
  ExpectBox(r, {25.4 / 25.4, 2.54 / 25.4, 254 / 25.4, 50.8 / 25.4});
  const CQVIS_MaxRegionInfo before = r;
  r.ChangeUnit(UNIT_MICRO, UNIT_MM);
  EXPECT_EQ(r, before);
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
      {{5, 5, 8, 8}, true},      // shared corner
      {{5.01, 0, 8, 5}, false},  // right of it
      {{-3, -3, -0.01, 8}, false},
      {{1, 1, 2, 2}, true},      // inside
      {{-1, -1, 9, 9}, true},    // around
      {{0, 6, 5, 9}, false},     // above
      {{8, 8, 5, 5}, false},     // corners swapped: not normalised
  };
  for (const auto& row : rows) {
    EXPECT_EQ(r.Overlapped(row.b.x1, row.b.y1, row.b.x2, row.b.y2), row.want)
        << row.b.x1 << "," << row.b.y1;
  }
  CQVIS_MaxRegionInfo other = Region({6, 6, 8, 8});
  EXPECT_FALSE(r.Overlapped(&other));
  EXPECT_FALSE(r.OverlappedEx(&other, 0.5));
  EXPECT_TRUE(r.OverlappedEx(&other, 1.0));
  EXPECT_FALSE(r.Overlapped(nullptr));
  EXPECT_FALSE(r.OverlappedEx(nullptr, 1.0));
  EXPECT_EQ(r.IsInRegion(5, 0), 1);
  EXPECT_EQ(r.IsInRegion(5.01, 0), 0);
  EXPECT_EQ(r.IsInRegion(kNaN, 0), 0);
}

TEST(MaxRegionInfoTest, EqualityAndCopies) {
  CQVIS_MaxRegionInfo a = Region({1, 2, 3, 4});
  CQVIS_MaxRegionInfo b(a);
  EXPECT_TRUE(a == b);
  b.m_dMaxY = 5;
  EXPECT_TRUE(a != b);
  b.Clone(&a);
  EXPECT_TRUE(a == b);
  b.Clone(nullptr);
  EXPECT_TRUE(a == b);
  b.m_bValid = 0;  // same corners, different flags
  EXPECT_FALSE(a == b);
  CQVIS_MaxRegionInfo c, d;
  c.m_dMinX = 1;  // two invalid regions compare by coordinates
  EXPECT_FALSE(c == d);
  a.m_dMinX = kNaN;
  EXPECT_TRUE(a == a);
  EXPECT_FALSE(a == CQVIS_MaxRegionInfo(a));
}

// --- list ----------------------------------------------------------------------

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
  ExpectBoxes({{2, 1, 4, 3}, {0.5, 0.5, 1.5, 1.5}, {7, 8, 9, 10}});
  EXPECT_NE(db_.GetAt(2), &given);  // a copy, the caller keeps its own
  for (const CQVIS_MaxRegionInfo* r : db_) EXPECT_EQ(r->m_bValid, 1);
}

TEST_F(RegionListTest, GetMaxRegionGrowsWithoutClearing) {
  CQVIS_MaxRegionInfo out = Region({100, 100, 101, 101});
  db_.GetMaxRegion(&out);  // empty list: unchanged
  ExpectBox(out, {100, 100, 101, 101});
  Push({0, 0, 1, 1});
  Push({-5, 2, 3, 4})->m_bValid = 0;  // flags of the list are not looked at
  db_.GetMaxRegion(&out);
  ExpectBox(out, {-5, 0, 101, 101});
  db_.GetMaxRegion(nullptr);
}

TEST_F(RegionListTest, MergeAllLeavesTheUnionInTheList) {
  db_.MergeAll();
  EXPECT_EQ(db_.GetSize(), 0);
  Push({0, 0, 2, 2});
  Push({10, -3, 12, 1});
  Push({5, 5, 6, 6});
  db_.MergeAll();
  ExpectBoxes({{0, -3, 12, 6}});
  EXPECT_EQ(db_.GetAt(0)->m_bValid, 1);
  EXPECT_EQ(owned_.size(), 3u);  // the former regions are not deleted
}

TEST_F(RegionListTest, MergeOverlappedOnlyMergesNeighbours) {
  Push({0, 0, 2, 2});
  Push({10, 10, 12, 12});
  Push({1, 1, 3, 3});
  db_.MergeOverlapped();
  ExpectBoxes({{0, 0, 2, 2}, {10, 10, 12, 12}, {1, 1, 3, 3}});

  db_.RemoveAll();
  CQVIS_MaxRegionInfo* first = Push({0, 0, 2, 2});
  Push({1, 1, 3, 3});
  Push({10, 10, 12, 12});
  db_.MergeOverlapped();
  ExpectBoxes({{0, 0, 3, 3}, {10, 10, 12, 12}});
  EXPECT_EQ(db_.GetAt(0), first);  // A is grown in place

  // Touching edges count; merging restarts from the front, so a chain
  // collapses into one region.
  db_.RemoveAll();
  Push({0, 0, 1, 1});
  Push({1, 0, 2, 1});
  Push({2, 1, 3, 2});
  Push({3, 2, 4, 3});
  db_.MergeOverlapped();
  ExpectBoxes({{0, 0, 4, 3}});

  // A NaN edge never overlaps.
  db_.RemoveAll();
  Push({0, 0, 1, 1});
  Push({0, 0, 1, 1})->m_dMaxX = kNaN;
  db_.MergeOverlapped();
  EXPECT_EQ(db_.GetSize(), 2);
}

TEST_F(RegionListTest, ListTransformsAndNullSlots) {
  Push({1, 1, 2, 2});
  db_.CExPtrArray::Base::Add(nullptr);
  Push({14, 14, 16, 16});
  db_.Move(1, 1);
  db_.Multi(2, 2);
  db_.MakeSnap(10);
  db_.ChangeUnit(UNIT_CM, UNIT_MM);
  db_.GetMaxRegion(nullptr);
  db_.MergeOverlapped();  // the null slot keeps its neighbours apart
  EXPECT_EQ(db_.GetAt(1), nullptr);
  db_.RemoveNullElement();
  ExpectBoxes({{0, 0, 100, 100}, {300, 300, 300, 300}});
}

TEST_F(RegionListTest, EqualityIsPairwiseByIndex) {
  CQVIS_MaxRegionInfoDB other;
  EXPECT_EQ(db_ == other, 1);
  Push({0, 0, 1, 1});
  Push({5, 5, 6, 6});
  EXPECT_EQ(db_ == other, 0);
  other.Add(5, 5, 6, 6, 0);
  other.Add(0, 0, 1, 1, 0);
  EXPECT_EQ(db_ == other, 0);  // same regions, other order
  EXPECT_EQ(db_ != other, 1);
  other.Reverse();
  EXPECT_EQ(db_ == other, 1);
  EXPECT_EQ(db_ == db_, 1);
  other.DeleteAll();
}

TEST_F(RegionListTest, ClearDropsPointersWithoutDeleting) {
  for (auto op : {&CQVIS_MaxRegionInfoDB::Init, &CQVIS_MaxRegionInfoDB::Clear,
                  &CQVIS_MaxRegionInfoDB::Release}) {
    CQVIS_MaxRegionInfo* r = Push({0, 0, 1, 1});
    (db_.*op)();
    EXPECT_EQ(db_.GetSize(), 0);
    r->Move(1, 1);  // still alive (ASan would catch a use after free)
  }
}

// --- archive records --------------------------------------------------------------

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

std::vector<std::uint8_t> RegionRecord(Box b, std::int32_t valid,
                                       std::int32_t version = 1) {
  return Bytes({Raw(version), Raw(b.x1), Raw(b.y1), Raw(b.x2), Raw(b.y2), Raw(valid)});
}

TEST(MaxRegionInfoTest, RecordIs40BytesAndRoundTrips) {
  CQVIS_MaxRegionInfo r = Region({-1.5, 2, 3, 4.25});
  qvis::MemFile f;
  {
    CArchive ar(&f, CArchive::store);
    r.Serialize(ar);
    ar.Close();
  }
  EXPECT_EQ(f.bytes(), RegionRecord({-1.5, 2, 3, 4.25}, 1));
  f.Rewind();
  CArchive in(&f, CArchive::load);
  CQVIS_MaxRegionInfo loaded;
  loaded.Serialize(in);
  EXPECT_EQ(loaded, r);
}

TEST(MaxRegionInfoTest, RecordBelowVersionOneIsSkippedAfterItsVersion) {
  qvis::MemFile f(Bytes({RegionRecord({1, 2, 3, 4}, 1, 0)}));
  CArchive ar(&f, CArchive::load);
  CQVIS_MaxRegionInfo r;
  r.Serialize(ar);
  EXPECT_EQ(r, CQVIS_MaxRegionInfo());
  double next = 0;
  ar >> next;
  EXPECT_EQ(next, 1.0);  // the reading position is right after the version
}

TEST_F(RegionListTest, ListRecordRoundTripsAndDropsInvalidRegions) {
  Push({0, 0, 1, 1});
  Push({2, 2, 3, 3})->m_bValid = 0;
  Push({4, 4, 5, 6});
  qvis::MemFile f;
  {
    CArchive ar(&f, CArchive::store);
    db_.Serialize(ar);
    ar.Close();
  }
  EXPECT_EQ(f.bytes(),
            Bytes({Raw<std::uint32_t>(0x80000001u), Raw<std::int64_t>(3),
                   RegionRecord({0, 0, 1, 1}, 1), RegionRecord({2, 2, 3, 3}, 0),
                   RegionRecord({4, 4, 5, 6}, 1)}));
  f.Rewind();
  CArchive in(&f, CArchive::load);
  CQVIS_MaxRegionInfoDB loaded;
  loaded.Serialize(in);
  ASSERT_EQ(loaded.GetSize(), 2);
  EXPECT_EQ(*loaded.GetAt(0), Region({0, 0, 1, 1}));
  EXPECT_EQ(*loaded.GetAt(1), Region({4, 4, 5, 6}));
  loaded.DeleteAll();
}

TEST(MaxRegionInfoDBTest, ListHeaderVariants) {
  const struct {
    const char* name;
    std::vector<std::uint8_t> bytes;
    int regions;  // -1: CArchiveException expected
  } rows[] = {
      {"narrow count", Bytes({Raw<std::uint32_t>(1), Raw<std::int32_t>(1),
                              RegionRecord({0, 0, 2, 2}, 1)}), 1},
      {"negative narrow count", Bytes({Raw<std::uint32_t>(1), Raw<std::int32_t>(-5)}), 0},
      {"other version", Bytes({Raw<std::uint32_t>(0x80000002u)}), 0},
      {"version 0", Bytes({Raw<std::uint32_t>(0)}), 0},
      {"single-point region", Bytes({Raw<std::uint32_t>(0x80000001u), Raw<std::int64_t>(1),
                                     RegionRecord({1, 1, 1, 1}, 1)}), 0},
      {"element below version 1", Bytes({Raw<std::uint32_t>(0x80000001u),
                                         Raw<std::int64_t>(2), Raw<std::int32_t>(0),
                                         RegionRecord({0, 0, 2, 2}, 1)}), 1},
      {"count 2^62", Bytes({Raw<std::uint32_t>(0x80000001u), Raw<std::int64_t>(1LL << 62),
                            RegionRecord({0, 0, 2, 2}, 1)}), -1},
      {"count beyond int64", Bytes({Raw<std::uint32_t>(0x80000001u),
                                    Raw<std::uint64_t>(~0ULL)}), 0},
      {"empty", {}, -1},
      {"cut header", Bytes({Raw<std::uint16_t>(1)}), -1},
  };
  for (const auto& row : rows) {
    qvis::MemFile f(row.bytes);
    CArchive ar(&f, CArchive::load);
    CQVIS_MaxRegionInfoDB db;
    bool threw = false;
    try {
      db.Serialize(ar);
    } catch (const CArchiveException& e) {
      threw = true;
      EXPECT_EQ(e.m_cause, CArchiveException::endOfFile) << row.name;
    }
    if (row.regions < 0) {
      EXPECT_TRUE(threw) << row.name;
    } else {
      EXPECT_FALSE(threw) << row.name;
      EXPECT_EQ(db.GetSize(), row.regions) << row.name;
    }
    db.DeleteAll();
  }
}

TEST(MaxRegionInfoDBTest, LoadingDeletesTheFormerRegions) {
  CQVIS_MaxRegionInfoDB db;
  db.Add(0, 0, 1, 1, 0);  // owned by the list; loading must free it
  qvis::MemFile f(Bytes({Raw<std::uint32_t>(0x80000001u), Raw<std::int64_t>(0)}));
  CArchive ar(&f, CArchive::load);
  db.Serialize(ar);
  EXPECT_EQ(db.GetSize(), 0);  // LeakSanitizer reports the region otherwise
}

TEST(MaxRegionInfoDBTest, TruncatedListKeepsTheRegionsReadSoFar) {
  const auto full = Bytes({Raw<std::uint32_t>(0x80000001u), Raw<std::int64_t>(2),
                           RegionRecord({0, 0, 2, 2}, 1), RegionRecord({4, 4, 5, 5}, 1)});
  for (size_t len = 0; len < full.size(); ++len) {
    qvis::MemFile f(std::vector<std::uint8_t>(full.begin(), full.begin() + len));
    CArchive ar(&f, CArchive::load);
    CQVIS_MaxRegionInfoDB db;
    EXPECT_THROW(db.Serialize(ar), CArchiveException) << len;
    EXPECT_EQ(db.GetSize(), len >= 12 + 40 ? 1 : 0) << len;
    db.DeleteAll();
  }
}

}  // namespace
