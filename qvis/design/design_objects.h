// Every class the design owns, for the code that reaches into the design's managers and
// commands (the design itself, the window, hosts and tests).
#ifndef QVIS_DESIGN_DESIGN_OBJECTS_H_
#define QVIS_DESIGN_DESIGN_OBJECTS_H_

#include "qvis/commands/arc_cmd.h"
#include "qvis/commands/circle_cmd.h"
#include "qvis/commands/flash_cmd.h"
#include "qvis/commands/line_cmd.h"
#include "qvis/commands/point_cmd.h"
#include "qvis/commands/polygon_cmd.h"
#include "qvis/commands/rect_cmd.h"
#include "qvis/commands/select_cmd.h"
#include "qvis/coords/view_coords.h"
#include "qvis/design/max_region_info.h"
#include "qvis/design/mouse_pan_mgr.h"
#include "qvis/design/zoom_mgr.h"
#include "qvis/render/cursor_display.h"
#include "qvis/render/grid_snap_display.h"
#include "qvis/render/surface.h"

#endif  // QVIS_DESIGN_DESIGN_OBJECTS_H_
