#!/bin/sh
# exported_symbols.sh LIBRARY LIST [--renew]: the library exports the names in the list and no
# other. A name that went or changed breaks programs linked with an earlier build; one that came
# is a promise. With --renew the list is written anew (then read the difference).
set -eu
library=$1 list=$2

# Compilers differ in how often they emit a constructor, and in weak or strong, but not in names.
exported() {
  nm -D --defined-only -C "$library" | sed -E "/ A /d; s/^[0-9a-f]* *[A-Za-z] //" | LC_ALL=C sort -u
}

if [ "${3:-}" = --renew ]; then
  exported >"$list"
else
  exported | diff -u "$list" - || {
    echo "the exported symbols of $library differ from $list" >&2
    exit 1
  }
fi
