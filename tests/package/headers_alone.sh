#!/bin/sh
# headers_alone.sh INCLUDE_DIR COMPILER [OPTION...]: every installed header compiles by itself as C++17,
# without a warning, c.h as C99 too, and cxx.hpp as C++20, where it has std::span. With a long double that
# is not the library's the headers that have it do not compile.
set -eu
include_dir=$1 compiler=$2
shift 2
options=$*

command -v "$compiler" >/dev/null 2>&1 || {
  echo "no $compiler here"
  exit 77
}

# check HEADER LANGUAGE STANDARD [OPTION]
check() {
  header=$1 language=$2 standard=$3
  shift 3
  printf '#include "%s"\n' "$header" |
    "$compiler" $options "$@" -x "$language" -std="$standard" -Wall -Wextra -Wconversion -Wshadow -pedantic \
      -Werror -fsyntax-only -I. -
}

alone() {
  check "$@" || { echo "not by itself: $1 as $3" >&2; failed=1; }
}

cd "$include_dir"
headers=$(find sarnum -name '*.h' -o -name '*.hpp')
[ -n "$headers" ]
failed=0
for header in $headers; do
  alone "$header" c++ c++17
done
alone sarnum/c.h c c99
alone sarnum/cxx.hpp c++ c++20

case $("$compiler" $options -dumpmachine) in
  x86_64*mingw*) other_width=-mlong-double-80 ;;
  x86_64*) other_width=-mlong-double-64 ;;
  *) exit $failed ;;  # where the width cannot be chosen
esac
case $(check sarnum/sarnum.h c++ c++17 $other_width 2>&1) in
  *'long double'*'compile with'*) ;;
  *) echo "compiles with $other_width" >&2; failed=1 ;;
esac
exit $failed
