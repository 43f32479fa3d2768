#!/usr/bin/env bash
# check_packages.sh FOLDER: the Debian packages in FOLDER say what they are and what they take.
set -euo pipefail
folder=$1
failed=0
complain() {
  echo "check_packages.sh: $*" >&2
  failed=1
}
field() { dpkg-deb -f "$folder/$1"_*.deb "$2"; }

# takes PACKAGE OTHER: without OTHER the package is of no use.
takes() {
  field "$1" Depends | tr ',' '\n' | grep "^ *$2\\( \\|$\\)" >/dev/null ||
    complain "$1 does not depend on $2"
}
takes jtpdf libjtpdf2
takes jtpdf libjpeg62-turbo
takes libjtpdf-dev libjtpdf2
takes libjtpdf2 libc6
takes libjtpdf-pictures0 libjtpdf2
takes libjtpdf-pictures0 libjpeg62-turbo
takes libjtpdf-pictures-dev libjtpdf-pictures0
takes libjtpdf-pictures-dev libjtpdf-dev
takes python3-jtpdf libjtpdf2
takes python3-jtpdf python3

synopses=$(for package in "$folder"/*.deb; do dpkg-deb -f "$package" Description | sed -n 1p; done)
[ -z "$(sort <<<"$synopses" | uniq -d)" ] || complain "packages share a synopsis:"$'\n'"$synopses"
[ "$(wc -l <<<"$synopses")" -eq 7 ] || complain "there are not seven packages in $folder"

# What Python compiles is made and taken away with the package.
for script in postinst prerm; do
  dpkg-deb -I "$folder"/python3-jtpdf_*.deb "$script" | grep 'py3.* -p python3-jtpdf' >/dev/null ||
    complain "python3-jtpdf has no $script for its compiled modules"
done
exit $failed
