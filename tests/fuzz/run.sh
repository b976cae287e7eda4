#!/bin/sh
# run.sh PROGRAM NAME WORK_DIR: fuzzes for FUZZ_SECONDS (60 unless set), starting from the seeds and
# what earlier runs found worth keeping. An input that fails is kept in WORK_DIR.
set -eu
program=$1 name=$2 work=$3
seeds="$work/$name seeds" corpus="$work/$name corpus"

mkdir -p "$corpus"
/usr/bin/python3 "$(dirname "$0")/seeds.py" "$name" "$seeds"
# Every output is flushed to its disk, which is quick where the disk is memory.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm
exec "$program" -max_total_time="${FUZZ_SECONDS:-60}" -timeout=20 -rss_limit_mb=3000 -max_len=8192 \
  -close_fd_mask=3 -print_final_stats=1 -artifact_prefix="$work/$name-" "$corpus" "$seeds" </dev/null
