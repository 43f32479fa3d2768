#!/usr/bin/env bash
# call_costs.sh HOST DIRECTORY: prints what calls cost in the C interface and in the C++ face, in
# instructions per call, and fails where the face takes noticeably more or allocates. DIRECTORY is
# emptied.
set -euo pipefail
host=$1 directory=$2

rm -rf "$directory"
mkdir -p "$directory"
valgrind -q --tool=callgrind --callgrind-out-file="$directory/out" "$host"

# Allowed is what a host would spend in its own code otherwise: the comparison of units, errno kept,
# and about ten instructions to decode a byte of UTF-8.
ls -v "$directory"/out.* | tr '\n' '\0' | xargs -0 cat | awk -v calls=100 '
  /^desc: Trigger: Client Request: / {
    sub(/.*Request: /, "")
    split($0, name, " ")
  }
  /^totals: / && name[2] != "" {
    operation = name[2]
    count[name[1], operation] = $2 / (operation == "finish" ? 1 : calls)
    text[operation] = name[3]
    if (name[1] == "c") order[++operations] = operation
    name[2] = ""
  }
  END {
    printf "%-26s%12s%12s%10s\n", "instructions per call", "C", "C++ face", "more"
    for (i = 1; i <= operations; ++i) {
      operation = order[i]
      c = count["c", operation]
      face = count["cpp", operation]
      printf "%-26s%12.0f%12.0f%10.0f\n", operation, c, face, face - c
      if (face > c * 1.02 + 60 + 15 * text[operation]) {
        print operation " costs noticeably more in the C++ face"
        failed = 1
      }
    }
    if (operations < 11) print "only " operations " operations were measured"
    exit failed || operations < 11
  }'
