#!/bin/sh
# own_functions.sh BINARY: it takes no function from the C library whose values differ from one
# library to the next (sqrt is exact; so are modf, floor and the like).
set -eu

undefined=$(nm -D --undefined-only "$1" | sed -E 's/^ *[A-Za-z] //; s/@.*//')
test -n "$undefined"
differing='a?(sin|cos|tan)h?|sincos|atan2|exp(2|10|m1)?|log(2|10|1p)?|pow|cbrt|hypot|[tl]gamma|erfc?|fma'
if echo "$undefined" | grep -xE "($differing)[fl]?"; then
  echo "$1 takes these from the C library; src/elementary has what to use instead" >&2
  exit 1
fi
