#!/usr/bin/env bash
# make_packages.sh CPACK BUILD WORK: makes the Debian packages of the build in WORK, and looks at them.
set -euo pipefail
cpack=$1 build=$2 work=$3
rm -rf "$work"
(cd "$build" && "$cpack" -G DEB -B "$work")
bash "$(dirname "${BASH_SOURCE[0]}")/../../packaging/check_packages.sh" "$work"
