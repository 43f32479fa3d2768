#!/usr/bin/env bash
# run_examples.sh PYTHON IMAGE DIRECTORY [QPDF]: runs the examples; QPDF checks what they wrote.
set -euo pipefail
python=$1 image=$2 directory=$3 qpdf=${4:-}
examples=$(cd "$(dirname "${BASH_SOURCE[0]}")/../examples" && pwd)

rm -rf "$directory"
mkdir -p "$directory"
"$python" "$examples/pillow_page.py" "$image" "$directory/pillow.pdf"
"$python" "$examples/numpy_page.py" "$directory/numpy.pdf"
files=("$directory"/{pillow,numpy}.pdf)
if "$python" -c 'import jtpdf; jtpdf._picture_library.library()' 2>/dev/null; then
  "$python" "$examples/contact_sheet.py" "$directory/contact.pdf" "$(dirname "$image")"/*.{jpg,png,jp2}
  files+=("$directory/contact.pdf")
fi
for file in "${files[@]}"; do
  grep -aq '^%%EOF' "$file"
  [ -z "$qpdf" ] || "$qpdf" --check "$file"
  # Every page shows its pictures.
  if command -v pdftoppm >/dev/null; then
    pages=$(grep -ac '^/Type /Page.$' "$file")
    "$python" -B "$examples/../../../examples/shows_pictures.py" "$(command -v pdftoppm)" "$file" "$pages"
  fi
done
