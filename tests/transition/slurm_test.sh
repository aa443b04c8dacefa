#!/bin/bash
# A transition on a real Slurm controller with two nodes, both on this machine: one part fails once, one node is killed
# while it renders, and what comes out is to the byte what one run writes.
#   slurm_test.sh PROGRAM MAKE_FOOTAGE SCRIPTS
set -euo pipefail

readonly PROGRAM=$1 MAKE_FOOTAGE=$2 SCRIPTS=$3
readonly PARTS=6
PATH=$PATH:/usr/sbin:/sbin # the daemons' place

started=$SECONDS
note() { echo "[$((SECONDS - started)) s] $*"; }

fail() {
    note "FAILED: $*"
    tail -n 15 "$folder"/log/* "$folder"/rendering/logs/* 2>/dev/null || true
    exit 1
}

for tool in slurmctld slurmd sbatch squeue scontrol sinfo munged mungekey; do
    command -v "$tool" >/dev/null || {
        echo "slurm_test.sh: $tool is missing: install slurmctld, slurmd, slurm-client and munge" >&2
        exit 1
    }
done

folder=$(mktemp -d /tmp/transition-slurm-XXXXXX)
daemons=()

# Processes that have a text in their command line or, if asked for, among what they were started with.
processes_with() { # TEXT cmdline|environ
    local file pid
    for file in $(grep -lsaF -- "$1" /proc/[0-9]*/"$2" || true); do
        pid=${file#/proc/} pid=${pid%/*}
        # The search itself has ended meanwhile.
        if [ "$pid" != "$$" ] && [ -d "/proc/$pid" ]; then echo "$pid"; fi
    done
}

# All that was started here has SLURM_CONF in its environment, jobs and their steps too.
end() {
    local pid status=$?
    trap - EXIT INT TERM
    for pid in "${daemons[@]}"; do kill "$pid" 2>/dev/null || true; done
    sleep 0.5
    for pid in $(processes_with "SLURM_CONF=$folder/" environ); do kill -9 "$pid" 2>/dev/null || true; done
    for pid in "${daemons[@]}"; do wait "$pid" 2>/dev/null || true; done
    rm -rf "$folder"
    exit "$status"
}

trap end EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

wait_until() { # SECONDS WHAT COMMAND...
    local limit=$((SECONDS + $1)) what=$2
    shift 2
    until "$@"; do
        [ "$SECONDS" -lt "$limit" ] || fail "$what"
        sleep 0.1
    done
}

free_ports() {
    python3 - <<'PYTHON'
import socket
sockets = [socket.socket() for _ in range(3)]
for one in sockets:
    one.bind(("127.0.0.1", 0))
print(*[one.getsockname()[1] for one in sockets])
PYTHON
}

start_slurm() {
    local controller_port port_1 port_2 user host
    user=$(id -un)
    host=$(hostname -s)
    read -r controller_port port_1 port_2 < <(free_ports)
    mkdir -p "$folder"/{state,n1,n2,log,munge}
    chmod 700 "$folder/munge"
    mungekey --create --keyfile="$folder/munge/key"
    cat >"$folder/slurm.conf" <<CONFIGURATION
ClusterName=test
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$controller_port
SlurmUser=$user
SlurmdUser=$user
AuthType=auth/munge
AuthInfo=socket=$folder/munge/socket,cred_expire=5
CredType=cred/munge
MpiDefault=none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
StateSaveLocation=$folder/state
SlurmdSpoolDir=$folder/%n
SlurmctldPidFile=$folder/slurmctld.pid
SlurmdPidFile=$folder/slurmd.%n.pid
SlurmctldLogFile=$folder/log/slurmctld
SlurmdLogFile=$folder/log/slurmd.%n
SlurmdTimeout=3
MessageTimeout=2
TCPTimeout=1
KillWait=1
CompleteWait=0
SchedulerType=sched/builtin
SchedulerParameters=sched_interval=1,batch_sched_delay=0,sched_min_interval=100000
SlurmdParameters=config_overrides
NodeName=n1 NodeHostname=$host NodeAddr=127.0.0.1 Port=$port_1 CPUs=1
NodeName=n2 NodeHostname=$host NodeAddr=127.0.0.1 Port=$port_2 CPUs=1
PartitionName=main Nodes=n1,n2 Default=YES MaxTime=INFINITE State=UP
CONFIGURATION
    export SLURM_CONF=$folder/slurm.conf
    munged --foreground --force --key-file="$folder/munge/key" --socket="$folder/munge/socket" \
        --pid-file="$folder/munge/pid" --log-file="$folder/log/munged" --seed-file="$folder/munge/seed" --num-threads=1 \
        >"$folder/log/munged.out" 2>&1 &
    daemons+=($!)
    wait_until 10 "munged does not start" test -S "$folder/munge/socket"
    slurmctld -D -f "$SLURM_CONF" >"$folder/log/slurmctld.out" 2>&1 &
    daemons+=($!)
    slurmd -D -N n1 -f "$SLURM_CONF" >"$folder/log/n1.out" 2>&1 &
    daemons+=($!)
    slurmd -D -N n2 -f "$SLURM_CONF" >"$folder/log/n2.out" 2>&1 &
    node_2=$!
    daemons+=("$node_2")
    wait_until 20 "the two nodes do not come up" two_idle
}

two_idle() { [ "$(timeout 3 sinfo -h -N -t idle -o %N 2>/dev/null | wc -l)" -eq 2 ]; }

