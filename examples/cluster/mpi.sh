#!/bin/sh
# Several workers under Open MPI, which merely starts them: mpi.sh PROGRAM FOLDER [WORKERS]
# Options for mpirun, such as --hostfile, stand in MPI_OPTIONS. FOLDER is shared by all machines.
set -e
program=$1 folder=$2 workers=${3:-$(nproc)}

"$program" "$folder" list
# shellcheck disable=SC2086
mpirun $MPI_OPTIONS -n "$workers" "$program" "$folder" work
"$program" "$folder" merge
