#!/bin/sh
# Rewrites the bundled example streams (examples/*.oms) from tools/examplegen and the golden JSON
# of each (tests/tools/golden/*.json) from `omfactory render --format json`. Run it after a change
# that is meant to alter them, then review the difference with git diff before committing.
#
#   tools/regen-golden.sh [BUILD_DIR]      (default: build/default)
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-"$root/build/default"}

cmake --build "$build" --target examplegen omfactory
"$build/tools/examplegen/examplegen" "$root/examples"
mkdir -p "$root/tests/tools/golden"
rm -f "$root"/tests/tools/golden/*.json
for stream in "$root"/examples/*.oms; do
  name=$(basename "$stream" .oms)
  "$build/tools/omfactory/omfactory" render --format json --string-tables "$root/stringtables" \
    "$stream" >"$root/tests/tools/golden/$name.json"
  echo "tests/tools/golden/$name.json"
done
