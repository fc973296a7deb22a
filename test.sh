#!/usr/bin/env bash
# Sets everything up and runs every test: plain, under the address and undefined-behaviour sanitizers, what has
# threads under the thread sanitizer, and every fuzz target over its corpus and for a few seconds beyond it.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh

fuzz_seconds=${ZALTAG_FUZZ_SECONDS:-2}
jobs=$(nproc)

build() {  # PRESET [TARGET...]
    local preset=$1
    shift
    echo "== building $preset"
    if ! log=$( (cmake --preset "$preset" && cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}) 2>&1); then
        echo "$log"
        exit 1
    fi
}

build release
echo "== tests"
ctest --preset release -j "$jobs"

echo "== the installed library, as other programs use it"
tests/consumer/check.sh "$PWD" "$PWD/build/release"

echo "== the report's page in a browser"
tests/browser/check.sh

build fuzz
echo "== tests under the address and undefined-behaviour sanitizers"
ctest --preset fuzz -j "$jobs"

threaded=(zaltag_platform_tests zaltag_rekordbox_tests zaltag_traktor_tests)
build tsan "${threaded[@]}"
echo "== queues, timers and collections under the thread sanitizer"
for program in "${threaded[@]}"; do
    "build/tsan/tests/$program" --gtest_brief=1 \
        --gtest_filter='*Queue*:*Clock*:*Notification*:*Collections*:*HTTP*:*UserDefaults*'
done

echo "== fuzz targets, $fuzz_seconds s each"
for corpus in fuzz/corpus/*; do
    name=$(basename "$corpus")
    work=$(mktemp -d)
    if ! ZALTAG_FUZZ_TARGET=$name build/fuzz/fuzz/zaltag_fuzz -max_total_time="$fuzz_seconds" -max_len=4096 \
        -timeout=10 -rss_limit_mb=2048 -artifact_prefix="$work/" "$work" "$corpus" >"$work.log" 2>&1; then
        tail -n 40 "$work.log"
        echo "$name: found something, the input is in $work"
        exit 1
    fi
    grep -E '^Done ' "$work.log" | sed "s/^/$name: /"
    rm -rf "$work" "$work.log"
done
echo "all tests passed"
