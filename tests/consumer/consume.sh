#!/usr/bin/env bash
# consume.sh stage SOURCE WORK: installs a release build below WORK and moves the installed tree.
# consume.sh WAY SOURCE WORK LANGUAGES: builds and runs the stranger's project, in C, CXX or "C CXX".
# WAY is find_package, static or pkg_config, which take the stage, or add_subdirectory or
# fetch_content, which take the sources. WITH_PICTURES=ON asks the sources for the library of pictures.
set -euo pipefail
way=$1 source=$2 work=$3 languages=${4:-}
stage="$work/stage dir"
host="$work/$way-${languages/ /-}"
project=$(cd "$(dirname "${BASH_SOURCE[0]}")/project" && pwd)
mkdir -p "$work"

make_stage() {
  rm -rf "${work:?}"/*
  cmake -G Ninja -S "$source" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
    -DJTPDF_BUILD_STATIC=ON -DJTPDF_BUILD_TOOLS=OFF -DJTPDF_BUILD_EXAMPLES=OFF \
    -DCMAKE_INSTALL_PREFIX="$work/first" >/dev/null
  cmake --build "$work/build"
  cmake --install "$work/build" >/dev/null
  # Nothing in the installed tree may know where it was installed.
  mv "$work/first" "$stage"
  if grep -rIl "$work" "$stage"; then
    echo "consume.sh: the files above hold the folder that they were installed to" >&2
    exit 1
  fi
}

# build_project CMAKE_ARGUMENT...: builds the project below $host and runs its hosts.
build_project() {
  rm -rf "$host"
  # One translation unit for the library, so that the tests don't wait for the same sources often.
  cmake -G Ninja -S "$project" -B "$host" -DWAY="$way" -DLANGUAGES="${languages/ /;}" \
    -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0 "$@" >"$host.log" 2>&1 ||
    {
      cat "$host.log" >&2
      exit 1
    }
  cmake --build "$host"
  for language in $languages; do "$host/host_$language"; done
}

# build_project_from SOURCES: the same, with the sources in it; the project has tests of its own.
build_project_from() {
  local pictures=${WITH_PICTURES:-OFF}
  build_project -DSOURCE="$1" -DBUILD_TESTING=ON -DJTPDF_BUILD_PICTURES="$pictures"
  if [ "$pictures" = ON ]; then
    "$host/host_pictures"
  elif [ -e "$host/host_pictures" ]; then
    echo "consume.sh: the library of pictures was built, and nobody asked for it" >&2
    exit 1
  fi
  refuse_extras
}

# The stranger asked for the library: no program, no test and no install rule of ours is added.
refuse_extras() {
  if find "$host" -type f -perm -u+x ! -name 'host_*' ! -name '*.so*' ! -path '*/CMakeFiles/*' \
    ! -path '*/_deps/jtpdf-src/*' | grep . >&2; then
    echo "consume.sh: the programs above were built with the library" >&2
    exit 1
  fi
  (cd "$host" && ctest -N) | grep '^Total Tests: 0$' >/dev/null
  cmake --install "$host" --prefix "$host/installed" >/dev/null
  if [ -e "$host/installed" ]; then
    echo "consume.sh: the library installs itself with the project that takes it in" >&2
    exit 1
  fi
}

case $way in
  stage) make_stage ;;
  find_package) build_project -DCMAKE_PREFIX_PATH="$stage" ;;
  static)
    # The component that is not asked for may be missing.
    rm -rf "$host stage"
    cp -r "$stage" "$host stage"
    find "$host stage" \( -name 'libjtpdf.so*' -o -name 'jtpdfSharedTargets*' \) -delete
    build_project -DCMAKE_PREFIX_PATH="$host stage"
    ;;
  pkg_config)
    library=$(dirname "$(find "$stage" -name libjtpdf.so)")
    export PKG_CONFIG_PATH="$library/pkgconfig"
    [ "$(pkg-config --modversion jtpdf)" = "$(sed -n 's/^project(jtpdf VERSION \([0-9.]*\).*/\1/p' \
      "$source/CMakeLists.txt")" ]
    mkdir -p "$host"
    for language in $languages; do
      case $language in
        C) compile=("${CC:-cc}" -std=c11 "$project/host.c") ;;
        CXX) compile=("${CXX:-c++}" -std=c++17 "$project/host.cpp") ;;
      esac
      eval "flags=($(pkg-config --cflags --libs jtpdf))"
      "${compile[@]}" -Wall -Wextra -Werror -o "$host/host_$language" "${flags[@]}"
      LD_LIBRARY_PATH="$library" "$host/host_$language"
      # With the archive in it, the program needs no library of ours.
      eval "flags=($(pkg-config --static --cflags --libs jtpdf))"
      flags=("${flags[@]/-ljtpdf/-l:libjtpdf.a}")
      "${compile[@]}" -Wall -Wextra -Werror -o "$host/static_$language" "${flags[@]}"
      "$host/static_$language"
    done
    ;;
  add_subdirectory)
    build_project_from "$source"
    ;;
  fetch_content)
    tar -C "$source" --exclude=./build --exclude=./.git -cf "$work/sources.tar" .
    build_project_from "$work/sources.tar"
    ;;
  *)
    echo "consume.sh: unknown way '$way'" >&2
    exit 2
    ;;
esac
