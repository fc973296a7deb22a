#!/usr/bin/env bash
# Sets everything up and runs every test: plain, in another order, under the address and undefined-behaviour sanitizers,
# what has threads under the thread sanitizer, the report's page in Chromium, and every fuzz target over its corpus and
# for a few seconds beyond it. Says at the end what was left out, such as tests over real files without ZALTAG_SAMPLES.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh chromium

fuzz_seconds=${ZALTAG_FUZZ_SECONDS:-2}
jobs=$(nproc)
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT

build() {  # PRESET [TARGET...]
    local preset=$1
    shift
    echo "== building $preset"
    if ! (cmake --preset "$preset" && cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}) >"$logs/build" 2>&1; then
        cat "$logs/build"
        exit 1
    fi
}

run() {  # PRESET
    if ! ctest --preset "$1" -j "$jobs" >"$logs/ctest" 2>&1; then
        cat "$logs/ctest"
        exit 1
    fi
    sed -n '/tests passed/,$p' "$logs/ctest" | tee -a "$logs/summary"
}

# In one process, shuffled where asked for; silent unless something fails.
together() {  # PROGRAM [OPTION...]
    local program=$1
    shift
    if ! "$program" --gtest_brief=1 "$@" >"$logs/output" 2>&1; then
        cat "$logs/output"
        exit 1
    fi
}

fuzz() {  # TARGET
    local work
    work=$(mktemp -d)
    if ! ZALTAG_FUZZ_TARGET=$1 build/fuzz/fuzz/zaltag_fuzz -max_total_time="$fuzz_seconds" -max_len=4096 \
        -timeout=1200 -rss_limit_mb=2048 -artifact_prefix="$work/" "$work" "fuzz/corpus/$1" >"$work.log" 2>&1; then
        tail -n 40 "$work.log"
        echo "$1: found something, the input is in $work"
        return 1
    fi
    grep -E '^Done ' "$work.log" | sed "s/^/$1: /"
    rm -rf "$work" "$work.log"
}
export -f fuzz
export fuzz_seconds

build release
echo "== tests"
run release
echo "== the tests of every room in one process, in another order"
for program in build/release/tests/zaltag_*_tests; do
    together "$program" --gtest_shuffle
done

echo "== the installed library, as other programs use it"
tests/consumer/check.sh "$PWD" "$PWD/build/release"

build fuzz
echo "== tests under the address and undefined-behaviour sanitizers"
run fuzz

echo "== queues, timers, settings and collections under the thread sanitizer"
threaded=('platform:*Queue*' 'platform:Clock.*' 'platform:Notifications.*' 'platform:Services.*'
    'collection:*' 'rekordbox:*Queue*' 'traktor:*Queue*')
build tsan zaltag_platform_tests zaltag_collection_tests zaltag_rekordbox_tests zaltag_traktor_tests
for one in "${threaded[@]}"; do
    program=build/tsan/tests/zaltag_${one%%:*}_tests
    if ! "$program" --gtest_list_tests --gtest_filter="${one#*:}" | grep -q '^  '; then
        echo "no test is called ${one#*:} in ${one%%:*}"
        exit 1
    fi
    together "$program" --gtest_filter="${one#*:}"
done

echo "== fuzz targets, $fuzz_seconds s each"
find fuzz/corpus -mindepth 1 -maxdepth 1 -printf '%f\0' | sort -z | xargs -0 -P "$jobs" -I{} bash -c 'fuzz "$1"' fuzz {}

left_out=$(grep -cE '\((Skipped|Not Run|Disabled)\)$' "$logs/summary" || true)
echo "all tests passed; $left_out left out"
