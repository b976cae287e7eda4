#!/bin/sh
# applications.sh BUILD_DIR WORK_DIR COMPILER SUPPORT_DIR EMULATOR...: two applications, compiled apart
# from the library and unlike it, load it from where it is installed, work with it and unload it.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=$1 work=$2 compiler=$3 support=$4
shift 4

rm -rf "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cp -R "$here" "$work/sources"
cd "$work/prefix/bin"
for application in transforming:-O0 multilooking:-O2; do
  name=${application%:*}
  "$compiler" -std=c++17 "${application#*:}" -mlong-double-64 -static -Wall -Wextra -Werror \
    -I"$work/prefix/include" -I"$support" -o "$name.exe" "$work/sources/$name.cpp"
  "$@" "./$name.exe"
done
cd /
rm -rf "$work"
