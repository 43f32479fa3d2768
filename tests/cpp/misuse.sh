#!/usr/bin/env bash
# misuse.sh COMPILER INCLUDE_DIR SOURCE: the compiler finds an error in each line of the source that
# ends in "// not:" and a reason, and in no other.
set -euo pipefail
compiler=$1 include=$2 source=$3

compile() {
  "$compiler" -std=c++17 -I "$include" -fsyntax-only "$@" "$source" 2>&1
}

compile
expected=$(grep -n '; *// not:' "$source" | cut -d: -f1)
# An error inside a template is reported there, with a note about the line that uses it.
complaints=$(! compile -D MISUSE)
found=$(grep -oE "$source:[0-9]+:[0-9]+: (error|note: in instantiation| +required from here)" \
  <<<"$complaints" | cut -d: -f2 | sort -nu)
if [ -z "$expected" ] || [ "$expected" != "$found" ]; then
  printf '%s\nerrors are due in the lines\n%s\nand were found in\n%s\n' "$complaints" "$expected" \
    "$found" >&2
  exit 1
fi
echo "errors in the lines" $found
