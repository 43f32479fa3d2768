#!/usr/bin/env bash
# build_wheel.sh LIBRARY DIRECTORY [PYTHON]: makes the wheel of the package around the shared library
# LIBRARY, in DIRECTORY. Needs the modules build, setuptools and wheel of PYTHON (python3), and
# nothing from the network.
set -euo pipefail
library=$1 directory=$2 python=${3:-python3}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# In a copy: setuptools leaves its work behind, and the library is no source.
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
cp -r "$here"/{pyproject.toml,setup.py,README.md,src} "$copy"
find "$copy" -name __pycache__ -prune -exec rm -rf {} +
cp -L "$library" "$copy/src/jtpdf/libjtpdf.so.2"
"$python" -m build --wheel --no-isolation --outdir "$directory" "$copy" >"$copy/log" 2>&1 || {
  cat "$copy/log" >&2
  exit 1
}
ls "$directory"/jtpdf-*.whl
