#!/usr/bin/env bash
# fuzz/run.sh [SECONDS] [NAME ...] - builds the fuzzers, or those named, with clang and runs each for SECONDS (60), with the
# real files of VELNOR_CORPUS as seeds when that is set. A finding stays in build/fuzz/found.
set -eu
cd "$(dirname "$0")/.."
root=$PWD
seconds=${1:-60}
[ $# -gt 0 ] && shift
[ -d build/fuzz ] || cmake --preset fuzz >/dev/null
cmake --build build/fuzz ${1:+--target "$@"} >/dev/null
fuzz/seeds.sh "${VELNOR_CORPUS:-/nonexistent}" build/fuzz/seeds
mkdir -p build/fuzz/found
ulimit -f 4000000
names=("$@")
[ ${#names[@]} -gt 0 ] || for program in build/fuzz/fuzz/fuzz_*; do
    [ -x "$program" ] && [ -f "$program" ] && names+=("$(basename "$program")")
done
failed=0
for name in "${names[@]}"; do
    mkdir -p "build/fuzz/seeds/$name" "build/fuzz/grown/$name"
    echo "$name, $seconds s"
    (cd build/fuzz/found && "$root/build/fuzz/fuzz/$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$name-" "$root/build/fuzz/grown/$name" "$root/build/fuzz/seeds/$name") \
        >"build/fuzz/$name.log" 2>&1 || failed=1
    grep -E 'number_of_executed_units|SUMMARY|ERROR' "build/fuzz/$name.log" || true
done
exit $failed
