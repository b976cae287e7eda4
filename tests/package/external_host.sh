#!/bin/sh
# external_host.sh SOURCE_DIR WORK_DIR COMPILER GENERATOR: the library builds on a host framework
# other than its own, does not bring its own along, and works for an application of that host.
set -eu
source_dir=$1 work=$2 compiler=$3 generator=$4
host_dir=$source_dir/examples/own_host
libdir=lib/$("$compiler" -print-multiarch)

rm -rf "$work"
mkdir -p "$work"
host="$work/libown_host.so"
"$compiler" -std=c++17 -Wall -Wextra -fPIC -shared -o "$host" "$host_dir/own_host.cpp"

cmake -S "$source_dir" -B "$work/sarnum" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_INSTALL_LIBDIR="$libdir" -DSARNUM_HOST=external \
  -DSARNUM_HOST_HEADER=own_host.h -DSARNUM_HOST_INCLUDE_DIR="$host_dir" \
  -DSARNUM_HOST_LIBRARY="$host" >"$work/configure.log"
cmake --build "$work/sarnum"
cmake --install "$work/sarnum" --prefix "$work/prefix" >"$work/install.log"
if [ -n "$(find "$work/prefix" -name '*sarnum_host*')" ]; then
  echo "the standalone host was built although another one takes its place" >&2
  exit 1
fi

echo "== find_package"
cmake -S "$host_dir" -B "$work/application" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_PREFIX_PATH="$work/prefix" -DHOST_LIBRARY="$host" >"$work/configure_application.log"
cmake --build "$work/application"
"$work/application/application"

echo "== pkg-config"
export PKG_CONFIG_PATH="$work/prefix/$libdir/pkgconfig" LD_LIBRARY_PATH="$work/prefix/$libdir:$work"
eval "\"\$compiler\" -std=c++17 \"\$host_dir/application.cpp\" -I\"\$host_dir\" -o \"\$work/by_pkg_config\" \
  $(pkg-config --cflags --libs sarnum) \"\$host\""
"$work/by_pkg_config"

rm -rf "$work"
