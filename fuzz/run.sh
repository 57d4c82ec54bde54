#!/usr/bin/env bash
# Runs every fuzz target for a bounded time and fails on any crash, leak, undefined-behaviour
# report, out-of-memory or timeout. Build the targets first:
#   cmake --preset fuzz && cmake --build --preset fuzz
# Usage: fuzz/run.sh [SECONDS_PER_TARGET] [BUILD_DIR] [TARGET...]   (defaults: 60, build/fuzz, all)
#        fuzz/run.sh merge [BUILD_DIR]
# Each target starts from the committed corpus fuzz/corpus/TARGET and from fresh seeds (the
# sample streams and examples/, one procedure each); what it finds grows in
# BUILD_DIR/fuzz-run/corpus/ and is reused by the next run. A failing input is kept in
# BUILD_DIR/fuzz-run/artifacts/ (replay it: BUILD_DIR/fuzz/omf_<target>_fuzz FILE).
# "merge" minimizes all of that back into fuzz/corpus/ (libFuzzer's -merge=1), to be committed
# after a long run so that the next short one starts where it ended.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=run
if [ "${1:-}" = merge ]; then
  mode=merge
  shift
  seconds=0
else
  seconds="${1:-60}"
  shift || true
fi
build="${1:-build/fuzz}"
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then targets=(session stream selector); fi
work="$build/fuzz-run"

# The seeds' size: inputs longer than this only make each execution slower.
max_len=4096

shopt -s nullglob
examples=(examples/*.oms)
shopt -u nullglob
rm -rf "$work/seeds"
mkdir -p "$work/artifacts"
"$build/fuzz/omf_fuzz_seeds" "$work/seeds" "${examples[@]}" >/dev/null

# Speed: every execution plays whole procedures, so what an allocation costs under ASan counts.
# Allocation stacks are not recorded: unwinding and storing them took a fifth of each execution.
# A leak or a use after free is still caught, reported without the allocating stack; replay the
# artifact without these options for the full stacks. Freed memory is quarantined in 16 MB rather than 256 MB, which keeps the pages
# warm. libFuzzer's entropic schedule is off: its per-feature bookkeeping costs as much as the
# execution itself here, since every input runs the same check procedure's thousands of features.
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:allocator_may_return_null=0:malloc_context_size=0:quarantine_size_mb=16"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
options=(-max_len="$max_len" -timeout=10 -rss_limit_mb=2048 -entropic=0)

if [ "$mode" = merge ]; then
  for target in "${targets[@]}"; do
    committed="fuzz/corpus/$target"
    mkdir -p "$committed" "$work/corpus/$target"
    rm -rf "$work/merged"
    mkdir -p "$work/merged"
    "$build/fuzz/omf_${target}_fuzz" -merge=1 "${options[@]}" -dict="fuzz/$target.dict" \
      "$work/merged" "$committed" "$work/corpus/$target" "$work/seeds/$target" \
      >"$work/$target-merge.log" 2>&1
    # The smallest inputs up to 100 KB per target: the clone stays small and CI's start quick.
    total=0
    for input in $(ls -S -r "$work/merged"); do
      size=$(stat -c %s "$work/merged/$input")
      if [ $((total + size)) -gt 100000 ]; then rm "$work/merged/$input"; else total=$((total + size)); fi
    done
    rm -rf "$committed"
    mv "$work/merged" "$committed"
    echo "fuzz $target: $(ls "$committed" | wc -l) inputs, $(du -sk "$committed" | cut -f1) KB in $committed"
  done
  exit 0
fi

failed=0
for target in "${targets[@]}"; do
  corpus="$work/corpus/$target"
  log="$work/$target.log"
  mkdir -p "$corpus" "fuzz/corpus/$target"
  if "$build/fuzz/omf_${target}_fuzz" -max_total_time="$seconds" "${options[@]}" \
       -dict="fuzz/$target.dict" -print_final_stats=1 \
       -artifact_prefix="$work/artifacts/$target-" \
       "$corpus" "fuzz/corpus/$target" "$work/seeds/$target" >"$log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
    cov=$(grep -ao 'cov: [0-9]* ft: [0-9]*' "$log" | tail -1 || true)
    echo "fuzz $target: ${runs:-?} executions in ${seconds} s, ${rate:-?} exec/s, ${cov:-cov: ?}, no failure"
  else
    echo "fuzz $target: FAILED (log $log, inputs in $work/artifacts/)"
    tail -n 60 "$log"
    failed=1
  fi
done
exit "$failed"
