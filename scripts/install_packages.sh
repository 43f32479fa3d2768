# Debian packages for the commands in this folder, which source this file.

# apt_get ARG...: apt-get as root, by sudo where that takes it; it asks nothing.
apt_get() {
  local -a prefix=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "$0: apt-get takes root, and there is no sudo: run this command as root" >&2
      return 1
    fi
    prefix=(sudo)
  fi
  # A mirror may be busy for a moment: try again before giving up.
  "${prefix[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o Acquire::Retries=3 \
    -o DPkg::Lock::Timeout=300 "$@"
}

# install_packages LIST...: installs the Debian packages that are named in the files LIST (one a
# line, "#" comments) and missing here, and says which.
install_packages() {
  local list name
  local -a missing=()
  for list in "$@"; do
    while read -r name; do
      [ -z "$name" ] && continue
      if [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" != installed ]; then
        missing+=("$name")
      fi
    done < <(sed 's/#.*//; s/[[:space:]]//g' "$list")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  echo "$0: installing the Debian packages ${missing[*]}"
  apt_get update
  apt_get install -y --no-install-recommends "${missing[@]}"
}
