#!/bin/sh
# Rewrites the bundled example streams (examples/*.oms) from tools/examplegen and the golden JSON,
# CSV, Markdown and text of each (tests/tools/golden/*.json, *.csv, *.md, *.txt) from
# `omfactory render`. Run it after a change that is meant to alter them, then review the
# difference with git diff before committing.
#
#   tools/regen-golden.sh [BUILD_DIR]      (default: build/default)
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-"$root/build/default"}

cmake --build "$build" --target examplegen omfactory
"$build/tools/examplegen/examplegen" "$root/examples"
mkdir -p "$root/tests/tools/golden"
rm -f "$root"/tests/tools/golden/*.json "$root"/tests/tools/golden/*.csv "$root"/tests/tools/golden/*.md "$root"/tests/tools/golden/*.txt
for stream in "$root"/examples/*.oms; do
  name=$(basename "$stream" .oms)
  for format in text json csv markdown; do
    extension=$format
    [ "$format" = markdown ] && extension=md
    [ "$format" = text ] && extension=txt
    "$build/tools/omfactory/omfactory" render --format "$format" --string-tables "$root/stringtables" \
      "$stream" >"$root/tests/tools/golden/$name.$extension"
    echo "tests/tools/golden/$name.$extension"
  done
done
