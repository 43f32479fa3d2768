# install_packages LIST...: installs the Debian packages that are named in the files LIST (one a
# line, "#" comments) and missing here, and says which. Sourced by the commands in this folder.

install_packages() {
  local list name
  local -a missing=() prefix=()
  for list in "$@"; do
    while read -r name; do
      [ -z "$name" ] && continue
      if [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" != installed ]; then
        missing+=("$name")
      fi
    done < <(sed 's/#.*//; s/[[:space:]]//g' "$list")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "$0: these Debian packages are missing, and there is no sudo to install them with;" \
        "install them as root: ${missing[*]}" >&2
      return 1
    fi
    prefix=(sudo)
  fi
  echo "$0: installing the Debian packages ${missing[*]}"
  # A mirror may be busy for a moment: try again before giving up.
  local -a apt=("${prefix[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o Acquire::Retries=3
    -o DPkg::Lock::Timeout=300)
  "${apt[@]}" update
  "${apt[@]}" install -y --no-install-recommends "${missing[@]}"
}
