#!/bin/sh
# readme_program.sh SOURCE_DIR PROGRAM: the README shows the example program as it is, and says
# what it prints.
set -eu
source_dir=$1 program=$2

shown=$(awk '/^```cpp$/ { inside = 1; next } /^```$/ { if (inside) exit } inside' "$source_dir/README.md")
if [ "$shown" != "$(cat "$source_dir/examples/spectrum_of_a_tone.cpp")" ]; then
  echo "the README's program differs from examples/spectrum_of_a_tone.cpp" >&2
  exit 1
fi

printed=$("$program")
grep -qxF "$printed" "$source_dir/README.md" || {
  echo "the README does not show what the program prints: $printed" >&2
  exit 1
}
