// The umbrella header compiles on its own, then with the Win32 macro names defined after it, and
// a host can build a canvas from it alone.
#include "qvis/qvis.h"
#include "qvis/compat/win32_names.h"
#include "qvis/qvis.h"  // a second inclusion is harmless

#include <gtest/gtest.h>

namespace {

TEST(UmbrellaHeaderTest, NamesTheWholeSurface) {
  CQVIS_UnitMgr units;
  EXPECT_DOUBLE_EQ(units.MM2MICRO(1.0), 1000.0);
  CQVIS_Coords coords;
  EXPECT_EQ(coords.V2RX(10.0), 10);
  EXPECT_EQ(CQVIS_StringUtility::IncValueInString("PAD7", 1), "PAD8");
  EXPECT_EQ(RGB(1, 2, 3), 0x030201u);
  EXPECT_EQ(WM_KEYDOWN, 0x0100);
}

}  // namespace
