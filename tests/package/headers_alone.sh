#!/bin/sh
# headers_alone.sh INCLUDE_DIR COMPILER [OPTION...]: every installed header compiles by itself as C++17,
# without a warning; with a long double that is not the library's they do not compile.
set -eu
include_dir=$1 compiler=$2
shift 2
options=$*

command -v "$compiler" >/dev/null 2>&1 || {
  echo "no $compiler here"
  exit 77
}

# check HEADER [OPTION]
check() {
  header=$1
  shift
  printf '#include "%s"\n' "$header" |
    "$compiler" $options "$@" -x c++ -std=c++17 -Wall -Wextra -Wconversion -Wshadow -pedantic -Werror \
      -fsyntax-only -I. -
}

cd "$include_dir"
headers=$(find sarnum -name '*.h')
[ -n "$headers" ]
failed=0
for header in $headers; do
  check "$header" || { echo "not by itself: $header" >&2; failed=1; }
done

case $("$compiler" $options -dumpmachine) in
  x86_64*mingw*) other_width=-mlong-double-80 ;;
  x86_64*) other_width=-mlong-double-64 ;;
  *) exit $failed ;;  # where the width cannot be chosen
esac
case $(check sarnum/sarnum.h $other_width 2>&1) in
  *'long double'*'compile with'*) ;;
  *) echo "compiles with $other_width" >&2; failed=1 ;;
esac
exit $failed
