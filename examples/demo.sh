#!/bin/sh
# demo.sh BUILD_DIR OUT_DIR [IMAGE]: what the tool does, on a simulated scene or on an image of
# the user's own (that file is only read). Everything is written into OUT_DIR, or for an image
# into a folder in it that has the image's name. SCENE_SIZE sets the side of the simulated scene.
set -eu

build_dir=$1
out=$2
image=${3:-}
sarnum="$build_dir/tools/sarnum/sarnum"
simulate_scene="$build_dir/examples/simulate_scene"

fail() {
  echo "demo: $*" >&2
  exit 1
}

# Runs one step, shown the way a user would type it.
step() {
  printf '$'
  for word in "$@"; do
    case $word in
      "$sarnum" | "$simulate_scene") word=${word##*/} ;;
    esac
    case $word in
      *[!A-Za-z0-9_./=,+-]*) printf " '%s'" "$word" ;;
      *) printf ' %s' "$word" ;;
    esac
  done
  printf '\n'
  "$@" || fail "this step failed (see above)"
}

# One value of what `sarnum info` says: describe FILE KEY
describe() {
  report=$("$sarnum" info "$1") || fail "'$1' cannot be described (see above)"
  printf '%s\n' "$report" | sed -n "s/^$2: *//p"
}

# A row of the summary: row FILE WHAT-IT-IS
row() {
  size=$(describe "$1" 'Size')
  looks=$(describe "$1" 'Equivalent looks')
  printf '  %-14s %6s   %-14s %s\n' "${size%% pixels*}" "${looks%% *}" "$2" "${1##*/}"
}

case $image in
  -*) image=./$image ;;
esac
if [ -n "$image" ]; then
  pixel_type=$(describe "$image" 'Pixel type')
  name=${image##*/}
  out=$out/${name%.*}
else
  image=$out/scene.tif
  pixel_type=TD_COMPLEX_FLOAT32
fi
mkdir -p "$out" || fail "cannot make the folder '$out'"
for stem in intensity looks spectrum looks_spectrum; do
  for file in "$out/$stem.tif" "$out/$stem.png"; do
    # shellcheck disable=SC3013  # Every sh in use has -ef, and POSIX has it since 2024.
    [ ! "$image" -ef "$file" ] || fail "'$image' is a file the demo writes: copy it elsewhere first"
    rm -f "$file"
  done
done

if [ -z "${3:-}" ]; then
  step "$simulate_scene" "$image" --size "${SCENE_SIZE:-2048}"
fi

step "$sarnum" stats "$image"

# Looks are averaged over intensity: complex samples are detected first.
case $pixel_type in
  *TD_COMPLEX_*)
    averaged=$out/intensity.tif
    step "$sarnum" detect "$image" "$averaged" --picture "$out/intensity.png"
    ;;
  *) averaged=$image ;;
esac
step "$sarnum" multilook "$averaged" "$out/looks.tif" --looks 4x4 --picture "$out/looks.png"
step "$sarnum" spectrum "$image" "$out/spectrum.tif" --picture "$out/spectrum.png"
step "$sarnum" spectrum "$out/looks.tif" "$out/looks_spectrum.tif" --picture "$out/looks_spectrum.png"

echo
printf '  %-14s %6s\n' pixels looks
row "$image" 'radar image'
[ "$averaged" = "$image" ] || row "$averaged" 'intensity'
row "$out/looks.tif" 'averaged 4x4'
echo
echo 'Looks are the equivalent number of independent ones, estimated from the data. Averaging'
echo '4 x 4 independent pixels makes 16 of 1; neighbours that are alike bring less.'
echo
echo "GeoTIFFs and pictures are in $(cd "$out" && pwd):"
[ "$averaged" = "$image" ] || echo '  intensity.png        before averaging'
echo '  looks.png            after averaging'
echo '  spectrum.png         spectrum of the image, zero frequency in the middle; even grey where'
echo '                       neighbouring pixels are independent, dark beyond the bandwidth'
echo '  looks_spectrum.png   spectrum of the averaged image: what is large stands in the middle'
