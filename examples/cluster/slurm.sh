#!/bin/sh
# An array of workers under Slurm, and the merge when all of them have ended:
# slurm.sh PROGRAM FOLDER [WORKERS]. FOLDER is shared by all machines.
set -e
program=$1 folder=$2 workers=${3:-4}

"$program" "$folder" list
id=$(sbatch --parsable --array=1-"$workers" --output="$folder/worker-%a.log" \
    "$(dirname "$0")/workers.sbatch" "$program" "$folder")
sbatch --wait --dependency=afterok:"${id%%;*}" --kill-on-invalid-dep=yes --time=00:10:00 \
    --output="$folder/merge.log" --wrap "exec '$program' '$folder' merge"
