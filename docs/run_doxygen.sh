#!/bin/sh
# run_doxygen.sh DOXYGEN SOURCE_DIR BUILD_DIR: runs it where SOURCE_DIR is called sources and BUILD_DIR,
# which holds the Doxyfile, build. (It loses the links between pages whose path has a blank.)
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
ln -s "$2" "$folder/sources"
ln -s "$3" "$folder/build"
cd "$folder"
"$1" build/Doxyfile
