#!/bin/sh
# headers_alone.sh INCLUDE_DIR COMPILER [OPTION...]: every installed header compiles by itself as C++17,
# without a warning.
set -eu
include_dir=$1 compiler=$2
shift 2

command -v "$compiler" >/dev/null 2>&1 || {
  echo "no $compiler here"
  exit 77
}

cd "$include_dir"
headers=$(find sarnum -name '*.h')
[ -n "$headers" ]
failed=0
for header in $headers; do
  printf '#include "%s"\n' "$header" |
    "$compiler" "$@" -x c++ -std=c++17 -Wall -Wextra -Wconversion -Wshadow -pedantic -Werror \
      -fsyntax-only -I. - || { echo "not by itself: $header" >&2; failed=1; }
done
exit $failed
