#!/bin/sh
# Peak memory and time of `omfactory render` in every format, and of `omfactory dump`, on one
# stream file (bench/RESULTS.md, "Rendering memory"). Output goes to a scratch file, not a pipe.
#
#   bench/render_memory.sh OMFACTORY STREAM [FORMAT...]
#   (a 10^6-cell stream: build/bench/bench/omf_benchstream 1000000 /tmp/cells1e6.oms)
set -eu
tool=$1
stream=$2
shift 2
formats=${*:-"text json html csv markdown latex xlsx"}
out=$(mktemp)
trap 'rm -f "$out" "$out.time"' EXIT
size=$(stat -c %s "$stream")
printf '%-10s %12s %8s %10s\n' command "max RSS MB" "x file" "elapsed s"
measure() {
  /usr/bin/time -v "$@" >"$out" 2>"$out.time" || { echo "failed: $*" >&2; cat "$out.time" >&2; exit 1; }
  rss=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$out.time")
  elapsed=$(sed -n 's/.*Elapsed (wall clock) time (h:mm:ss or m:ss): //p' "$out.time")
  awk -v name="$name" -v rss="$rss" -v size="$size" -v elapsed="$elapsed" 'BEGIN {
    n = split(elapsed, p, ":"); s = p[n] + (n > 1 ? 60 * p[n - 1] : 0)
    printf "%-10s %12.1f %8.2f %10.2f\n", name, rss / 1024, rss * 1024 / size, s }'
}
name=dump measure "$tool" dump "$stream"
for format in $formats; do
  name=$format measure "$tool" render --format "$format" "$stream"
done
