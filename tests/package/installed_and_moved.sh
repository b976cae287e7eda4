#!/bin/sh
# installed_and_moved.sh BUILD_DIR WORK_DIR LIBDIR VERSION COMPILER GENERATOR: what is installed works
# where it was moved to, from CMake, from pkg-config and as a tool.
set -eu
build_dir=$1 work=$2 libdir=$3 version=$4 compiler=$5 generator=$6
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work"
mkdir -p "$work"
DESTDIR="$work/stage" cmake --install "$build_dir" --prefix "/first prefix" >"$work/install.log"
mv "$work/stage/first prefix" "$work/moved prefix"
prefix="$work/moved prefix"

# No installed text may remember where it was built or first installed.
if grep -rIlF -e "$build_dir" -e "/first prefix" "$prefix"; then
  echo "these installed files hold a path of the build" >&2
  exit 1
fi

echo "== find_package"
cmake -S "$here/downstream" -B "$work/downstream" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$prefix" -DVERSION="$version" >"$work/configure.log"
cmake --build "$work/downstream"
"$work/downstream/downstream"
"$work/downstream/host_downstream"

echo "== pkg-config"
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
pkg-config --exists --print-errors "sarnum = $version"
# Its output is text for a shell, with the blanks of a path escaped; hence the eval.
eval "\"\$compiler\" -std=c++17 \"\$here/downstream/main.cpp\" -o \"\$work/by_pkg_config\" \
  $(pkg-config --cflags --libs sarnum)"
LD_LIBRARY_PATH="$prefix/$libdir" "$work/by_pkg_config"

echo "== the tool"
"$prefix/bin/sarnum" --version
for library in libsarnum.so libsarnum_host.so; do
  ldd "$prefix/bin/sarnum" | grep -F "$library" | grep -qF "$prefix/" || {
    echo "the moved tool does not use the $library beside it" >&2
    exit 1
  }
done

packages="$prefix/lib/python3/dist-packages"
if [ -d "$packages" ]; then
  echo "== the Python module"
  PYTHONPATH="$packages" PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -m sarnum
fi

rm -rf "$work"
