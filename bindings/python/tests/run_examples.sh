#!/usr/bin/env bash
# run_examples.sh PYTHON IMAGE DIRECTORY [QPDF]: runs the examples; QPDF checks what they wrote.
set -euo pipefail
python=$1 image=$2 directory=$3 qpdf=${4:-}
examples=$(cd "$(dirname "${BASH_SOURCE[0]}")/../examples" && pwd)

rm -rf "$directory"
mkdir -p "$directory"
"$python" "$examples/pillow_page.py" "$image" "$directory/pillow.pdf"
"$python" "$examples/numpy_page.py" "$directory/numpy.pdf"
for file in "$directory"/{pillow,numpy}.pdf; do
  grep -aq '^%%EOF' "$file"
  [ -z "$qpdf" ] || "$qpdf" --check "$file"
done
