#!/bin/sh
# exports_and_imports.sh OBJDUMP DLL LIST: the DLL exports the names in the list and no other, and
# needs no DLL that does not come with Windows or with it.
set -eu
objdump=$1 dll=$2 list=$3

# The text of a type's name is part of its typeinfo here, and has no symbol of its own.
exported() {
  "$objdump" -p "$dll" | sed -n '/^\[Ordinal\/Name Pointer\]/,/^$/s/^.*\] //p' | c++filt |
    grep -v '^Table$' | LC_ALL=C sort -u
}
listed=$(grep -v '^typeinfo name for ' "$list" | sed 's/@@SARNUM_1$//' | LC_ALL=C sort -u)
exported=$(exported)
[ "$exported" = "$listed" ] || {
  echo "$dll exports other names than $list:" >&2
  printf '%s\n' "$exported" | diff "$list" - >&2 || true
  exit 1
}

foreign=$("$objdump" -p "$dll" | sed -n 's/.*DLL Name: //p' |
  grep -vixE 'kernel32\.dll|msvcrt\.dll|sarnum_host\.dll') || true
[ -z "$foreign" ] || { echo "$dll needs $foreign" >&2; exit 1; }
