#!/usr/bin/env bash
# install_wheel.sh PYTHON LIBRARY WORK [PICTURES]: installs the package with the shared library LIBRARY,
# and that of PICTURES, offline, into the fresh virtual environment WORK/venv, as a stranger would.
set -euo pipefail
python=$1 library=$2 work=$3
package=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

rm -rf "$work"
mkdir -p "$work"
"$python" -m venv "$work/venv"
JTPDF_LIBRARY=$library JTPDF_PICTURES_LIBRARY=${4:-} PYTHONDONTWRITEBYTECODE=1 "$work/venv/bin/python" -m pip install -q --no-index \
  --disable-pip-version-check "$package"
# For interpreters other than the environment's.
ln -s "$("$work/venv/bin/python" -c 'import sysconfig; print(sysconfig.get_path("platlib"))')" \
  "$work/site-packages"
