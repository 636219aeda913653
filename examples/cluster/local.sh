#!/bin/sh
# Several workers on this machine: local.sh PROGRAM FOLDER [WORKERS]
set -e
program=$1 folder=$2 workers=${3:-$(nproc)}

"$program" "$folder" list
pids=
for _ in $(seq "$workers"); do
    "$program" "$folder" work &
    pids="$pids $!"
done
for pid in $pids; do wait "$pid"; done
"$program" "$folder" merge
