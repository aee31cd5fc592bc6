// Allocation failure at every step: for N = 1, 2, ... the Nth allocation of an operation throws
// std::bad_alloc (this binary replaces the global operator new with a countdown). Each time the
// exception reaches the caller or the object comes out whole, and the sanitizer build checks
// that nothing leaks or is freed twice. Operations: design construction, save, load, window
// creation and the start of a command.
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "qvis/compat/exceptions.h"
#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/headless/headless_port.h"

namespace {

// The countdown: negative means off; 0 means the next allocation fails (and switches it off).
std::atomic<long> g_countdown{-1};
std::atomic<bool> g_failed{false};

void* Allocate(std::size_t size) {
  long left = g_countdown.load(std::memory_order_relaxed);
  while (left >= 0) {
    if (g_countdown.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
      if (left == 0) {
        g_failed = true;
        throw std::bad_alloc();
      }
      break;
    }
  }
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return Allocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return Allocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace {

// Budget of allocations any one operation may make; a run that still fails at this N is a
// loop that never completes.
constexpr long kMaxSteps = 20000;

struct Outcome {
  long steps = 0;        // how many runs ended in the injected failure
  bool completed = false;
};

// FailEachAllocation runs `op` with the Nth allocation failing, for N = 1, 2, ... until a run
// completes without reaching the failure. `op` returns whether the object it worked on is
// whole; when the failure was injected, `op` must have let std::bad_alloc out (or
// reported the failure as its documented exception) and `after` checks the object is usable.
Outcome FailEachAllocation(const std::function<bool()>& op) {
  Outcome out;
  for (long n = 0; n < kMaxSteps; ++n) {
    g_failed = false;
    bool whole = false;
    bool threw = false;
    g_countdown = n;
    try {
      whole = op();
    } catch (const std::bad_alloc&) {
      threw = true;
    } catch (const CException&) {
      threw = true;  // a reader or writer may report the failure as its own exception
    }
    g_countdown = -1;
    if (!g_failed) {
      EXPECT_FALSE(threw) << "threw without an injected failure at step " << n;
      EXPECT_TRUE(whole) << "step " << n;
      out.completed = true;
      return out;
    }
    EXPECT_TRUE(threw || whole) << "failure at allocation " << n + 1
                                << " was swallowed and left a broken object";
    ++out.steps;
  }
  return out;
}

bool DesignIsWhole(const CQVIS_Design& d) {
  return d.m_pSurface != nullptr && d.m_pCoords != nullptr && d.m_pRenderBuffer != nullptr &&
         d.m_pGridSnapMgr != nullptr && d.m_pZoomMgr != nullptr && d.m_pMousePanMgr != nullptr &&
         d.m_pCursorMgr != nullptr && d.m_pSelectCmd != nullptr && d.m_pDrawLineCmd != nullptr &&
         d.m_pDrawCircleCmd != nullptr && d.m_pDraw3PCircleCmd != nullptr &&
         d.m_pDrawArcCmd != nullptr && d.m_pDrawFlashCircleCmd != nullptr &&
         d.m_pDrawFlashRectCmd != nullptr && d.m_pDrawRectCmd != nullptr &&
         d.m_pDrawPolygonCmd != nullptr && d.m_pDrawFlashObroundCmd != nullptr &&
         d.m_pDrawFlashPolygonCmd != nullptr && d.m_pCaptureCmd != nullptr &&
         d.m_pSetOriginCmd != nullptr;
}

std::string TempPath(const char* name) {
  return (std::filesystem::temp_directory_path() /
          ("qvis_alloc_" + std::to_string(::getpid()) + "_" + name))
      .string();
}

// The process-wide pieces (stock objects, the font library) are made once, before any count.
class AllocFailureTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    qvis::HeadlessPort port(64, 48);
    CQVIS_Wnd wnd;
    wnd.Create(&port);
    wnd.OnDrawLine();
    port.Mouse(WM_LBUTTONDOWN, CPoint(10, 10));
    port.Mouse(WM_LBUTTONUP, CPoint(10, 10));
  }
};

TEST_F(AllocFailureTest, DesignConstruction) {
  const Outcome o = FailEachAllocation([] {
    CQVIS_Design design;
    return DesignIsWhole(design);
  });
  EXPECT_TRUE(o.completed);
  EXPECT_GT(o.steps, 20);  // a design makes more than twenty objects
}

TEST_F(AllocFailureTest, SaveAndLoad) {
  const std::string path = TempPath("design.qvd");
  CQVIS_Design source;
  source.m_pCoords->SetZoom(3.5);
  source.m_MaxRegion.Put(-5.0, -5.0);
  source.m_MaxRegion.Put(12.0, 7.0);
  source.SaveToFile(path.c_str());

  CQVIS_Design saver;
  // The name is made before the failures start: only the save itself is under test.
  const std::string saved_path = TempPath("saved.qvd");
  const Outcome saved = FailEachAllocation([&] {
    saver.SaveToFile(saved_path.c_str());
    return DesignIsWhole(saver);
  });
  EXPECT_TRUE(saved.completed);
  EXPECT_TRUE(DesignIsWhole(saver));

  CQVIS_Design loader;
  const Outcome loaded = FailEachAllocation([&] {
    loader.LoadFromFile(path.c_str());
    return DesignIsWhole(loader) && loader.m_pCoords->m_dZoom == 3.5;
  });
  EXPECT_TRUE(loaded.completed);
  EXPECT_GT(loaded.steps, 0);
  EXPECT_TRUE(DesignIsWhole(loader));
  std::remove(path.c_str());
  std::remove(saved_path.c_str());
}

TEST_F(AllocFailureTest, WindowCreationAndPaint) {
  const Outcome o = FailEachAllocation([] {
    qvis::HeadlessPort port(80, 60);
    CQVIS_Wnd wnd;
    if (!wnd.Create(&port)) return false;
    port.RedrawNow();
    return DesignIsWhole(*wnd.GetDesign()) && port.PaintCount() > 0;
  });
  EXPECT_TRUE(o.completed);
  EXPECT_GT(o.steps, 20);
}

TEST_F(AllocFailureTest, CommandStart) {
  qvis::HeadlessPort port(80, 60);
  CQVIS_Wnd wnd;
  ASSERT_TRUE(wnd.Create(&port));
  const Outcome o = FailEachAllocation([&] {
    wnd.GetDesign()->AllDeactiveCmd();
    wnd.OnDrawPolygon();
    port.Mouse(WM_MOUSEMOVE, CPoint(10, 10));
    port.Mouse(WM_LBUTTONDOWN, CPoint(10, 10));
    port.Mouse(WM_LBUTTONUP, CPoint(10, 10));
    port.Mouse(WM_MOUSEMOVE, CPoint(30, 20));
    port.Mouse(WM_LBUTTONDOWN, CPoint(30, 20));
    port.Mouse(WM_LBUTTONUP, CPoint(30, 20));
    return wnd.GetDesign()->m_pDrawPolygonCmd->IsActived() != 0;
  });
  EXPECT_TRUE(o.completed);
  EXPECT_GT(o.steps, 0);
  // After all those failures the window still works end to end.
  wnd.GetDesign()->AllDeactiveCmd();
  wnd.OnDrawLine();
  port.Mouse(WM_LBUTTONDOWN, CPoint(5, 5));
  port.Mouse(WM_LBUTTONUP, CPoint(5, 5));
  EXPECT_TRUE(wnd.GetDesign()->m_pDrawLineCmd->IsActived());
}

}  // namespace
