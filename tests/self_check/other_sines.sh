#!/bin/sh
# other_sines.sh DIGESTS_TEST...: the values do not depend on the C library's. Runs the tests with its
# variants for CPUs with fused products switched off, after a control that this changes its sines.
set -eu
sines() {
  /usr/bin/python3 -c 'import math; print(hash(tuple(math.sin(i) for i in range(100000))))'
}
with_fused_products=$(sines)
export GLIBC_TUNABLES=glibc.cpu.hwcaps=-FMA,-AVX2
if [ "$(sines)" = "$with_fused_products" ]; then
  grep -qw fma /proc/cpuinfo || { echo "this CPU has no fused products"; exit 77; }
  echo "the C library gives the same sines without its variants: nothing is shown" >&2
  exit 1
fi
"$@"
