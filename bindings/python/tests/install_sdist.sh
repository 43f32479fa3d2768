#!/usr/bin/env bash
# install_sdist.sh PYTHON WORK: makes the source distribution of the package, which compiles the library
# where it is installed, installs it offline into the fresh virtual environment WORK/venv, and writes a
# file with it.
set -euo pipefail
python=$1 work=$2
package=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
unset JTPDF_LIBRARY JTPDF_PICTURES_LIBRARY
export PYTHONDONTWRITEBYTECODE=1

rm -rf "$work"
mkdir -p "$work"
sdist=$(cd "$package" && "$python" -c "import sys, backend; print(backend.build_sdist(sys.argv[1]))" "$work")
"$python" -m venv "$work/venv"
cd "$work" # away from the checkout
venv/bin/python -m pip install -q --no-index --disable-pip-version-check "$sdist"
venv/bin/python "$package/examples/hello.py"
grep -aq '^%%EOF' hello.pdf
venv/bin/python "$package/tests/test_package.py"
# With the decoders at hand the pictures come along.
if pkg-config --exists libjpeg libpng libtiff-4 libopenjp2 libdeflate libwebp libwebpdemux; then
  JTPDF_IMAGES=$package/../../examples/images venv/bin/python "$package/tests/test_picture_files.py"
fi
