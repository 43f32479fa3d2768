#!/usr/bin/env bash
# install_wheel.sh PYTHON LIBRARY WORK: builds the wheel around LIBRARY, offline, and installs it
# into the fresh virtual environment WORK/venv, as a stranger would.
set -euo pipefail
python=$1 library=$2 work=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

rm -rf "$work"
mkdir -p "$work"
wheel=$("$here/../build_wheel.sh" "$library" "$work" "$python")
"$python" -m venv "$work/venv"
"$work/venv/bin/python" -m pip install -q --no-index --no-deps --disable-pip-version-check "$wheel"
# For interpreters other than the environment's.
ln -s "$("$work/venv/bin/python" -c 'import sysconfig; print(sysconfig.get_path("platlib"))')" \
  "$work/site-packages"
echo "installed ${wheel##*/}"
