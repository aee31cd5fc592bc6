// CArray<TYPE, ARG_TYPE>: the growable array of the public API (vertex lists, extent lists,
// owned-pointer lists). Indices are 64-bit signed. Reading or removing outside the array throws
// CInvalidArgException instead of touching memory it does not own.
#ifndef QVIS_COMPAT_CARRAY_H_
#define QVIS_COMPAT_CARRAY_H_

#include <cstddef>
#include <vector>

#include "qvis/compat/exceptions.h"
#include "qvis/compat/types.h"

template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray {
 public:
  CArray() = default;
  CArray(const CArray&) = default;
  CArray& operator=(const CArray&) = default;
  virtual ~CArray() = default;

  INT_PTR GetSize() const { return static_cast<INT_PTR>(v_.size()); }
  INT_PTR GetCount() const { return GetSize(); }
  INT_PTR GetUpperBound() const { return GetSize() - 1; }
  bool IsEmpty() const { return v_.empty(); }

  // SetSize resizes to n elements (new ones value-initialised); a negative n throws.
  void SetSize(INT_PTR n, INT_PTR grow_by = -1) {
    (void)grow_by;
    if (n < 0) throw CInvalidArgException("CArray::SetSize: negative size");
    v_.resize(static_cast<size_t>(n));
  }
  void FreeExtra() { v_.shrink_to_fit(); }
  void RemoveAll() { v_.clear(); }

  const TYPE& GetAt(INT_PTR i) const { Check(i); return v_[static_cast<size_t>(i)]; }
  TYPE& GetAt(INT_PTR i) { Check(i); return v_[static_cast<size_t>(i)]; }
  TYPE& ElementAt(INT_PTR i) { Check(i); return v_[static_cast<size_t>(i)]; }
  const TYPE& ElementAt(INT_PTR i) const { Check(i); return v_[static_cast<size_t>(i)]; }
  void SetAt(INT_PTR i, ARG_TYPE e) { Check(i); v_[static_cast<size_t>(i)] = e; }
  const TYPE& operator[](INT_PTR i) const { return GetAt(i); }
  TYPE& operator[](INT_PTR i) { return GetAt(i); }
  const TYPE* GetData() const { return v_.data(); }
  TYPE* GetData() { return v_.data(); }

  // Add appends and returns the new element's index.
  INT_PTR Add(ARG_TYPE e) { v_.push_back(e); return GetSize() - 1; }
  // SetAtGrow stores at i, growing the array first when needed; a negative i throws.
  void SetAtGrow(INT_PTR i, ARG_TYPE e) {
    if (i < 0) throw CInvalidArgException("CArray::SetAtGrow: negative index");
    if (i >= GetSize()) v_.resize(static_cast<size_t>(i) + 1);
    v_[static_cast<size_t>(i)] = e;
  }
  // Append adds every element of src and returns the index of the first one added.
  INT_PTR Append(const CArray& src) {
    INT_PTR first = GetSize();
    if (&src == this) {
      std::vector<TYPE> copy(v_);
      v_.insert(v_.end(), copy.begin(), copy.end());
    } else {
      v_.insert(v_.end(), src.v_.begin(), src.v_.end());
    }
    return first;
  }
  void Copy(const CArray& src) { if (&src != this) v_ = src.v_; }

  // InsertAt inserts count copies of e before i (i == size appends; i beyond grows the array).
  void InsertAt(INT_PTR i, ARG_TYPE e, INT_PTR count = 1) {
    if (i < 0 || count < 0) throw CInvalidArgException("CArray::InsertAt: negative index");
    if (count == 0) return;
    if (i > GetSize()) v_.resize(static_cast<size_t>(i));
    TYPE copy = e;
    v_.insert(v_.begin() + i, static_cast<size_t>(count), copy);
  }
  void InsertAt(INT_PTR start, const CArray* src) {
    if (start < 0 || src == nullptr) throw CInvalidArgException("CArray::InsertAt: bad argument");
    if (start > GetSize()) v_.resize(static_cast<size_t>(start));
    std::vector<TYPE> copy(src->v_);
    v_.insert(v_.begin() + start, copy.begin(), copy.end());
  }
  // RemoveAt removes count elements from i; a range outside the array throws.
  void RemoveAt(INT_PTR i, INT_PTR count = 1) {
    if (i < 0 || count < 0 || i > GetSize() || count > GetSize() - i) {
      throw CInvalidArgException("CArray::RemoveAt: index out of range");
    }
    v_.erase(v_.begin() + i, v_.begin() + i + count);
  }

  // Iteration support for range-for in the library's own code.
  auto begin() { return v_.begin(); }
  auto end() { return v_.end(); }
  auto begin() const { return v_.begin(); }
  auto end() const { return v_.end(); }

 private:
  void Check(INT_PTR i) const {
    if (i < 0 || i >= GetSize()) throw CInvalidArgException("CArray: index out of range");
  }
  std::vector<TYPE> v_;
};

#endif  // QVIS_COMPAT_CARRAY_H_
