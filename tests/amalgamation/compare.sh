#!/usr/bin/env bash
# compare.sh SOURCES WORK PYTHON GOLDEN_HOST CC CXX [FLAGS AND OBJECTS OF THE HOST]...
# Makes the single-file form of the library in WORK (which is emptied), compiles it together with
# the golden host's objects in one call, and compares what it writes with what GOLDEN_HOST writes.
set -euo pipefail
sources=$1 work=$2 python=$3 golden_host=$4 cc=$5 cxx=$6
shift 6

rm -rf "$work"
mkdir -p "$work"/{single,shared}
"$python" "$sources/scripts/amalgamate" "$work/jtpdf"
"$python" "$sources/scripts/amalgamate" "$work/again"
diff -r "$work/jtpdf" "$work/again"

# A stranger's call, but for warnings. His directory is called jtpdf, so #include <jtpdf/jtpdf.h>
# finds the header there.
warnings=(-Wall -Wextra -Wpedantic -Werror)
"$cc" -std=c11 "${warnings[@]}" -I "$work" -fsyntax-only "$sources/examples/hello.c"
"$cxx" -std=c++17 "${warnings[@]}" -I "$work" -fsyntax-only "$sources/examples/cpp/hello.cpp"
"$cxx" -std=c++17 -O1 -ffp-contract=off "${warnings[@]}" "$work/jtpdf/jtpdf.cpp" "$@" \
  -o "$work/host"

"$work/host" all "$work/single"
"$golden_host" all "$work/shared"
diff -r "$work/single" "$work/shared"

count=$(ls "$work/single" | wc -l)
[ "$count" -gt 0 ] || { echo "the host wrote no document" >&2; exit 1; }
echo "$count documents are the same"
