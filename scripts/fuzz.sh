#!/usr/bin/env bash
# Lets fuzzers search, JOBS of them at a time (default: 1), each until it has tried RUNS inputs or
# SECONDS have gone by (0 for either: no such limit). What they learn is kept in the build folder and used the next
# time, inputs that fail too. Prints a line a target at the end; fails when an input failed.
#
#   scripts/fuzz.sh BUILD-FOLDER RUNS SECONDS [TARGET...]
set -uo pipefail
cd "$(dirname "$0")/.."
if [ $# -lt 3 ]; then
    echo "usage: $0 BUILD-FOLDER RUNS SECONDS [TARGET...]" >&2
    exit 2
fi
build=$1
runs=$2
seconds=$3
shift 3
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    targets=(ini_load ini_round_trip description slot_path error_record dump plugin)
fi

# Inputs beyond these lengths say the same things again.
declare -A longest=(
    [ini_load]=400 [ini_round_trip]=400 [description]=1200 [slot_path]=200 [error_record]=600
    [dump]=1200 [plugin]=2500
)

# Address checking that keeps little behind is fast; a failing input is looked at with all of it.
export ASAN_OPTIONS=${ASAN_OPTIONS:-quarantine_size_mb=1:thread_local_quarantine_size_kb=64:allocator_release_to_os_interval_ms=-1:malloc_context_size=1}
[ -z "${TMPDIR:-}" ] && [ -w /dev/shm ] && export TMPDIR=/dev/shm

for target in "${targets[@]}"; do
    if [ -z "${longest[$target]+set}" ]; then
        echo "$0: no target \"$target\" (targets: ${!longest[*]})" >&2
        exit 2
    fi
done
mkdir -p "$build/artifacts" "$build/logs"

# search TARGET: fails when an input failed.
search() {
    local target=$1 work=$build/corpus/$1 log=$build/logs/$1.log options
    mkdir -p "$work" "$build/artifacts/$target"
    local seed=${SEED:-$((RANDOM * 32768 + RANDOM + 1))}
    # Weighing what each kept input is worth takes longer than trying another one.
    options=(-seed="$seed" -max_len="${longest[$target]}" -max_total_time="$seconds" -entropic=0
             -dict="fuzz/dictionaries/$target.dict" -print_final_stats=1
             -artifact_prefix="$build/artifacts/$target/")
    [ "$runs" -gt 0 ] && options+=(-runs="$runs")
    echo "$target: seed $seed, log in $log"
    "$build/bin/fuzz_$target" "${options[@]}" "$work" "fuzz/corpus/$target" \
        "fuzz/regressions/$target" >"$log" 2>&1 && return
    grep -E 'does not hold|ERROR:|SUMMARY:|runtime error|Test unit written' "$log" >&2
    echo "$target: an input failed; $log has the whole account" >&2
    return 1
}

failed=0
running=0
for target in "${targets[@]}"; do
    if [ "$running" -ge "${JOBS:-1}" ]; then
        wait -n || failed=1
        running=$((running - 1))
    fi
    search "$target" &
    running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
    wait -n || failed=1
    running=$((running - 1))
done
for target in "${targets[@]}"; do
    tried=$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/logs/$target.log" | tail -n 1)
    echo "figure: ${tried:-0} inputs on $target"
done
exit $failed
