#!/bin/sh
# subdirectory.sh SOURCE_DIR WORK_DIR COMPILER GENERATOR: another project can take sarnum in by
# add_subdirectory, and gets the library alone (no tool, no tests). What is built here stays: its
# libraries with debug information are what interface.sh looks at.
set -eu
source_dir=$1 work=$2 compiler=$3 generator=$4
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work"
cmake -S "$here/subdirectory" -B "$work" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_BUILD_TYPE=Debug -DSARNUM_SOURCES="$source_dir" >/dev/null
cmake --build "$work"
"$work/downstream"
if [ -e "$work/sarnum/tools" ]; then
  echo "the tool was configured although sarnum is not the top project" >&2
  exit 1
fi
