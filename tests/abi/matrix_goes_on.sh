#!/usr/bin/env bash
# matrix_goes_on.sh SOURCES WORK: scripts/build-matrix prints every row, whatever one of them shows, and
# says in the end that not all are the same; in the docs a row that is not run keeps its line. Runs it in
# WORK on a library of one document.
set -euo pipefail
sources=$1 work=$2

rm -rf "$work"
mkdir -p "$work"/{scripts,docs,src/room,include,tests/golden/files}
cp "$sources"/scripts/{build-matrix,install_packages.sh,write_block.py} "$work/scripts"
cd "$work"
echo 'const char* Text() { return "the bytes\n"; }' >src/room/text.cpp
cat >tests/golden/golden_host.cpp <<'HOST'
#include <fstream>
#include <string>
const char* Text();
int main(int, char** arguments) { std::ofstream(arguments[2] + std::string("/a.pdf")) << Text(); }
HOST
for file in a_document a_documents image_data; do : >"tests/golden/$file.cpp"; done

try() {
  printf '%s\n' "$1" >tests/golden/files/a.pdf
  code=0
  scripts/build-matrix --no-install gcc-O0 gcc-O2 >table || code=$?
  if [ $code -ne "$2" ] || [ "$(grep -c "$3" table)" -ne 2 ]; then
    echo "exit code $code, and not two rows with '$3':" >&2
    cat table >&2
    exit 1
  fi
}
try 'the bytes' 0 ' same$'
try 'the Bytes' 1 'differs: .*byte 5'

cat >docs/testing.md <<'PAGE'
<!-- build matrix begin: written by scripts/build-matrix -->
| gcc-O0 | of an older run |
| wasm | of an older run |
<!-- build matrix end -->
PAGE
echo 'the bytes' >tests/golden/files/a.pdf
scripts/build-matrix --no-install --write-docs gcc-O0 >table
if ! grep -q '^| gcc-O0 .*| same |$' docs/testing.md || ! grep -q '^| wasm | of an' docs/testing.md ||
  [ "$(grep -c '^| [a-z]' docs/testing.md)" -ne 3 ]; then
  echo 'the page has not the row that was run and the one that was not:' >&2
  cat docs/testing.md >&2
  exit 1
fi

echo 'syntax error' >src/room/text.cpp
try 'the bytes' 1 'does not build: .*error'
