// CExPtrArray: a growable array of pointers to heap objects, with list
// operations (search, add-if-absent, remove, delete, move, reverse) on top of
// the compat CArray. Whoever holds the array owns its elements; the array
// destroys them only through the Delete* operations.
#ifndef QVIS_UTIL_EX_PTR_ARRAY_H_
#define QVIS_UTIL_EX_PTR_ARRAY_H_

#include <algorithm>
#include <utility>
#include <vector>

#include "qvis/compat/exceptions.h"
#include "qvis/compat/carray.h"
#include "qvis/compat/types.h"

// TYPE is always a pointer (T*) to a class with a virtual destructor, and
// ARG_TYPE the same pointer type (the default, so CExPtrArray<DPoint*> names
// the list). Element equality is pointer identity.
template <class TYPE, class ARG_TYPE = TYPE>
class CExPtrArray : public CArray<TYPE, ARG_TYPE> {
 public:
  using Base = CArray<TYPE, ARG_TYPE>;

  CExPtrArray() = default;
  CExPtrArray(const CExPtrArray&) = delete;
  CExPtrArray& operator=(const CExPtrArray&) = delete;

  // ~CExPtrArray frees the pointer storage only; the elements stay alive.
  virtual ~CExPtrArray() = default;

  // GetAt returns the element at `index`; an index out of range gives null.
  TYPE GetAt(INT_PTR index) const {
    return IsInRange(index) ? this->GetData()[index] : nullptr;
  }

  // SetAt stores `p` at `index`; an index out of range is ignored.
  void SetAt(INT_PTR index, ARG_TYPE p) {
    if (IsInRange(index)) this->GetData()[index] = p;
  }

  // GetLastIndex returns size - 1 (-1 when empty).
  INT_PTR GetLastIndex() const { return this->GetSize() - 1; }

  // GetLastElement returns the last element; an empty array gives null.
  TYPE GetLastElement() const { return GetAt(GetLastIndex()); }

  // IsValidIndex tells whether 0 <= i < size.
  bool IsValidIndex(const int& i) const { return IsInRange(i); }

  // Exists tells whether `p` occurs in the array.
  bool Exists(ARG_TYPE p) const { return FindIndex(p) >= 0; }

  // FindIndex returns the index of the first occurrence of `p`; absent gives
  // -1 (also when the index would not fit an int).
  int FindIndex(ARG_TYPE p) const {
    const INT_PTR n = this->GetSize();
    const TYPE* data = this->GetData();
    for (INT_PTR i = 0; i < n; ++i) {
      if (data[i] == p) return i <= 0x7fffffff ? static_cast<int>(i) : -1;
    }
    return -1;
  }

  // Add_if_only_do_not_exists appends `p` and returns its index; a pointer
  // already present gives -1 and leaves the array unchanged.
  INT_PTR Add_if_only_do_not_exists(ARG_TYPE p) {
    if (IndexOf(p) >= 0) return -1;
    return this->Add(p);
  }

  // Remove takes the first occurrence of `p` out without deleting it; absent
  // gives false.
  bool Remove(ARG_TYPE p) {
    const INT_PTR i = IndexOf(p);
    if (i < 0) return false;
    this->RemoveAt(i);
    return true;
  }

  // RemoveLastElement takes the last element out (not deleted) and returns
  // it; an empty array gives null.
  TYPE RemoveLastElement() {
    if (this->GetSize() == 0) return nullptr;
    TYPE p = this->GetData()[GetLastIndex()];
    this->RemoveAt(GetLastIndex());
    return p;
  }

  // Delete destroys the first occurrence of `p` (when not null) and removes
  // its slot; absent gives false and deletes nothing.
  bool Delete(ARG_TYPE p) {
    const INT_PTR i = IndexOf(p);
    if (i < 0) return false;
    this->RemoveAt(i);
    delete p;
    return true;
  }

  // DeleteAt destroys `count` consecutive elements from `index` and removes
  // their slots; count < 1 does nothing. A range reaching outside the array
  // throws CInvalidArgException before anything is changed.
  void DeleteAt(int index, int count) {
    if (count < 1) return;
    if (index < 0 || static_cast<INT_PTR>(index) + count > this->GetSize()) {
      throw CInvalidArgException();
    }
    for (int k = 0; k < count; ++k) {
      TYPE p = this->GetData()[index];
      this->RemoveAt(index);
      delete p;
    }
  }

  // DeleteLastElement destroys and removes the last element; empty gives
  // false.
  bool DeleteLastElement() {
    if (this->GetSize() == 0) return false;
    delete RemoveLastElement();
    return true;
  }

