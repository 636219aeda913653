#!/usr/bin/env bash
# The same batch by local processes, under Open MPI and, where its daemons start, under a Slurm of
# this one machine: compare.sh PROGRAM FOLDER. The merged files must be the same, byte for byte.
set -euo pipefail
program=$(realpath "$1")
ways=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../../examples/cluster")
mkdir -p "$2"
cd "$2"
as_root() { if [ "$(id -u)" = 0 ]; then "$@"; else sudo -E "$@"; fi; }

state=$(mktemp -d)
export SLURM_CONF=$state/slurm.conf
started=()

stop()
{
    local pid
    for pid in "${started[@]}"; do
        as_root kill "$pid" 2>/dev/null || continue
        for _ in $(seq 100); do as_root kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
    done
    as_root rm -rf "$state"
}
trap stop EXIT

# until_ok SECONDS COMMAND...
until_ok()
{
    local tries=$((10 * $1))
    shift
    for _ in $(seq "$tries"); do "$@" >/dev/null 2>&1 && return; sleep 0.1; done
    return 1
}

no_slurm() { why=$1; return 1; }

start_munge()
{
    munge -n >/dev/null 2>&1 && return
    as_root mkdir -p /run/munge && as_root chown munge: /run/munge
    as_root runuser -u munge -- munged >"$state/munge.log" 2>&1 ||
        no_slurm "munged does not start: $(tail -1 "$state/munge.log")" || return
    started+=("$(as_root cat /run/munge/munged.pid)")
    until_ok 10 munge -n || no_slurm "munged does not answer"
}

# start_daemon NAME
start_daemon()
{
    as_root env SLURM_CONF="$SLURM_CONF" "$1" </dev/null >"$state/$1.out" 2>&1 &&
        until_ok 10 test -s "$state/$1.pid" ||
        no_slurm "$1 does not start: $(tail -qn 1 "$state/$1".{out,log} 2>/dev/null | tail -1)" || return
    started+=("$(cat "$state/$1.pid")")
}

is_idle() { sinfo -h | grep -q idle; }

start_slurm()
{
    local host
    host=$(hostname -s)
    mkdir "$state/spool" "$state/state"
    cat >"$SLURM_CONF" <<CONF
ClusterName=one_machine
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=16817
SlurmdPort=16818
AuthType=auth/munge
CredType=cred/munge
SlurmUser=root
SlurmdUser=root
StateSaveLocation=$state/state
SlurmdSpoolDir=$state/spool
SlurmctldLogFile=$state/slurmctld.log
SlurmdLogFile=$state/slurmd.log
SlurmctldPidFile=$state/slurmctld.pid
SlurmdPidFile=$state/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=sched_interval=1,bf_interval=1
MpiDefault=none
ReturnToService=2
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=main Nodes=ALL Default=YES MaxTime=10 State=UP
CONF
    chmod 755 "$state"
    start_munge && start_daemon slurmctld && start_daemon slurmd || return
    until_ok 20 is_idle || no_slurm "the node does not come up: $(sinfo -h -o '%T %E' 2>&1 | tail -1)"
}

# run NAME COMMAND...: one way of doing the batch, in a folder of its own
run()
{
    local name=$1 from=$SECONDS
    shift
    rm -rf "$name" && mkdir "$name"
    timeout 300 "$@" "$program" "$PWD/$name" 3 </dev/null >"$name.log" 2>&1 ||
        { cat "$name.log" "$name"/*.log; echo "$name: failed"; exit 1; } >&2
    echo "$name: $((SECONDS - from)) s"
    for file in merged.txt merged.sim; do cmp "local/$file" "$name/$file"; done
}

run local "$ways/local.sh"
root_option=
[ "$(id -u)" != 0 ] || root_option=--allow-run-as-root
MPI_OPTIONS="$root_option --oversubscribe" run mpi "$ways/mpi.sh"
if start_slurm; then
    run slurm "$ways/slurm.sh"
else
    echo "slurm: not run, since here $why"
fi
echo "the merged results are the same"
