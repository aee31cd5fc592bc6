# Cross-build for 64-bit Windows with MinGW-w64 (the -posix thread model, which has std::thread
# and std::mutex in GCC 12). Use:
#   cmake -S . -B build/mingw -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-x86_64.cmake
# Test executables run through Wine (CMAKE_CROSSCOMPILING_EMULATOR) when a wine64 loader is found.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(_qvis_triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${_qvis_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${_qvis_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${_qvis_triple}-windres)
set(CMAKE_AR ${_qvis_triple}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB ${_qvis_triple}-gcc-ranlib-posix CACHE FILEPATH "")

set(CMAKE_FIND_ROOT_PATH /usr/${_qvis_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The GCC runtime (libstdc++, libgcc, libwinpthread) is linked into every executable and DLL, so
# nothing has to be copied beside them to run.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -Wl,-Bstatic,--whole-archive -lwinpthread -Wl,--no-whole-archive,-Bdynamic")

# Wine runs the test executables; Debian keeps the 64-bit loader outside PATH.
if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
  find_program(QVIS_WINE64 NAMES wine64 PATHS /usr/lib/wine /usr/lib64/wine NO_CMAKE_FIND_ROOT_PATH)
  if(QVIS_WINE64)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${QVIS_WINE64})
  endif()
endif()
