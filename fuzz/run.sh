#!/usr/bin/env bash
# Runs every fuzz target for a bounded time on its seed corpus (the sample streams in both byte
# orders and the recorded examples) and fails on any crash, leak, undefined-behaviour report,
# out-of-memory or timeout. Build the targets first:
#   cmake --preset fuzz && cmake --build --preset fuzz
# Usage: fuzz/run.sh [SECONDS_PER_TARGET] [BUILD_DIR]   (defaults: 60, build/fuzz)
# The corpora grow in BUILD_DIR/fuzz-run/corpus/ and are reused by the next run; a failing input
# is kept in BUILD_DIR/fuzz-run/artifacts/ (replay it: BUILD_DIR/fuzz/omf_<target>_fuzz FILE).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
build="${2:-build/fuzz}"
work="$build/fuzz-run"

shopt -s nullglob
examples=(examples/*.oms)
shopt -u nullglob
rm -rf "$work/seeds"
mkdir -p "$work/artifacts"
"$build/fuzz/omf_fuzz_seeds" "$work/seeds" "${examples[@]}"

export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:allocator_may_return_null=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
failed=0
for target in session stream selector; do
  corpus="$work/corpus/$target"
  log="$work/$target.log"
  mkdir -p "$corpus"
  if "$build/fuzz/omf_${target}_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
       -print_final_stats=1 -artifact_prefix="$work/artifacts/$target-" \
       "$corpus" "$work/seeds/$target" >"$log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    echo "fuzz $target: ${runs:-?} executions in ${seconds} s, no failure"
  else
    echo "fuzz $target: FAILED (log $log, inputs in $work/artifacts/)"
    tail -n 60 "$log"
    failed=1
  fi
done
exit "$failed"
