#!/bin/sh
# demo.sh DEMO BUILD_DIR WORK_DIR: the demo runs, twice in the same folder, leaves what it says,
# and averaging 16 pixels of its scene makes about 16 looks of one.
set -eu
demo=$1 build_dir=$2 work=$3
sarnum="$build_dir/tools/sarnum/sarnum"

rm -rf "$work"
SCENE_SIZE=512 sh "$demo" "$build_dir" "$work"
SCENE_SIZE=512 sh "$demo" "$build_dir" "$work" >/dev/null

"$sarnum" info "$work/scene.tif" | grep -E '^Equivalent looks: +(0\.9|1\.0)'
"$sarnum" info "$work/looks.tif" | grep -E '^Equivalent looks: +1[3-8]\.'

echo "== on an image of the user's own, which is only read"
mkdir "$work/own"
own="$work/own/my image.tif"
cp "$work/scene.tif" "$own"
chmod a-w "$own"
before=$(cksum <"$own")
sh "$demo" "$build_dir" "$work" "$own"
[ "$(cksum <"$own")" = "$before" ]
[ "$(ls "$work/own")" = 'my image.tif' ]

for folder in "$work" "$work/my image"; do
  for stem in intensity looks spectrum looks_spectrum; do
    for file in "$folder/$stem.tif" "$folder/$stem.png"; do
      [ -s "$file" ] || { echo "missing: $file" >&2; exit 1; }
    done
  done
done

echo "== on a file that is no image"
echo 'no image' >"$work/own/text.tif"
if sh "$demo" "$build_dir" "$work" "$work/own/text.tif"; then
  echo "the demo took a text for an image" >&2
  exit 1
fi
[ ! -e "$work/text" ]

rm -rf "$work"
