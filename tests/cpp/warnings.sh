#!/usr/bin/env bash
# warnings.sh INCLUDE_DIR SOURCE...: every compiler that is here takes the sources without a
# warning, as C++17 and as C++20.
set -euo pipefail
include=$1
shift

sources=("${@/#/-include}")
flags=(-fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
  -Wold-style-cast -Wnon-virtual-dtor -Werror)
tried=0
for compiler in g++ clang++; do
  command -v "$compiler" >/dev/null || continue
  for standard in 17 20; do
    # All in one go: most of the time goes into the headers.
    "$compiler" -std=c++$standard "${flags[@]}" -I "$include" "${sources[@]}" -x c++ /dev/null
    echo "$compiler, C++$standard: no warning"
    tried=$((tried + 1))
  done
done
[ "$tried" -gt 0 ] || { echo "neither g++ nor clang++ was found" >&2; exit 1; }
