#!/usr/bin/env bash
# build.sh FOLDER TARGETS... -- CMAKE OPTIONS: configures once, then builds; prints only what fails.
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
folder=$1
shift
targets=()
while [ $# -gt 0 ] && [ "$1" != -- ]; do
    targets+=("$1")
    shift
done
[ $# -gt 0 ] && shift
log=$folder/build.log
mkdir -p "$folder"
if [ ! -f "$folder/build.ninja" ]; then
    echo "Configuring..."
    cmake -G Ninja -S "$here" -B "$folder" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@" >"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        exit 1
    }
fi
if ! ninja -C "$folder" -n "${targets[@]}" 2>/dev/null | grep -q 'no work to do'; then
    echo "Building..."
fi
ninja -C "$folder" "${targets[@]}" >"$log" 2>&1 || {
    grep -E 'error|FAILED|undefined' -A6 "$log" | head -n 60 >&2
    exit 1
}
