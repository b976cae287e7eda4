#!/bin/sh
# peak_filter.sh PROGRAM DOCUMENT FOLDER: the example draws its picture, and what it prints is
# what the document shows.
set -eu
program=$1 document=$2 folder=$3

mkdir -p "$folder"
rm -f "$folder/peak_filter.png"
"$program" "$folder" >"$folder/printed"
[ -s "$folder/peak_filter.png" ]
[ "$(wc -l <"$folder/printed")" -eq 6 ]
while IFS= read -r line; do
  grep -qxF -- "$line" "$document" || {
    echo "the document does not show what is printed: $line" >&2
    exit 1
  }
done <"$folder/printed"
