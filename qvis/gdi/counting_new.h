// Test support (header only): replaces the global operator new and delete of a test binary so
// that a test can count the heap allocations made between Start and Stop. Include it from
// exactly one source file of a binary. With the layers linked statically, every allocation of
// the engine goes through these.
#ifndef QVIS_GDI_COUNTING_NEW_H_
#define QVIS_GDI_COUNTING_NEW_H_

#include <atomic>
#include <cstdlib>
#include <new>
#ifdef _WIN32
#include <malloc.h>
#endif

namespace qvis::testing {

// AllocationCount: Start clears the count and starts counting, Stop stops and gives the number
// of allocations made since Start, on any thread.
class AllocationCount {
 public:
  static void Start() {
    Count() = 0;
    Counting() = true;
  }
  static long Stop() {
    Counting() = false;
    return Count().load();
  }
  static std::atomic<bool>& Counting() {
    static std::atomic<bool> on{false};
    return on;
  }
  static std::atomic<long>& Count() {
    static std::atomic<long> n{0};
    return n;
  }
};

namespace counting_new_detail {

// Counted is where a counted allocation passes: a debugger's breakpoint here finds the caller
// of an unexpected allocation.
[[gnu::noinline]] inline void Counted() { AllocationCount::Count().fetch_add(1); }

inline void* Allocate(std::size_t n) {
  if (AllocationCount::Counting().load(std::memory_order_relaxed)) Counted();
  if (void* p = std::malloc(n == 0 ? 1 : n)) return p;
  throw std::bad_alloc();
}
inline void* AllocateAligned(std::size_t n, std::size_t align) {
  if (AllocationCount::Counting().load(std::memory_order_relaxed)) Counted();
  const std::size_t size = (n + align - 1) / align * align;
#ifdef _WIN32  // the Windows C runtime has no aligned_alloc; its aligned blocks have their own free
  if (void* p = _aligned_malloc(size == 0 ? align : size, align)) return p;
#else
  if (void* p = std::aligned_alloc(align, size == 0 ? align : size)) return p;
#endif
  throw std::bad_alloc();
}
inline void FreeAligned(void* p) {
#ifdef _WIN32
  _aligned_free(p);
#else
  std::free(p);
#endif
}

}  // namespace counting_new_detail
}  // namespace qvis::testing

void* operator new(std::size_t n) { return qvis::testing::counting_new_detail::Allocate(n); }
void* operator new[](std::size_t n) { return qvis::testing::counting_new_detail::Allocate(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  try {
    return qvis::testing::counting_new_detail::Allocate(n);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
  try {
    return qvis::testing::counting_new_detail::Allocate(n);
  } catch (...) {
    return nullptr;
  }
}
void* operator new(std::size_t n, std::align_val_t a) {
  return qvis::testing::counting_new_detail::AllocateAligned(n, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t n, std::align_val_t a) {
  return qvis::testing::counting_new_detail::AllocateAligned(n, static_cast<std::size_t>(a));
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept {
  qvis::testing::counting_new_detail::FreeAligned(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
  qvis::testing::counting_new_detail::FreeAligned(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
  qvis::testing::counting_new_detail::FreeAligned(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
  qvis::testing::counting_new_detail::FreeAligned(p);
}

#endif  // QVIS_GDI_COUNTING_NEW_H_
