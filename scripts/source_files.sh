# The project's files, in a checkout and in the source tarball. Sourced by commands in this folder.

# source_files: prints their names, a NUL behind each, sorted. A checkout's are those that git knows;
# the tarball holds nothing else until something is built.
source_files() {
  if [ -e .git ]; then
    git -c safe.directory="$PWD" ls-files -z
  else
    find . -path ./build -prune -o -name __pycache__ -prune -o \( -type f -o -type l \) -printf '%P\0'
  fi | LC_ALL=C sort -z
}
