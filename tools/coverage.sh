#!/usr/bin/env bash
# Line and branch coverage of backend/ and platform/ by the whole test suite (gcc --coverage,
# reported by gcovr). usage: tools/coverage.sh [HTML_DIR]
# Branches that only exception handling or unreachable code adds are left out: what remains are
# the decisions the code makes. The coverage preset updates the counters atomically: the session
# tests run threads, and plain counters can then come out negative, which gcovr refuses to read.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage >/dev/null
args=(--root . --object-directory build/coverage --filter 'backend/' --filter 'platform/'
      --exclude-throw-branches --exclude-unreachable-branches --print-summary)
if [ $# -gt 0 ]; then
  mkdir -p "$1"
  args+=(--html-details "$1/index.html")
fi
# The full text report goes to a scratch file: gcovr replaces its output file, and given
# /dev/null it would put a plain file in its place.
gcovr "${args[@]}" --output "$(mktemp)"
