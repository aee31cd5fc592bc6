// Tests of CExPtrArray: ownership (what is deleted and what is only taken
// out), pointer-identity search and the list edits.
#include "qvis/util/ex_ptr_array.h"

#include <algorithm>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace {

// An element that records its own destruction, so a test can tell which
// elements an operation destroyed.
class Tracked {
 public:
  explicit Tracked(std::set<int>* dead, int id) : dead_(dead), id_(id) {}
  virtual ~Tracked() { dead_->insert(id_); }
  int id() const { return id_; }

 private:
  std::set<int>* dead_;
  int id_;
};

using Array = CExPtrArray<Tracked*, Tracked*>;

// Owns the elements a test makes and frees those the array did not destroy.
class ExPtrArrayTest : public ::testing::Test {
 protected:
  ~ExPtrArrayTest() override {
    // Element i has id i; a destroyed element is not touched again.
    for (size_t i = 0; i < made_.size(); ++i) {
      if (dead_.count(static_cast<int>(i)) == 0) delete made_[i];
    }
  }
  Tracked* Make() {
    made_.push_back(new Tracked(&dead_, static_cast<int>(made_.size())));
    return made_.back();
  }
  void Fill(Array& a, int n) {
    for (int i = 0; i < n; ++i) a.Add(Make());
  }
  std::vector<int> Ids(const CArray<Tracked*, Tracked*>& a) {
    std::vector<int> ids;
    for (Tracked* t : a) ids.push_back(t ? t->id() : -1);
    return ids;
  }
  std::set<int> dead_;
  std::vector<Tracked*> made_;
};

TEST_F(ExPtrArrayTest, AccessorsAnswerNullOutOfRangeAndSearchByIdentity) {
  Array a;
  EXPECT_EQ(a.GetLastIndex(), -1);
  EXPECT_EQ(a.GetLastElement(), nullptr);
  EXPECT_EQ(a.RemoveLastElement(), nullptr);
  EXPECT_FALSE(a.DeleteLastElement());
  Fill(a, 3);
  for (INT_PTR bad : {INT_PTR{-1}, INT_PTR{3}, INT_PTR{1} << 40}) {
    EXPECT_EQ(a.GetAt(bad), nullptr) << bad;
    a.SetAt(bad, made_[0]);  // ignored
  }
  a.SetAt(2, made_[0]);
  EXPECT_EQ(Ids(a), (std::vector<int>{0, 1, 0}));
  EXPECT_FALSE(a.IsValidIndex(3));
  EXPECT_FALSE(a.IsValidIndex(-1));
  EXPECT_EQ(a.FindIndex(made_[0]), 0);  // first occurrence
  EXPECT_EQ(a.FindIndex(made_[2]), -1);
  EXPECT_FALSE(a.Exists(nullptr));
  EXPECT_EQ(a.Add_if_only_do_not_exists(made_[1]), -1);
  EXPECT_EQ(a.GetSize(), 3);
  EXPECT_EQ(a.Add_if_only_do_not_exists(made_[2]), 3);
}

TEST_F(ExPtrArrayTest, RemoveTakesOutWithoutDeleting) {
  Array a;
  Fill(a, 4);
  a.Add(made_[1]);
  EXPECT_TRUE(a.Remove(made_[1]));  // first occurrence only
  EXPECT_EQ(Ids(a), (std::vector<int>{0, 2, 3, 1}));
  EXPECT_FALSE(a.Remove(Make()));
  EXPECT_EQ(a.RemoveLastElement(), made_[1]);
  Array other;
  other.Add(made_[3]);
  other.Add(made_[0]);
  other.Add(made_[4]);  // not in a
  a.Subtract(other);
  EXPECT_EQ(Ids(a), (std::vector<int>{2}));
  a.Subtract(a);
  EXPECT_EQ(a.GetSize(), 0);
  EXPECT_TRUE(dead_.empty());
}

