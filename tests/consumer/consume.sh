#!/usr/bin/env bash
# Builds and runs the stranger's project: consume.sh find_package|static|pkg_config|
# add_subdirectory SOURCE WORK. Everything happens below WORK, which is made anew.
set -euo pipefail
way=$1 source=$2 work=$3
rm -rf "$work"
mkdir -p "$work"
project=$(cd "$(dirname "${BASH_SOURCE[0]}")/project" && pwd)

stage() {
  cmake -G Ninja -S "$source" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
    -DJTPDF_BUILD_TOOLS=OFF -DJTPDF_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX="$work/first" "$@" \
    >/dev/null
  cmake --build "$work/build"
  cmake --install "$work/build" >/dev/null
  # Nothing in the installed tree may know where it was installed.
  mv "$work/first" "$work/stage dir"
  if grep -rIl "$work" "$work/stage dir"; then
    echo "consume.sh: the files above hold the folder that they were installed to" >&2
    exit 1
  fi
}

case $way in
  find_package)
    stage
    cmake -G Ninja -S "$project" -B "$work/host" -DCMAKE_PREFIX_PATH="$work/stage dir" >/dev/null
    cmake --build "$work/host"
    "$work/host/host"
    ;;
  static)
    stage -DJTPDF_BUILD_STATIC=ON
    # The component that is not asked for may be missing.
    find "$work/stage dir" -name 'libjtpdf.so*' -delete
    find "$work/stage dir" -name 'jtpdfSharedTargets*' -delete
    cmake -G Ninja -S "$project" -B "$work/host" -DCMAKE_PREFIX_PATH="$work/stage dir" \
      -DJTPDF_COMPONENT=static >/dev/null
    cmake --build "$work/host"
    "$work/host/host"
    ;;
  pkg_config)
    stage
    library=$(dirname "$(find "$work/stage dir" -name libjtpdf.so)")
    export PKG_CONFIG_PATH="$library/pkgconfig"
    eval "flags=($(pkg-config --cflags --libs jtpdf))"
    "${CC:-cc}" -std=c11 -Wall -Wextra -Werror "$project/host.c" -o "$work/host" "${flags[@]}"
    LD_LIBRARY_PATH="$library" "$work/host"
    [ "$(pkg-config --modversion jtpdf)" = 2.1.6 ]
    ;;
  add_subdirectory)
    cmake -G Ninja -S "$project" -B "$work/host" -DJTPDF_SOURCE="$source" >/dev/null
    cmake --build "$work/host"
    "$work/host/host"
    ;;
  *)
    echo "consume.sh: unknown way '$way': use find_package, static, pkg_config or add_subdirectory" >&2
    exit 2
    ;;
esac