  // DeleteAll destroys every element in index order, then frees the storage.
  void DeleteAll() {
    const INT_PTR n = this->GetSize();
    TYPE* data = this->GetData();
    for (INT_PTR i = 0; i < n; ++i) {
      delete data[i];
      data[i] = nullptr;
    }
    this->RemoveAll();
    this->FreeExtra();
  }

  // Subtract removes (without deleting) the first occurrence of each element
  // of `other`, in its order. Subtracting an array from itself empties it.
  void Subtract(const CArray<TYPE, ARG_TYPE>& other) {
    if (&other == this) {
      this->RemoveAll();
      return;
    }
    const INT_PTR n = other.GetSize();
    for (INT_PTR i = 0; i < n; ++i) Remove(other.GetData()[i]);
  }

  // MoveElementTo appends elements from..to (inclusive) to `dest` in their
  // order and removes them from this array; to < from gives false. A range
  // outside this array throws CInvalidArgException before anything moves.
  bool MoveElementTo(CArray<TYPE, ARG_TYPE>& dest, const int& from,
                     const int& to) {
    if (to < from) return false;
    if (from < 0 || to >= this->GetSize()) throw CInvalidArgException();
    // The block is copied out first, so that `dest` may be this array itself (the block then
    // moves to the end, in order). A failed allocation leaves both arrays as they were.
    const std::vector<TYPE> block(this->GetData() + from, this->GetData() + to + 1);
    const INT_PTR count = static_cast<INT_PTR>(block.size());
    if (&dest == this) {
      std::vector<TYPE> order(this->GetData(), this->GetData() + from);
      order.insert(order.end(), this->GetData() + to + 1, this->GetData() + this->GetSize());
      order.insert(order.end(), block.begin(), block.end());
      std::copy(order.begin(), order.end(), this->GetData());
      return true;
    }
    const INT_PTR old_size = dest.GetSize();
    try {
      for (const TYPE& p : block) dest.Add(p);
    } catch (...) {
      dest.SetSize(old_size);
      throw;
    }
    this->RemoveAt(from, count);
    return true;
  }

  // RemoveNullElement removes every null entry; the others keep their order.
  virtual void RemoveNullElement() {
    Compact([](TYPE p, INT_PTR) { return p == nullptr; });
  }

  // RemoveDuplicatedElements keeps the first occurrence of each pointer and
  // drops the later ones; the survivors keep their order; nothing is deleted.
  virtual void RemoveDuplicatedElements() {
    const TYPE* data = this->GetData();
    Compact([data](TYPE p, INT_PTR i) {
      for (INT_PTR j = 0; j < i; ++j) {
        if (data[j] == p) return true;
      }
      return false;
    });
  }

  // Reverse reverses the order of the elements.
  void Reverse() {
    const INT_PTR n = this->GetSize();
    TYPE* data = this->GetData();
    for (INT_PTR i = 0; i < n / 2; ++i) std::swap(data[i], data[n - 1 - i]);
  }

  // IsElementEqual tells whether `other` holds the same pointers in the same
  // order (two empty arrays are equal).
  bool IsElementEqual(const CArray<TYPE, ARG_TYPE>& other) const {
    const INT_PTR n = this->GetSize();
    if (other.GetSize() != n) return false;
    for (INT_PTR i = 0; i < n; ++i) {
      if (this->GetData()[i] != other.GetData()[i]) return false;
    }
    return true;
  }

 private:
  bool IsInRange(INT_PTR i) const { return i >= 0 && i < this->GetSize(); }

  INT_PTR IndexOf(ARG_TYPE p) const {
    const INT_PTR n = this->GetSize();
    for (INT_PTR i = 0; i < n; ++i) {
      if (this->GetData()[i] == p) return i;
    }
    return -1;
  }

  // Compact drops every entry for which drop(entry, index) holds and closes
  // the gaps, keeping the order. Every entry is judged before any is moved, so
  // the predicate sees the original order.
  template <class Pred>
  void Compact(Pred drop) {
    const INT_PTR n = this->GetSize();
    if (n == 0) return;
    TYPE* data = this->GetData();
    std::vector<char> dropped(static_cast<size_t>(n));
    for (INT_PTR i = 0; i < n; ++i) dropped[i] = drop(data[i], i) ? 1 : 0;
    INT_PTR w = 0;
    for (INT_PTR i = 0; i < n; ++i) {
      if (!dropped[i]) data[w++] = data[i];
    }
    this->SetSize(w);
  }
};

#endif  // QVIS_UTIL_EX_PTR_ARRAY_H_
