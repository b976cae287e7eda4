#!/bin/sh
# clean_root.sh DEBS README.md: the Debian packages in a system that has nothing else. Installs them,
# compiles the README's two programs, runs the tool and the Python module, and removes them without
# leftovers. Needs root, debootstrap and a Debian mirror: the one that apt uses here.
#
# The system is a folder of /var/tmp, because debootstrap fails in a path that has a blank.
set -eu
debs=$1 readme=$2 log="$1/clean_root.log"
folder=$(mktemp -d /var/tmp/sarnum-clean-root.XXXXXX)
root="$folder/system"
exec 3>&1 4>&2 >"$log" 2>&1

finish() {
  status=$?
  [ $status = 0 ] || { tail -n 30 "$log"; echo "failed: see above and '$log'"; } >&4
  rm -rf --one-file-system "$folder"
  exit $status
}
trap finish EXIT
trap 'exit 1' HUP INT TERM
step() { echo "== $*"; echo "== $*" >&3; }
in_root() { DEBIAN_FRONTEND=noninteractive LC_ALL=C chroot "$root" "$@"; }

step "setting up a system"
mirror=$(apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Codename: bookworm" | head -n 1)
debootstrap --variant=minbase bookworm "$root" "$mirror"
in_root apt-get update -q
in_root apt-get install -yq --no-install-recommends g++ pkgconf libgdal32 python3-numpy
# What these packages leave behind is their own affair.
listing() { (cd "$root" && find . -xdev -not -path './var/*' -not -path './tmp/*' -not -path './proc/*' \
  -not -path './etc/ld.so.cache' | sort); }
listing >"$folder/before"

step "installing the packages"
cp "$debs"/*.deb "$root/tmp/"
in_root sh -c 'apt-get install -yq --no-install-recommends /tmp/*.deb'

step "compiling the README's programs"
# Each is followed by what it prints.
awk -v folder="$root/tmp" '
  $0 == "```cpp" { n++; file = folder "/program" n ".cpp"; next }
  $0 == "```text" { file = folder "/expected" n; next }
  $0 == "```" { if (file ~ /expected2$/) exit; file = "" }
  file { print >file }' "$readme"
in_root sh -euxc 'cd /tmp; for n in 1 2; do
  c++ program$n.cpp -o program $(pkg-config --cflags --libs sarnum); ./program | diff expected$n -; done'

step "running the tool and the Python module"
in_root sarnum --version
in_root sh -euxc 'cd /tmp; printf "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n1.5 2.5\n3.5 4.5\n" >in.asc
  sarnum multilook in.asc out.tif --looks 2x2 -q && sarnum stats out.tif'
in_root python3 -c 'import numpy, sarnum
assert sarnum.imaging.multilook(numpy.ones((4, 4), numpy.float32), 2, 2).sum() == 4.0'
for file in doc/sarnum-doc/html/index.html man/man1/sarnum.1.gz bash-completion/completions/sarnum; do
  ls "$root/usr/share/$file"
done

step "removing the packages, which leave nothing behind and take nothing along"
in_root sh -c 'apt-get purge -yq "?name(sarnum)"'
listing >"$folder/after"
diff "$folder/before" "$folder/after"
