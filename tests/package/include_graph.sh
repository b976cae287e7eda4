#!/bin/sh
# include_graph.sh SOURCE_DIR: the folders of src use each other along the allowed arrows only.
# Prints the graph. What stands in src itself, and export.h, serves all.
set -eu
cd "$1"
grep -roE '#include ["<][^">]+[">]' src include/sarnum/*/ | sed -E '
  s/^(src|include\/sarnum)\/([a-z]+)\/.*["<](\.\.\/)*(sarnum\/)?([a-z_]+)\/.*/\2 \5/
  t
  d' | sort -u | awk '
  BEGIN {
    n = split("c:fft c:numeric c:linalg c:filters c:imaging c:host filters:fft filters:numeric fft:numeric fft:elementary fft:host imaging:numeric imaging:host linalg:elementary numeric:elementary", list)
    for (i = 1; i <= n; i++) allowed[list[i]] = 1
  }
  $1 != $2 && $2 ~ /^(elementary|fft|numeric|linalg|filters|imaging|host)$/ {
    good = ($1 ":" $2) in allowed
    print $1 " -> " $2 (good ? "" : "   not allowed")
    wrong += !good
    arrows++
  }
  END { exit wrong || arrows < 5 }'