# What the jobs call instead of the program. Every run is noted. Part 4 fails once. The first part on node n2 is stopped
# in the midst of its work, until the test kills the node.
write_wrapper() {
    cat >"$folder/program" <<WRAPPER
#!/bin/bash
if [ "\$1" = join ]; then exec "$PROGRAM" "\$@"; fi
place=\${*: -1}
echo "\${SLURMD_NODENAME:-here} \$place" >>"$folder/runs"
case \$place in
*part-000004.mkv)
    if mkdir "$folder/failed-once" 2>/dev/null; then exit 1; fi
    ;;
esac
if [ "\${SLURMD_NODENAME:-}" = n2 ] && mkdir "$folder/caught" 2>/dev/null; then
    "$PROGRAM" "\$@" &
    until compgen -G "\${place%/*}/.\${place##*/}.*" >/dev/null; do :; done
    kill -STOP \$!
    touch "$folder/caught/\$(basename "\$place")"
    wait
fi
exec "$PROGRAM" "\$@"
WRAPPER
    chmod +x "$folder/program"
}

runs_of() { grep -c -- "/part-00000$1.mkv\$" "$folder/runs"; }

caught() { compgen -G "$folder/caught/part-*" >/dev/null; }

# As if the machine had lost its power: nothing on it gets to tell anybody, nor to clean up.
kill_node_2() {
    local pid parent steps=() jobs=() programs=()
    for pid in $(processes_with "$folder/n2/" cmdline); do
        jobs+=("$pid")
        parent=$(awk '/^PPid:/ { print $2 }' "/proc/$pid/status")
        if grep -qsa '^slurmstepd' "/proc/$parent/cmdline"; then steps+=("$parent"); fi
    done
    [ "${#steps[@]}" -gt 0 ] || fail "no step runs on n2"
    for pid in $(processes_with "$1" cmdline); do programs+=("$pid"); done
    kill -STOP "${steps[@]}" "${jobs[@]}" "${programs[@]}"
    kill -9 "$node_2" "${programs[@]}"
    kill -9 "${jobs[@]}" "${steps[@]}"
    wait "$node_2" 2>/dev/null || true
}

request=("$folder/a.mp4" "$folder/b.mp4" --effect fly --duration 30f)
submit() {
    timeout 100 "$SCRIPTS/submit" --parts "$1" --work "$folder/rendering" --retries 2 --program "$folder/program" "${@:3}" -- \
        "${request[@]}" -o "$folder/$2"
}

"$MAKE_FOOTAGE" "$folder/a.mp4" 120 1
"$MAKE_FOOTAGE" "$folder/b.mp4" 110 2
"$PROGRAM" "${request[@]}" -o "$folder/alone.mp4" >/dev/null 2>&1
write_wrapper
start_slurm
note "two nodes are up"

submit "$PARTS" joined.mp4 --wait >"$folder/submit.log" 2>&1 &
submission=$!
wait_until 30 "no part began on n2" caught
victim=$(basename "$folder"/caught/part-*)
[ ! -e "$folder/rendering/parts/$victim" ] || fail "$victim is done already"
status=0
submit "$PARTS" joined.mp4 >"$folder/again.log" 2>&1 || status=$?
[ "$status" -eq 2 ] || fail "a second submission at the same time was taken: $(cat "$folder/again.log")"
kill_node_2 "$folder/rendering/parts/$victim"
compgen -G "$folder/rendering/parts/.$victim.*" >/dev/null || fail "nothing unfinished is left of $victim"
note "node n2 is killed while it renders $victim"

status=0
wait "$submission" || status=$?
cat "$folder/submit.log"
[ "$status" -eq 0 ] || fail "submit ended with exit status $status"
note "the run is through"

sinfo -h -N -o '%N %T' | grep -q '^n2 .*\(down\|completing\|idle\*\)' || fail "n2 is not lost: $(sinfo -h -N -o '%N %T')"
cmp "$folder/alone.mp4" "$folder/joined.mp4" || fail "the output is not that of a single run"
for ((part = 0; part < PARTS; ++part)); do
    expected=1
    if [ "part-00000$part.mkv" = "$victim" ]; then expected=2; fi
    if [ "$part" -eq 4 ]; then expected=$((expected + 1)); fi
    [ "$(runs_of "$part")" -eq "$expected" ] || fail "part $part was rendered $(runs_of "$part") times, not $expected"
done
[ "$(wc -l <"$folder/rendering/logs/part-000004.failures")" -eq 1 ] || fail "the failure of part 4 is not on record"
if compgen -G "$folder/rendering/parts/.part-*" >/dev/null; then fail "unfinished files are left"; fi
note "frames equal those of a single run; $victim was made again on n1, part 4 after its failure"

# Submitted again without one part: that one alone is made. Refused: another request in the same folder.
status=0
submit "$PARTS" joined.mp4 >"$folder/again.log" 2>&1 || status=$?
[ "$status" -eq 2 ] || fail "an output that is there was to be made again"
status=0
submit $((PARTS + 1)) other.mp4 >"$folder/again.log" 2>&1 || status=$?
if [ "$status" -ne 2 ] || ! grep -q 'belongs to another request' "$folder/again.log"; then
    fail "another request was taken for the same folder"
fi
rm "$folder/rendering/parts/part-000002.mkv" "$folder/joined.mp4"
submit "$PARTS" joined.mp4 --wait --at-once 2 >"$folder/again.log" 2>&1 || fail "submitting again: $(cat "$folder/again.log")"
cmp "$folder/alone.mp4" "$folder/joined.mp4" || fail "the output is not that of a single run when submitted again"
[ "$(grep -c '/part-[0-9]*.mkv$' "$folder/runs")" -eq $((PARTS + 3)) ] || fail "more than the missing part was made"
note "submitted again, the missing part alone was made"
