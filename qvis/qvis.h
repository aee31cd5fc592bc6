// qvis: the whole public surface in one include. A host that embeds the canvas includes this
// header and links the CMake target qvis::qvis. Win32 macro names (WM_*, VK_*, R2_*, ...) are
// not defined here; include "qvis/compat/win32_names.h" for them.
#ifndef QVIS_QVIS_H_
#define QVIS_QVIS_H_

// Platform-shaped value types.
#include "qvis/compat/compat.h"
#include "qvis/compat/redraw.h"

// Utilities, geometry, units and view coordinates.
#include "qvis/util/ex_ptr_array.h"
#include "qvis/util/string_utility.h"
#include "qvis/geometry/value_types.h"
#include "qvis/geometry/kernel.h"
#include "qvis/geometry/distance.h"
#include "qvis/geometry/line_outline.h"
#include "qvis/geometry/num_support.h"
#include "qvis/coords/unit_mgr.h"
#include "qvis/coords/view_coords.h"

// The device layer.
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/alpha.h"
#include "qvis/gdi/png_io.h"

// Rendering: the drawing surface, its caches, grid/snap and cursor display.
#include "qvis/render/gdi_objects.h"
#include "qvis/render/object_caches.h"
#include "qvis/render/surface.h"
#include "qvis/render/grid_snap_display.h"
#include "qvis/render/cursor_display.h"

// Interactive commands.
#include "qvis/commands/point_cmd.h"
#include "qvis/commands/line_cmd.h"
#include "qvis/commands/polygon_cmd.h"
#include "qvis/commands/circle_cmd.h"
#include "qvis/commands/arc_cmd.h"
#include "qvis/commands/rect_cmd.h"
#include "qvis/commands/select_cmd.h"
#include "qvis/commands/flash_cmd.h"

// Design, design file, extents, zoom box, mouse pan, render buffer.
#include "qvis/design/max_region_info.h"
#include "qvis/design/zoom_mgr.h"
#include "qvis/design/mouse_pan_mgr.h"
#include "qvis/design/render_buffer.h"
#include "qvis/design/design.h"

// The drawing window and its ports.
#include "qvis/window/window_port.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/headless/headless_port.h"

#endif  // QVIS_QVIS_H_
