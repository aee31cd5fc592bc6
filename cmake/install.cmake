# Install rules: the public headers under include/qvis/ (the same include paths as in this tree),
# libqvis, the CMake package (find_package(qvis CONFIG), target qvis::qvis) and qvis.pc.
include(CMakePackageConfigHelpers)

# The public surface: qvis/qvis.h, every header it includes (followed to the end, so a header
# that a public one starts to include is installed with it), the Win32 macro names and the
# headless port. Headers outside that closure (raster internals, test canvases, *_internal.h)
# stay in the tree. The generated export header is installed separately below.
set(_qvis_todo qvis/qvis.h qvis/compat/win32_names.h qvis/window/headless/headless_port.h)
set(QVIS_PUBLIC_HEADERS "")
while(_qvis_todo)
  list(POP_FRONT _qvis_todo _h)
  if(_h IN_LIST QVIS_PUBLIC_HEADERS OR _h STREQUAL "qvis/compat/export.h"
     OR NOT EXISTS ${PROJECT_SOURCE_DIR}/${_h})
    continue()
  endif()
  list(APPEND QVIS_PUBLIC_HEADERS ${_h})
  file(STRINGS ${PROJECT_SOURCE_DIR}/${_h} _incs REGEX "^[ \t]*#[ \t]*include[ \t]+[\"<]qvis/")
  foreach(_l IN LISTS _incs)
    string(REGEX REPLACE "^[^\"<]*[\"<](qvis/[^\">]+)[\">].*$" "\\1" _i "${_l}")
    list(APPEND _qvis_todo ${_i})
  endforeach()
endwhile()
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
  set(QVIS_PC_REQUIRES_PRIVATE "freetype2 fontconfig libpng zlib")
  set(QVIS_PC_LIBS "-L\${libdir} -lqvis")
  set(QVIS_PC_LIBS_PRIVATE "-pthread")
else()
  # A static libqvis.a cannot be linked without them: they are part of every link.
  set(QVIS_PC_REQUIRES "freetype2 fontconfig libpng zlib")
  set(QVIS_PC_REQUIRES_PRIVATE "")
  set(QVIS_PC_LIBS "-L\${libdir} -lqvis -pthread")
  set(QVIS_PC_LIBS_PRIVATE "")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/qvis.pc.in ${PROJECT_BINARY_DIR}/qvis.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qvis.pc DESTINATION ${QVIS_PC_DIR}
        COMPONENT qvis_development)