TEST_F(ExPtrArrayTest, DeleteDestroysExactlyTheNamedElements) {
  Array a;
  Fill(a, 6);
  a.DeleteAt(2, 3);
  EXPECT_EQ(dead_, (std::set<int>{2, 3, 4}));
  EXPECT_EQ(Ids(a), (std::vector<int>{0, 1, 5}));
  a.DeleteAt(0, 0);  // count < 1: nothing
  EXPECT_EQ(a.GetSize(), 3);
  EXPECT_THROW(a.DeleteAt(2, 2), CInvalidArgException);
  EXPECT_THROW(a.DeleteAt(-1, 1), CInvalidArgException);
  EXPECT_EQ(a.GetSize(), 3);  // a bad range changes nothing

  Tracked* stranger = Make();
  EXPECT_FALSE(a.Delete(stranger));
  EXPECT_EQ(dead_.count(stranger->id()), 0u);
  a.Add(nullptr);
  EXPECT_TRUE(a.Delete(nullptr));  // slot removed, nothing deleted
  EXPECT_EQ(a.GetSize(), 3);
  EXPECT_TRUE(a.Delete(made_[1]));
  EXPECT_TRUE(dead_.count(1));
  EXPECT_TRUE(a.DeleteLastElement());
  EXPECT_TRUE(dead_.count(5));
  a.Add(nullptr);
  a.Add(stranger);
  a.DeleteAll();
  EXPECT_EQ(a.GetSize(), 0);
  EXPECT_EQ(dead_, (std::set<int>{0, 1, 2, 3, 4, 5, 6}));
}

TEST_F(ExPtrArrayTest, DestroyingTheArrayLeavesElementsAlive) {
  {
    Array a;
    Fill(a, 3);
  }
  EXPECT_TRUE(dead_.empty());
}

TEST_F(ExPtrArrayTest, MoveElementToAppendsTheBlockInOrder) {
  Array a;
  Fill(a, 5);
  Array dest;
  dest.Add(Make());  // id 5
  EXPECT_TRUE(a.MoveElementTo(dest, 1, 3));
  EXPECT_EQ(Ids(a), (std::vector<int>{0, 4}));
  EXPECT_EQ(Ids(dest), (std::vector<int>{5, 1, 2, 3}));
  EXPECT_FALSE(a.MoveElementTo(dest, 1, 0));
  EXPECT_THROW(a.MoveElementTo(dest, 1, 2), CInvalidArgException);
  EXPECT_THROW(a.MoveElementTo(dest, -1, 0), CInvalidArgException);
  EXPECT_EQ(Ids(a), (std::vector<int>{0, 4}));
  // Moving within the same array takes the block to the end, in its order: a front block, a
  // middle one, a one-element one, and the whole array (which stays as it is).
  EXPECT_TRUE(dest.MoveElementTo(dest, 0, 1));
  EXPECT_EQ(Ids(dest), (std::vector<int>{2, 3, 5, 1}));
  EXPECT_TRUE(dest.MoveElementTo(dest, 1, 2));
  EXPECT_EQ(Ids(dest), (std::vector<int>{2, 1, 3, 5}));
  EXPECT_TRUE(dest.MoveElementTo(dest, 0, 0));
  EXPECT_EQ(Ids(dest), (std::vector<int>{1, 3, 5, 2}));
  EXPECT_TRUE(dest.MoveElementTo(dest, 0, 3));
  EXPECT_EQ(Ids(dest), (std::vector<int>{1, 3, 5, 2}));
  EXPECT_THROW(dest.MoveElementTo(dest, 2, 4), CInvalidArgException);
  EXPECT_EQ(Ids(dest), (std::vector<int>{1, 3, 5, 2}));
  EXPECT_TRUE(dead_.empty());
}

TEST_F(ExPtrArrayTest, NullDuplicateRemovalAndReverse) {
  Array a;
  Fill(a, 3);  // a=0, b=1, c=2
  Tracked *pa = made_[0], *pb = made_[1], *pc = made_[2];
  a.RemoveAll();
  Tracked* none = nullptr;
  for (Tracked* p : {pa, none, pb, pa, none, pc, pb}) a.Add(p);
  a.RemoveDuplicatedElements();  // the null duplicate goes too
  EXPECT_EQ(Ids(a), (std::vector<int>{0, -1, 1, 2}));
  a.RemoveNullElement();
  EXPECT_EQ(Ids(a), (std::vector<int>{0, 1, 2}));
  a.Reverse();
  EXPECT_EQ(Ids(a), (std::vector<int>{2, 1, 0}));  // odd count: middle stays
  a.Add(pa);
  a.Reverse();
  EXPECT_EQ(Ids(a), (std::vector<int>{0, 0, 1, 2}));
  EXPECT_TRUE(dead_.empty());
}

TEST_F(ExPtrArrayTest, IsElementEqualComparesPointersInOrder) {
  Array a, b;
  EXPECT_TRUE(a.IsElementEqual(b));
  Fill(a, 2);
  b.Add(made_[0]);
  EXPECT_FALSE(a.IsElementEqual(b));
  b.Add(made_[1]);
  EXPECT_TRUE(a.IsElementEqual(b));
  b.Reverse();
  EXPECT_FALSE(a.IsElementEqual(b));
}

}  // namespace
