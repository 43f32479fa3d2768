# A bare Debian 12 to try things in. Sourced, behind install_packages.sh, by commands in this folder.

# make_clean_root FOLDER: makes it by debootstrap, which takes root.
make_clean_root() {
  if [ "$(id -u)" -ne 0 ]; then
    echo "$0: run it as root, which debootstrap and chroot take" >&2
    return 1
  fi
  install_packages scripts/packages/root.txt
  rm -rf --one-file-system "$1"
  mkdir -p "$1"
  # By another name: debootstrap does not take one with blanks.
  local place
  place=$(mktemp -d)
  ln -s "$1" "$place/root"
  debootstrap --variant=minbase bookworm "$place/root" http://deb.debian.org/debian >"$1.log" || {
    cat "$1.log" >&2
    return 1
  }
  rm -r "$place"
  cp /etc/resolv.conf /etc/hosts "$1/etc/"
}

# in_clean_root FOLDER COMMAND...: runs the command in there, with nothing of our environment.
in_clean_root() (
  root=$1
  shift
  mount -t proc proc "$root/proc"
  trap 'umount "$root/proc"' EXIT
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 chroot "$root" "$@"
)
