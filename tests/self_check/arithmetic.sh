#!/bin/sh
# arithmetic.sh HEADER BUILD_DIR COMPILER: no source of the library compiles with options that change
# values, for each is compiled with the header that refuses them.
set -eu
header=$1 build=$2 compiler=$3
compile() { "$compiler" -std=c++20 -include "$header" "$@" -fsyntax-only -x c++ /dev/null 2>&1; }
compile
for option in -ffast-math -Ofast -ffinite-math-only; do
  if compile "$option" >/dev/null; then
    echo "a source compiles with $option" >&2
    exit 1
  fi
done
commands=$(ninja -C "$build" -t commands sarnum sarnum_host | grep -- ' -c ')
other=$(printf '%s\n' "$commands" | grep -v -- "-ffp-contract=off.* -include \"\\?$header") || true
[ -z "$other" ] || { printf 'compiled otherwise:\n%s\n' "$other" >&2; exit 1; }
