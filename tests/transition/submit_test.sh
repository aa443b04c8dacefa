#!/bin/bash
# The scripts for Slurm without a Slurm: sbatch, squeue and scontrol are stubs, the job scripts are run by hand.
#   submit_test.sh PROGRAM MAKE_FOOTAGE SCRIPTS
set -euo pipefail

readonly PROGRAM=$1 MAKE_FOOTAGE=$2 SCRIPTS=$3

folder=$(mktemp -d /tmp/transition-submit-XXXXXX)
trap 'rm -rf "$folder"' EXIT
work="$folder/100% work"

fail() {
    echo "FAILED: $*" >&2
    cat "$folder/said" >&2
    exit 1
}

# sbatch notes its arguments, a line for each, and gives the number of the call for the job's. What squeue prints, and
# its exit status, stand in files. scontrol puts nothing back into the queue.
mkdir "$folder/bin"
cat >"$folder/bin/sbatch" <<STUB
#!/bin/bash
[ ! -e "$folder/sbatch-fails" ] || exit 1
printf '%s\n' "\$@" >>"$folder/sbatch-arguments"
echo call >>"$folder/calls"
wc -l <"$folder/calls"
STUB
cat >"$folder/bin/squeue" <<STUB
#!/bin/bash
cat "$folder/squeue-says"
exit "\$(cat "$folder/squeue-status")"
STUB
cat >"$folder/bin/scontrol" <<STUB
#!/bin/bash
if [ "\$*" = "show config" ]; then echo "MaxArraySize            = 8"; else exit 1; fi
STUB
# The program, with a version that the test sets.
cat >"$folder/program" <<STUB
#!/bin/bash
if [ "\$*" = --version ] && [ -e "$folder/version" ]; then exec cat "$folder/version"; fi
exec "$PROGRAM" "\$@"
STUB
chmod +x "$folder/program" "$folder"/bin/*
export PATH=$folder/bin:$PATH

slurm_says() { # STATUS TEXT
    echo "$1" >"$folder/squeue-status"
    echo "$2" >"$folder/squeue-says"
}

submit() {
    : >"$folder/sbatch-arguments"
    "$SCRIPTS/submit" --parts 5 --work "$work" --program "$folder/program" "$@" >"$folder/said" 2>&1
}

transition=(-- a.mp4 b.mp4 --effect box --duration 8f)

accepted() { submit "$@" || fail "not taken: $*"; }

refused() { # STATUS TEXT ARGUMENT...
    local status=0
    submit "${@:3}" || status=$?
    [ "$status" -eq "$1" ] || fail "exit status $status, not $1: ${*:3}"
    grep -qF -- "$2" "$folder/said" || fail "does not say '$2'"
    [ ! -s "$folder/sbatch-arguments" ] || fail "something was queued: ${*:3}"
}

queued() { grep -qxF -- "$1" "$folder/sbatch-arguments" || fail "sbatch was not given '$1'"; }

jobs_are() { [ "$(paste -sd' ' "$work/jobs")" = "$1" ] || fail "the jobs are $(paste -sd' ' "$work/jobs"), not $1"; }

make_part() { # INDEX
    SLURM_JOB_ID=1 SLURM_ARRAY_TASK_ID=$1 bash "$SCRIPTS/part.sbatch" "$work" >"$folder/said" 2>&1 || fail "part $1"
}

join_parts() { SLURM_JOB_ID=1 bash "$SCRIPTS/join.sbatch" "$work" >"$folder/said" 2>&1; }

cd "$folder"
"$MAKE_FOOTAGE" a.mp4 20 1
"$MAKE_FOOTAGE" b.mp4 20 2
slurm_says 0 ''

# What only the joining would have found out.
refused 2 "out.xyz: the ending names no video container" "${transition[@]}" -o out.xyz
refused 2 "none/s.png: cannot be written" "${transition[@]}" -o out.mp4 --sheet none/s.png
refused 2 "would replace the first video" "${transition[@]}" -o a.mp4 -y
touch precious.png
refused 2 "precious.png: exists already" "${transition[@]}" -o out.mp4 --sheet precious.png
refused 2 "arrays of 8 tasks at most" --parts 9 "${transition[@]}" -o out.mp4
refused 2 "backslash" --work "$folder/back\\slash" "${transition[@]}" -o out.mp4

# Ranges of tasks, and a work folder's name that sbatch would take for a pattern.
accepted "${transition[@]}" -o out.mp4
queued --array=0-4
queued "--output=$folder/100%% work/logs/part-%a.log"
queued "--output=$folder/100%% work/logs/join.log"
jobs_are "1 2"

# A controller that does not answer, and jobs that are there, keep the record of jobs; jobs that are gone do not count.
slurm_says 1 "slurm_load_jobs error: Unable to contact slurm controller"
refused 1 "Slurm does not answer: slurm_load_jobs error: Unable to contact" "${transition[@]}" -o out.mp4
slurm_says 0 1_3
refused 2 "jobs 1 2 are still in the queue" "${transition[@]}" -o out.mp4
slurm_says 1 "slurm_load_jobs error: Invalid job id specified"
touch sbatch-fails
refused 1 "sbatch did not take the parts" "${transition[@]}" -o out.mp4
jobs_are "1 2"
rm sbatch-fails
for index in 0 3; do (cd / && make_part "$index"); done
accepted "${transition[@]}" -o out.mp4
queued --array=1-2,4
jobs_are "3 4"

# What concerns the joining alone may change; what the parts are made from may not.
rm "$work/parts/part-000000.mkv"
accepted --retries 0 "${transition[@]}" -o other.mkv --sheet s.png -y
queued --array=0-2,4
refused 2 "belongs to another request" "${transition[@]}" --feather 3 -o out.mp4
refused 2 "belongs to another request" --parts 4 "${transition[@]}" -o out.mp4
echo "zepbmp-transition 99" >version
refused 2 "> version=zepbmp-transition\\ 99" "${transition[@]}" -o out.mp4
rm version
mv b.mp4 kept.mp4
"$MAKE_FOOTAGE" b.mp4 20 3
refused 2 "the videos have changed" "${transition[@]}" -o out.mp4
mv kept.mp4 b.mp4
for index in 0 1 2 4; do make_part "$index"; done

# An output whose run was lost before it could tell; the output alone; one that somebody else has put there.
accepted --retries 0 "${transition[@]}" -o out.mp4 --sheet s.png
if grep -q '^--array' sbatch-arguments; then fail "parts that are there were queued"; fi
jobs_are "7"
join_parts || fail "the parts are not joined"
"$PROGRAM" "${transition[@]:1}" -o alone.mp4 --sheet alone.png >/dev/null 2>&1
cmp alone.mp4 out.mp4 || fail "the output is not that of a single run"
rm "$work/joined" s.png
join_parts || fail "a lost run's output stops the joining"
[ -e "$work/joined" ] || fail "the joining is not on record"
cmp alone.png s.png || fail "the sheet that was missing is not made"
rm "$work/joined"
echo whole >out.mp4
join_parts || fail "a lost run's output stops the joining"
[ -e "$work/joined" ] || fail "the joining is not on record"
grep -q "joined by a run that was lost" said || fail "what was lost is joined again"
rm out.mp4 s.png
accepted --retries 0 "${transition[@]}" -o out.mp4
echo precious >out.mp4
for try in first second; do
    if join_parts; then fail "somebody's file is taken for the output, $try try"; fi
    grep -q "exists already" said || fail "somebody's file is not named, $try try"
done
[ "$(cat out.mp4)" = precious ] || fail "somebody's file was replaced"
[ ! -e "$work/joined" ] || fail "somebody's file is taken for the output"
accepted "${transition[@]}" -o out.mp4 -y
join_parts || fail "not joined with -y"
cmp alone.mp4 out.mp4 || fail "the output is not that of a single run"
refused 2 "out.mp4: is there already" "${transition[@]}" -o out.mp4
echo "done"
