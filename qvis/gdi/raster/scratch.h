// ScratchArena: the scratch memory of one device context. A primitive borrows containers for
// the length of a call and gives them back (with their capacity) when the loan goes out of
// scope, so that warm drawing makes no heap allocation. Owned by the DeviceContext; one thread
// draws on a DC at a time, as with the platform's DCs.
#ifndef QVIS_GDI_RASTER_SCRATCH_H_
#define QVIS_GDI_RASTER_SCRATCH_H_

#include <cstddef>
#include <memory>
#include <tuple>
#include <vector>

namespace qvis::gdi {

// ScratchPool: containers of one type, lent in stack order.
template <class T>
class ScratchPool {
 public:
  // Take lends the next free container (emptied, capacity kept); creates one when all are out.
  T& Take() {
    if (used_ == items_.size()) items_.push_back(std::make_unique<T>());
    T& t = *items_[used_++];
    t.clear();
    return t;
  }
  // Give takes back the last container lent.
  void Give() { --used_; }
  std::size_t lent() const { return used_; }

 private:
  std::vector<std::unique_ptr<T>> items_;
  std::size_t used_ = 0;
};

// Scratch: one container on loan from a pool; returns it when destroyed. Loans end in the
// reverse order of their start, which scoping gives for free.
template <class T>
class Scratch {
 public:
  explicit Scratch(ScratchPool<T>& pool) : pool_(pool), item_(pool.Take()) {}
  ~Scratch() { pool_.Give(); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  T& operator*() const { return item_; }
  T* operator->() const { return &item_; }
  T* get() const { return &item_; }

 private:
  ScratchPool<T>& pool_;
  T& item_;
};

// ScratchArenaOf: a pool per container type.
template <class... Ts>
class ScratchArenaOf {
 public:
  // Borrow lends a container of type T until the returned loan is destroyed.
  template <class T>
  Scratch<T> Borrow() {
    return Scratch<T>(std::get<ScratchPool<T>>(pools_));
  }
  // Lent: how many containers of type T are out (0 between primitives).
  template <class T>
  std::size_t Lent() const {
    return std::get<ScratchPool<T>>(pools_).lent();
  }

 private:
  std::tuple<ScratchPool<Ts>...> pools_;
};

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_SCRATCH_H_
