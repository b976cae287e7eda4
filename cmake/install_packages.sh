#!/bin/sh
# install_packages.sh PACKAGE... : makes sure that these Debian packages are installed.
#
# Silent when nothing is missing, and then it needs neither privileges nor a network. Otherwise
# it installs exactly the missing ones, as root or through a sudo that asks for no password;
# anyone else gets the command to hand to an administrator.
# SARNUM_SKIP_PACKAGES=1 in the environment switches the check off, for tools and libraries
# that were installed by other means.
set -eu

[ "${SARNUM_SKIP_PACKAGES:-}" != 1 ] || exit 0

if ! command -v dpkg-query >/dev/null 2>&1; then
  echo "note: not a Debian system, so its packages are not checked; needed here: $*" >&2
  exit 0
fi

is_installed() {
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

missing=
for package in "$@"; do
  is_installed "$package" || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" -eq 0 ]; then
  as_root='env'
elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
  as_root='sudo -n env'
else
  echo "error: packages are missing; have an administrator run: apt-get install$missing" >&2
  exit 1
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT

# apt's talk is kept back and shown only when it fails. The lists of words are split on purpose.
# shellcheck disable=SC2086
apt_get() {
  $as_root DEBIAN_FRONTEND=noninteractive \
    apt-get -qq -o DPkg::Lock::Timeout=300 "$@" >"$log" 2>&1 </dev/null || {
    cat "$log" >&2
    echo "error: 'apt-get $*' failed (see above)" >&2
    exit 1
  }
}

echo "Installing missing packages:$missing"
apt_get update
# shellcheck disable=SC2086
apt_get install --yes --no-install-recommends $missing
