#!/bin/sh
# clean_root_fails.sh WORK_DIR: a test of the packages that fails says why, wherever it runs, and leaves
# no system behind.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work="$1/with a blank"

rm -rf "$work"
mkdir -p "$work/bin"
cat >"$work/bin/debootstrap" <<'END'
#!/bin/sh
mkdir "$3" && echo "$3" >>"$FOLDERS"
case $3 in *' '*) echo "a path with a blank" ;; *) echo "no such mirror" ;; esac
exit 1
END
printf '#!/bin/sh\necho mirror\n' >"$work/bin/apt-get"
chmod +x "$work/bin/debootstrap" "$work/bin/apt-get"

export FOLDERS="$work/folders" PATH="$work/bin:$PATH"
if sh "$here/clean_root.sh" "$work" no_readme >"$work/out" 2>"$work/err"; then
  echo "a failed step was not noticed" >&2
  exit 1
fi
cat "$work/out" "$work/err"
grep -q '^== setting up a system' "$work/out"
grep -q '^no such mirror' "$work/err"
[ ! -e "$(cat "$FOLDERS")" ]
rm -rf "$work"
