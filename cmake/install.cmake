# Install rules: the public headers under include/qvis/ (the same include paths as in this tree),
# libqvis, the CMake package (find_package(qvis CONFIG), target qvis::qvis) and qvis.pc.
include(CMakePackageConfigHelpers)

# The public surface: qvis/qvis.h and every header it includes, plus the Win32 macro names.
# Headers outside this list (raster internals, test canvases, *_internal.h) stay in the tree.
set(QVIS_PUBLIC_HEADERS
  qvis/qvis.h
  qvis/compat/archive.h qvis/compat/carray.h qvis/compat/compat.h qvis/compat/cpoint.h
  qvis/compat/cstring.h qvis/compat/exceptions.h qvis/compat/handles.h
  qvis/compat/key_state.h qvis/compat/message_box.h qvis/compat/redraw.h qvis/compat/types.h
  qvis/compat/win32_names.h
  qvis/util/ex_ptr_array.h qvis/util/string_utility.h
  qvis/geometry/distance.h qvis/geometry/kernel.h qvis/geometry/line_outline.h
  qvis/geometry/num_support.h qvis/geometry/value_types.h
  qvis/coords/unit_mgr.h qvis/coords/view_coords.h
  qvis/gdi/alpha.h qvis/gdi/gdi.h qvis/gdi/png_io.h
  qvis/render/cursor_display.h qvis/render/gdi_objects.h qvis/render/grid_snap_display.h
  qvis/render/object_caches.h qvis/render/surface.h
  qvis/commands/arc_cmd.h qvis/commands/circle_cmd.h qvis/commands/flash_cmd.h
  qvis/commands/line_cmd.h qvis/commands/point_cmd.h qvis/commands/polygon_cmd.h
  qvis/commands/rect_cmd.h qvis/commands/select_cmd.h
  qvis/design/design.h qvis/design/max_region_info.h qvis/design/mouse_pan_mgr.h
  qvis/design/render_buffer.h qvis/design/zoom_mgr.h
  qvis/window/drawing_window.h qvis/window/front_buffer.h qvis/window/window_port.h
  qvis/window/headless/headless_port.h)
foreach(h IN LISTS QVIS_PUBLIC_HEADERS)
  get_filename_component(_dir ${h} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${h} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${_dir}
          COMPONENT qvis_development)
endforeach()
install(FILES ${QVIS_GENERATED_INCLUDE}/qvis/compat/export.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qvis/compat COMPONENT qvis_development)

install(TARGETS qvis EXPORT qvisTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT qvis_development
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT qvis_runtime
          NAMELINK_COMPONENT qvis_development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT qvis_runtime)

set(QVIS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvis)
install(EXPORT qvisTargets NAMESPACE qvis:: DESTINATION ${QVIS_CMAKE_DIR}
        COMPONENT qvis_development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qvisConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qvisConfig.cmake INSTALL_DESTINATION ${QVIS_CMAKE_DIR})
# Before 1.0 a minor release may change the interface: only the same major.minor matches.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qvisConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qvisConfig.cmake ${PROJECT_BINARY_DIR}/qvisConfigVersion.cmake
        DESTINATION ${QVIS_CMAKE_DIR} COMPONENT qvis_development)

# qvis.pc finds its prefix from its own place, so an installed tree may be moved.
set(QVIS_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH QVIS_PC_TO_PREFIX /prefix/${QVIS_PC_DIR} /prefix)
if(BUILD_SHARED_LIBS)
  # libqvis.so carries its own dependencies; only a static link of it (--static) needs them.
  set(QVIS_PC_REQUIRES "")
  set(QVIS_PC_REQUIRES_PRIVATE "freetype2 fontconfig libpng")
  set(QVIS_PC_LIBS "-L\${libdir} -lqvis")
  set(QVIS_PC_LIBS_PRIVATE "-pthread")
else()
  # A static libqvis.a cannot be linked without them: they are part of every link.
  set(QVIS_PC_REQUIRES "freetype2 fontconfig libpng")
  set(QVIS_PC_REQUIRES_PRIVATE "")
  set(QVIS_PC_LIBS "-L\${libdir} -lqvis -pthread")
  set(QVIS_PC_LIBS_PRIVATE "")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/qvis.pc.in ${PROJECT_BINARY_DIR}/qvis.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qvis.pc DESTINATION ${QVIS_PC_DIR}
        COMPONENT qvis_development)
