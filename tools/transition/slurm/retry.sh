# shellcheck shell=bash
# What the two job scripts share. They are copied away when submitted, so they source this file by its full name.

say() { echo "$(date '+%F %T') ${SLURMD_NODENAME:-?}: $*" >&2; }

# Puts the running job back into the queue unless its work has failed too often; never returns. Failures are counted in
# a file, since Slurm's own count of restarts takes in those for a lost node.
#   fail_or_retry COUNT_FILE RETRIES EXIT_STATUS
fail_or_retry() {
    local counts=$1 retries=$2 status=$3 failures job
    if [ "$status" -eq 130 ] || [ "$status" -eq 143 ]; then
        say "ended from outside; not tried again"
        exit "$status"
    fi
    echo "$(date '+%F %T') ${SLURMD_NODENAME:-?} exit status $status" >>"$counts"
    failures=$(wc -l <"$counts")
    if [ "$failures" -gt "$retries" ]; then
        say "failed with exit status $status, $failures times in all; given up"
        exit "$status"
    fi
    job=$SLURM_JOB_ID
    [ -z "${SLURM_ARRAY_JOB_ID:-}" ] || job=${SLURM_ARRAY_JOB_ID}_$SLURM_ARRAY_TASK_ID
    say "failed with exit status $status; back into the queue, try $((failures + 1)) of $((retries + 1))"
    scontrol requeue "$job" || {
        say "could not be put back into the queue"
        exit "$status"
    }
    sleep 300 # until Slurm ends this run
    exit "$status"
}
