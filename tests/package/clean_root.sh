#!/bin/sh
# clean_root.sh DEBS ROOT README.md: the Debian packages in a system that has nothing else. Installs
# them, compiles the README's program, runs the tool, and removes them without leftovers. Needs
# root, debootstrap and a Debian mirror: the one that apt uses here.
set -eu
debs=$1 root=$2 readme=$3
in_root() { DEBIAN_FRONTEND=noninteractive LC_ALL=C chroot "$root" "$@"; }

rm -rf "$root"
mirror=$(apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Codename: bookworm" | head -n 1)
debootstrap --variant=minbase bookworm "$root" "$mirror" >"$root.log" 2>&1
in_root apt-get update -q >>"$root.log" 2>&1
in_root apt-get install -yq --no-install-recommends g++ pkgconf libgdal32 >>"$root.log" 2>&1
# What these packages leave behind is their own affair.
listing() { (cd "$root" && find . -xdev -not -path './var/*' -not -path './tmp/*' -not -path './proc/*' \
  -not -path './etc/ld.so.cache' | sort); }
listing >"$root.before"

cp "$debs"/*.deb "$root/tmp/"
in_root sh -c 'apt-get install -yq --no-install-recommends /tmp/*.deb' >>"$root.log" 2>&1

awk '/^```cpp$/ { inside = 1; next } /^```$/ { if (inside) exit } inside' "$readme" >"$root/tmp/program.cpp"
in_root sh -euc 'cd /tmp; c++ program.cpp -o program $(pkg-config --cflags --libs sarnum)
  [ "$(./program)" = "strongest at bin 37, magnitude 512" ]'
in_root sarnum --version
in_root sh -euc 'cd /tmp; printf "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n1.5 2.5\n3.5 4.5\n" >in.asc
  sarnum multilook in.asc out.tif --looks 2x2 -q && sarnum stats out.tif'
for file in doc/sarnum-doc/html/index.html man/man1/sarnum.1.gz bash-completion/completions/sarnum; do
  [ -f "$root/usr/share/$file" ]
done

in_root sh -c 'apt-get purge -yq "?name(sarnum)"' >>"$root.log" 2>&1
listing >"$root.after"
diff "$root.before" "$root.after" || {
  echo "the packages left something behind, or took something along" >&2
  exit 1
}
echo "installed, used and removed without leftovers"
rm -rf "$root" "$root.before" "$root.after" "$root.log"
