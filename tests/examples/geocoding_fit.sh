#!/bin/sh
# geocoding_fit.sh PROGRAM: at degree 4 the example's residuals are the noise that was put in, by
# mnk2 and by the class, in both directions; and a term has one coefficient, wherever it stands.
set -eu
"$1" | awk -F'|' '
  function same(a, b, within) { return a - b <= within && b - a <= within }
  $1 ~ /^ *4 +15/ {
    tables += $1
    split($2 " " $3 " " $4 " " $5, m, " ")
    for (k = 1; k <= 2; k++)
      good += same(m[k + 2], m[k], 0.02 * m[k]) && same(m[k + 2], m[k + 4], 0.01) && m[k + 6] < 0.5 * m[k]
  }
  NF == 3 && $1 ~ /^ *[0-9]/ {
    split($2, of_mnk2, " "); by_mnk2[of_mnk2[1]] = of_mnk2[2]
    split($3, of_class, " "); by_class[of_class[1]] = of_class[2]
    moved += of_mnk2[1] != of_class[1]
  }
  END {
    for (term in by_mnk2) terms += same(by_mnk2[term], by_class[term], 0.001)
    print tables " " good " " terms " " moved
    exit !(tables == 8 && good == 4 && terms == 10 && moved == 8)
  }'
