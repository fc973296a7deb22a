#!/usr/bin/env bash
# Builds a release with the benchmarks, measures it beside the floor programs and prints one table. Arguments go to
# bench/table.py: names of rows ("./bench.sh collection"), --quick, --list. The data are made once, in
# build/bench-data.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh

if ! log=$( (cmake --preset release -DZALTAG_BENCH=ON && cmake --build --preset release --target bench) 2>&1); then
    echo "$log" >&2
    exit 1
fi
exec bench/table.py "$@"
