#!/usr/bin/env bash
# too_old.sh INCLUDE_DIR: with C++14, every compiler that is here finds one error in the C++ face, which
# says what it takes, and none in the C interface.
set -euo pipefail
include=$1

tried=0
for compiler in g++ clang++; do
  command -v "$compiler" >/dev/null || continue
  compile() { "$compiler" -std=c++14 -fsyntax-only -I "$include" -x c++ /dev/null -include "$1" 2>&1; }
  compile jtpdf/jtpdf.h
  complaints=$(! compile jtpdf/jtpdf.hpp)
  errors=$(grep ' error: ' <<<"$complaints" || true)
  if [ "$(wc -l <<<"$errors")" -ne 1 ] || ! grep -q 'C++17' <<<"$errors"; then
    printf '%s\n' "$compiler: one error that names C++17 was due, and not this:" "$complaints" >&2
    exit 1
  fi
  echo "$compiler: ${errors#*error: }"
  tried=$((tried + 1))
done
[ "$tried" -gt 0 ] || { echo "neither g++ nor clang++ was found" >&2; exit 1; }
