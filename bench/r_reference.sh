#!/bin/sh
# Times R's boot.ci(type = "perc") and mice::pool.scalar on the numbers that the factory's
# benchmarks pool (BM_BootPoolingForR: 1,001 statistics x 1,000 replicates; BM_ImputationPoolingForR:
# 1,000 groups x 5 imputations), beside the factory's time per statistic in the same run.
# usage: bench/r_reference.sh [BENCH_BINARY]   (default build/bench/bench/omfactory_bench)
# Skipped, with a message, when Rscript or its packages boot and mice are missing.
set -eu
here=$(dirname "$0")
bench=${1:-build/bench/bench/omfactory_bench}
if ! command -v Rscript > /dev/null 2>&1; then
  echo "r_reference: Rscript is not installed; skipped"
  exit 0
fi
if [ ! -x "$bench" ]; then
  echo "r_reference: no benchmark binary at $bench (cmake --preset bench && cmake --build --preset bench)" >&2
  exit 1
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
OMF_BENCH_EXPORT="$folder" "$bench" --benchmark_filter='BM_(BootPooling|ImputationPooling)ForR' \
  > "$folder/bench.log" 2>&1
status=0
Rscript "$here/r_reference.R" "$folder" || status=$?
[ "$status" -eq 3 ] && exit 0
exit "$status"
