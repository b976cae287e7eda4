#!/bin/sh
# interface.sh LIBRARY DUMP [--renew]: what programs compiled against the library know of it (sizes
# and members of classes, virtual functions, types of arguments) is what the dump says. LIBRARY has
# debug information. With --renew the dump is written anew (then read the difference).
set -eu
library=$1 dump=$2 suppressions=$(dirname "$0")/interface.suppr

command -v abidiff >/dev/null 2>&1 || { echo "no abidiff here"; exit 77; }
[ "$(uname -m)" = x86_64 ] || { echo "the dump is of x86_64"; exit 77; }

if [ "${3:-}" = --renew ]; then
  # Nothing of the place that it was built in.
  abidw --suppr "$suppressions" --exported-interfaces-only --no-corpus-path --no-comp-dir-path \
    --no-show-locs --no-parameter-names --no-elf-needed --type-id-style hash "$library" |
    sed "s| path='[^']*/src/| path='|" >"$dump"
else
  abidiff --suppr "$suppressions" "$dump" "$library" || {
    echo "the interface of $library differs from $dump" >&2
    exit 1
  }
fi
