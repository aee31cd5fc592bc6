#!/usr/bin/env bash
# Builds and runs tests/consumer, a host project outside the library tree, against qvis in each
# way a host can take it:
#   1. an installed static qvis, with find_package(qvis CONFIG REQUIRED);
#   2. the same prefix, with nothing but `pkg-config --cflags --libs qvis`;
#   3. qvis as a subproject (add_subdirectory ... EXCLUDE_FROM_ALL), built as libqvis.so;
#   4. that shared build installed (hidden visibility: a missing QVIS_API fails the host's link),
#      with find_package and with pkg-config.
# The static prefix is installed from an existing build tree when one is given (./test.sh passes
# its Release tree); the subproject is built in build/consumer-subproject.
# Also checks that the snippets of the README's "Use qvis from your project" are these files.
#
#   scripts/consumer_test.sh [static-build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
jobs=$(nproc 2>/dev/null || echo 2)
cxx=${CXX:-c++}
launcher=()
if command -v ccache >/dev/null 2>&1; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
# The host compiles qvis's installed headers with every warning as an error.
host_flags=(-DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Werror")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

step() { echo "-- consumer: $*"; }

# The README snippets must be found, line for line (indentation aside), in the consumer project.
check_readme_snippets() {
  local cmake_file main_file n=0
  cmake_file=$(sed 's/^[[:space:]]*//' tests/consumer/CMakeLists.txt)
  main_file=$(sed 's/^[[:space:]]*//' tests/consumer/main.cc)
  while IFS= read -r -d '' block; do
    block=$(sed 's/^[[:space:]]*//' <<<"$block")
    n=$((n + 1))
    if [[ "$cmake_file" != *"$block"* && "$main_file" != *"$block"* && \
          "$block" != *'pkg-config --cflags --libs qvis'* ]]; then
      echo "consumer: README snippet $n is not in tests/consumer:" >&2
      echo "$block" >&2
      return 1
    fi
  done < <(awk '
      /^## Use qvis from your project/ { on = 1; next }
      /^## / { on = 0 }
      on && /^```/ { if (inblock) { printf "%s%c", buf, 0; buf = ""; inblock = 0 } else inblock = 1; next }
      on && inblock { buf = buf (buf == "" ? "" : "\n") $0 }
    ' README.md)
  if ((n < 3)); then
    echo "consumer: expected the subproject, package and pkg-config snippets in README.md" >&2
    return 1
  fi
  # The pkg-config command the README gives is the one run below.
  grep -qF "$pkgconfig_line" README.md || {
    echo "consumer: README.md does not give: $pkgconfig_line" >&2; return 1; }
}

# build_with_package <prefix> <name>: the consumer's CMake project against an installed prefix.
build_with_package() {
  cmake -S tests/consumer -B "$work/$2" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$1" "${host_flags[@]}" "${launcher[@]}" >/dev/null
  cmake --build "$work/$2" -j "$jobs" >/dev/null
  "$work/$2/board_host" "$work"
}

# build_with_pkgconfig <prefix> <name>: only the compiler and pkg-config, as the README shows.
pkgconfig_line='c++ -std=c++20 main.cc $(pkg-config --cflags --libs qvis) -o board_host'
build_with_pkgconfig() {
  local pcdir
  pcdir=$(dirname "$(find "$1" -name qvis.pc -print -quit)")
  mkdir -p "$work/$2"
  (cd tests/consumer &&
   PKG_CONFIG_PATH="$pcdir" CXX="$cxx" bash -c "${pkgconfig_line/#c++/\$CXX} -o '$work/$2/board_host'")
  LD_LIBRARY_PATH="$1/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" "$work/$2/board_host" "$work"
}

check_readme_snippets

# 1, 2: the static library from the given build tree (or a library-only build of our own).
static_build=${1:-}
if [[ -z "$static_build" ]]; then
  static_build=build/consumer-static
  cmake -S . -B "$static_build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVIS_BUILD_TESTS=OFF \
    -DQVIS_BUILD_APPS=OFF "${launcher[@]}" >/dev/null
fi
step "static library, installed"
cmake --build "$static_build" -j "$jobs" --target qvis >/dev/null
cmake --install "$static_build" --prefix "$work/static" >/dev/null
[[ -f "$work/static/lib/libqvis.a" && -f "$work/static/include/qvis/qvis.h" && \
   -f "$work/static/lib/cmake/qvis/qvisConfig.cmake" && \
   -f "$work/static/lib/cmake/qvis/qvisConfigVersion.cmake" ]] || {
  echo "consumer: the static install lacks the library, headers or package files" >&2; exit 1; }
step "static library, find_package(qvis)"
build_with_package "$work/static" static-cmake
step "static library, pkg-config"
build_with_pkgconfig "$work/static" static-pc

# 3: qvis as a subproject of the host's own tree, built as a shared library (with its install
# rules on): the host links libqvis.so from the build tree, and the same build, installed, is the
# shared prefix. One library build serves both, which keeps the stage short.
step "subproject, shared library"
cmake -S tests/consumer -B build/consumer-subproject -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DQVIS_CHECKOUT="$root" -DBUILD_SHARED_LIBS=ON -DQVIS_INSTALL=ON \
  "${host_flags[@]}" "${launcher[@]}" >/dev/null
cmake --build build/consumer-subproject -j "$jobs" >/dev/null
ldd build/consumer-subproject/board_host | grep 'libqvis\.so' >/dev/null || {
  echo "consumer: the subproject host does not use libqvis.so" >&2; exit 1; }
build/consumer-subproject/board_host "$work"

# 4: the shared library installed.
step "shared library, installed"
# (the host tree adds qvis EXCLUDE_FROM_ALL, so its own install skips qvis: install that folder)
cmake --install build/consumer-subproject/qvis --prefix "$work/shared" >/dev/null
soname=$(readelf -d "$work/shared/lib/libqvis.so" | sed -n 's/.*Library soname: \[\(.*\)\].*/\1/p')
[[ "$soname" == libqvis.so.* && -f "$work/shared/lib/$soname" ]] || {
  echo "consumer: libqvis.so has no versioned SONAME (got '$soname')" >&2; exit 1; }
# Only what QVIS_API marks is exported: the internal helpers (rubber bands, font faces) stay inside.
if nm -DC --defined-only "$work/shared/lib/libqvis.so" | grep -E 'qvis::(RubberBand|gdi::FontFace)::' >/dev/null; then
  echo "consumer: libqvis.so exports internals" >&2; exit 1
fi
step "shared library, find_package(qvis)"
build_with_package "$work/shared" shared-cmake
ldd "$work/shared-cmake/board_host" | grep "$work/shared/lib/$soname" >/dev/null || {
  echo "consumer: board_host does not use the installed $soname" >&2; exit 1; }
step "shared library, pkg-config"
build_with_pkgconfig "$work/shared" shared-pc
echo "-- consumer: all host builds passed"
